// The rule editor inside the channel editor: the conditions that are set,
// each with its own editor and a remove button, and a menu to add the
// conditions the daemon lists as available. Adding seeds a condition and
// removing clears it through the daemon, so both follow the rule model's own
// logic; list conditions stay open while still empty.

import { html, nothing, type TemplateResult } from 'lit-html';
import type { ChannelRule, Limits, RuleConditionId, RuleDescription } from '../api/types';
import { appsToForwardQuery, knownAppsQuery, knownSendersQuery } from '../state/data';
import { duration, minuteToTime, timeToMinute, weekdaysMondayFirst, windowLabel } from '../ui/format';
import { icon } from '../ui/icons';
import { menuButton } from '../ui/menu';
import { tokenList } from '../ui/tokenList';
import { segmented, switchRow } from '../ui/widgets';
import { isReaching } from '../logic/history';
import type { RuleProblems } from '../logic/ruleProblems';
import { openForwardingSheet } from './forwardingSheet';

export const conditionOrder: readonly RuleConditionId[] = [
  'app',
  'sender',
  'keywords',
  'calls',
  'hours',
  'repeated',
  'cooldown',
];

const fallbackTitles: Record<RuleConditionId, { title: string; symbol: string }> = {
  app: { title: 'App', symbol: 'app.badge' },
  sender: { title: 'From', symbol: 'person' },
  keywords: { title: 'Contains', symbol: 'text.magnifyingglass' },
  calls: { title: 'Phone calls', symbol: 'phone' },
  hours: { title: 'Time of day', symbol: 'clock' },
  repeated: { title: 'Repeated', symbol: 'repeat' },
  cooldown: { title: 'Cooldown', symbol: 'hourglass' },
};

export interface RuleEditorProps {
  channelId: string;
  rule: ChannelRule;
  description: RuleDescription | undefined;
  limits: Limits | undefined;
  open: ReadonlySet<RuleConditionId>; // list conditions added and still empty
  blank: RuleConditionId | undefined; // the template's condition still to fill in
  problems: RuleProblems; // why the daemon refused the last save, by list
  onRule: (rule: ChannelRule) => void;
  onCondition: (condition: RuleConditionId, action: 'seed' | 'clear') => void;
}

function isSetLocally(rule: ChannelRule, condition: RuleConditionId): boolean {
  switch (condition) {
    case 'app':
      return rule.apps.length > 0;
    case 'sender':
      return rule.senders.length > 0;
    case 'keywords':
      return rule.keywords.length > 0;
    case 'calls':
      return rule.calls !== 'any';
    case 'hours':
      return rule.activeHours !== undefined;
    case 'repeated':
      return rule.frequency !== undefined;
    case 'cooldown':
      return rule.cooldownSeconds > 0;
  }
}

export function shownConditions(props: RuleEditorProps): RuleConditionId[] {
  return conditionOrder.filter(
    (condition) => isSetLocally(props.rule, condition) || props.open.has(condition) || props.blank === condition,
  );
}

function appStatusRows(apps: string[]): TemplateResult | typeof nothing {
  const known = knownAppsQuery().data;
  const named = apps.map((app) => app.trim()).filter((app, index, all) => app !== '' && all.indexOf(app) === index);
  if (!known || named.length === 0) return nothing;
  return html`<ul class="status-rows" aria-label="Connection">
    ${named.map((app) =>
      isReaching(app, known)
        ? html`<li class="status-row good">
            ${icon('checkmark.seal.fill')}<span><strong>${app}</strong> Reaching Ringwell</span>
          </li>`
        : html`<li class="status-row warn">
            ${icon('exclamationmark.triangle.fill')}
            <span><strong>${app}</strong> Not heard from yet. Check setup.</span>
            <button
              type="button"
              class="button small"
              aria-label=${`Check ${app}`}
              @click=${() => openForwardingSheet(app)}
            >
              Check
            </button>
          </li>`,
    )}
  </ul>`;
}

function blankNote(condition: RuleConditionId): TemplateResult | typeof nothing {
  if (condition === 'sender')
    return html`<p class="blank-note">
      ${icon('person')} Who should ring? Add the person's name as their notifications show it.
    </p>`;
  if (condition === 'app')
    return html`<p class="blank-note">${icon('app.badge')} Choose the app or apps this channel listens to.</p>`;
  return nothing;
}

function conditionBody(condition: RuleConditionId, props: RuleEditorProps): TemplateResult {
  const { rule, onRule, limits } = props;
  const invalid = new Set(props.description?.invalidPatterns ?? []);
  switch (condition) {
    case 'app':
      return html`${tokenList({
        id: `${props.channelId}-apps`,
        label: 'Apps',
        placeholder: 'Add an app',
        values: rule.apps,
        suggestions: knownAppsQuery().data,
        onChange: (apps) => onRule({ ...rule, apps }),
      })}
      ${appStatusRows(rule.apps)}`;
    case 'sender':
      return tokenList({
        id: `${props.channelId}-senders`,
        label: 'People',
        placeholder: 'Add a person',
        values: rule.senders,
        suggestions: knownSendersQuery(rule.apps.filter((app) => app.trim() !== '')).data,
        invalid,
        error: props.problems.senders,
        onChange: (senders) => onRule({ ...rule, senders }),
      });
    case 'keywords':
      return tokenList({
        id: `${props.channelId}-keywords`,
        label: 'Words',
        placeholder: 'Add a word',
        values: rule.keywords,
        invalid,
        error: props.problems.keywords,
        onChange: (keywords) => onRule({ ...rule, keywords }),
      });
    case 'calls': {
      const phoneOnly = props.description?.available.some((entry) => entry.id === 'calls') ?? true;
      return html`${segmented({
          label: 'Phone calls',
          value: rule.calls === 'missed' ? 'missed' : 'incoming',
          choices: [
            { value: 'incoming', label: 'Incoming' },
            { value: 'missed', label: 'Missed' },
          ],
          onChange: (calls) => onRule({ ...rule, calls }),
        })}
        <p class="note">
          ${rule.calls === 'missed' ? 'Rings after a call you didn’t answer.' : 'Rings while the call is ringing.'}
          ${phoneOnly ? nothing : html`<strong>Only calls of the Phone app count; add Phone to the apps.</strong>`}
        </p>`;
    }
    case 'hours': {
      const hours = rule.activeHours ?? { weekdays: [1, 2, 3, 4, 5, 6, 7], startMinute: 1320, endMinute: 420 };
      const setHours = (change: Partial<typeof hours>) => onRule({ ...rule, activeHours: { ...hours, ...change } });
      const toggleDay = (day: number) => {
        const days = new Set(hours.weekdays);
        if (days.has(day)) days.delete(day);
        else days.add(day);
        setHours({ weekdays: [...days].sort((a, b) => a - b) });
      };
      const onTime = (which: 'startMinute' | 'endMinute') => (event: Event) => {
        const minute = timeToMinute((event.target as HTMLInputElement).value);
        if (minute !== undefined) setHours({ [which]: minute });
      };
      const note =
        hours.startMinute === hours.endMinute
          ? 'The same start and end: all day.'
          : hours.endMinute < hours.startMinute
            ? 'Runs past midnight into the next day.'
            : '';
      return html`<div class="weekdays" role="group" aria-label="Days">
          ${weekdaysMondayFirst.map(
            (day) =>
              html`<button
                type="button"
                class="weekday"
                aria-pressed=${hours.weekdays.includes(day.day) ? 'true' : 'false'}
                aria-label=${day.long}
                @click=${() => toggleDay(day.day)}
              >
                ${day.short}
              </button>`,
          )}
        </div>
        <div class="time-range">
          <label
            >From <input type="time" .value=${minuteToTime(hours.startMinute)} @change=${onTime('startMinute')}
          /></label>
          <label>To <input type="time" .value=${minuteToTime(hours.endMinute)} @change=${onTime('endMinute')} /></label>
        </div>
        ${note ? html`<p class="note">${note}</p>` : nothing}`;
    }
    case 'repeated': {
      const frequency = rule.frequency ?? { count: 3, windowSeconds: 600 };
      const [low, high] = limits?.frequencyCountRange ?? [2, 10];
      const counts = Array.from({ length: high - low + 1 }, (_, i) => low + i);
      const windows = limits?.frequencyWindowPresets ?? [60, 300, 600, 1800, 3600];
      const windowChoices = windows.includes(frequency.windowSeconds) ? windows : [...windows, frequency.windowSeconds];
      return html`<div class="inline-fields">
          <label
            >Notifications
            <select
              .value=${String(frequency.count)}
              @change=${(event: Event) =>
                onRule({
                  ...rule,
                  frequency: { ...frequency, count: Number((event.target as HTMLSelectElement).value) },
                })}
            >
              ${counts.map((count) => html`<option value=${count} ?selected=${count === frequency.count}>${count}×</option>`)}
            </select></label
          >
          <label
            >Within
            <select
              .value=${String(frequency.windowSeconds)}
              @change=${(event: Event) =>
                onRule({
                  ...rule,
                  frequency: { ...frequency, windowSeconds: Number((event.target as HTMLSelectElement).value) },
                })}
            >
              ${windowChoices.map(
                (seconds) =>
                  html`<option value=${seconds} ?selected=${seconds === frequency.windowSeconds}>
                    ${windowLabel(seconds)}
                  </option>`,
              )}
            </select></label
          >
        </div>
        <p class="note">
          Rings once ${frequency.count} matching notifications arrive within ${windowLabel(frequency.windowSeconds)}.
        </p>`;
    }
    case 'cooldown': {
      const presets = (limits?.cooldownPresets ?? [30, 60, 120, 300, 600, 1800]).filter((seconds) => seconds > 0);
      const choices = presets.includes(rule.cooldownSeconds) ? presets : [...presets, rule.cooldownSeconds];
      return html`<label class="inline-fields"
          >Quiet for
          <select
            .value=${String(rule.cooldownSeconds)}
            @change=${(event: Event) => onRule({ ...rule, cooldownSeconds: Number((event.target as HTMLSelectElement).value) })}
          >
            ${choices.map(
              (seconds) =>
                html`<option value=${seconds} ?selected=${seconds === rule.cooldownSeconds}>
                  ${duration(seconds)}
                </option>`,
            )}
          </select></label
        >
        <p class="note">After ringing, the same sender stays quiet for this long.</p>`;
    }
  }
}

function conditionCard(condition: RuleConditionId, props: RuleEditorProps): TemplateResult {
  const entry = props.description?.available.find((candidate) => candidate.id === condition);
  const { title, symbol } = entry ? { title: entry.title, symbol: entry.symbolName } : fallbackTitles[condition];
  const needsInput = props.blank === condition;
  return html`<div
    class="condition ${needsInput ? 'needs-input' : ''}"
    data-condition=${condition}
    role="group"
    aria-labelledby=${`condition-${condition}-title`}
  >
    <div class="condition-head">
      ${icon(symbol, { className: 'condition-icon' })}
      <h3 id=${`condition-${condition}-title`}>${title}</h3>
      <button
        type="button"
        class="icon-button"
        aria-label=${`Remove ${title}`}
        title=${`Remove ${title}`}
        @click=${() => props.onCondition(condition, 'clear')}
      >
        ${icon('trash')}
      </button>
    </div>
    ${needsInput ? blankNote(condition) : nothing} ${conditionBody(condition, props)}
  </div>`;
}

export function ruleEditor(props: RuleEditorProps): TemplateResult {
  const shown = shownConditions(props);
  const addable = (props.description?.available ?? []).filter((entry) => !shown.includes(entry.id));
  const usesPatterns = shown.includes('sender') || shown.includes('keywords');
  const invalid = props.description?.invalidPatterns ?? [];
  // Warm the suggestions of the setup guide's apps, which the app list shares.
  appsToForwardQuery();
  return html`<div class="rule-editor">
    <p class="rule-summary" aria-label="Rule summary">${props.description?.summary ?? ''}</p>
    ${
      shown.length === 0
        ? html`<p class="note">No conditions: every forwarded notification matches.</p>`
        : shown.map((condition) => conditionCard(condition, props))
    }
    ${
      usesPatterns
        ? html`<div class="condition">
            ${switchRow({
              label: 'Regular expressions',
              detail: 'From and Contains patterns are regular expressions, ignoring case.',
              checked: props.rule.usesRegex,
              onChange: (usesRegex) => props.onRule({ ...props.rule, usesRegex }),
            })}
            ${
              invalid.length
                ? html`<p class="error-note" role="alert">
                    ${icon('exclamationmark.triangle')} Invalid pattern: ${invalid.join(', ')}
                  </p>`
                : nothing
            }
          </div>`
        : nothing
    }
    ${
      addable.length
        ? menuButton({
            id: 'add-condition',
            label: 'Add Condition',
            symbol: 'plus',
            showLabel: true,
            align: 'start',
            groups: [
              {
                items: addable.map((entry) => ({
                  label: entry.title,
                  symbol: entry.symbolName,
                  onSelect: () => props.onCondition(entry.id, 'seed'),
                })),
              },
            ],
          })
        : nothing
    }
  </div>`;
}
