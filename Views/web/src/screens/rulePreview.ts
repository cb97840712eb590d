// The rule preview: what the channel's rule would have done with the recent
// notifications, newest first, with the number that would have rung and, for
// each one, the condition-by-condition explanation.

import { html, nothing, type TemplateResult } from 'lit-html';
import type { PreviewEntry, PreviewVerdictKind, RuleCheck } from '../api/types';
import { previewQuery } from '../state/data';
import { requestRender } from '../state/store';
import { shortDate } from '../ui/format';
import { icon } from '../ui/icons';
import { errorNote, loadingNote, screenHeader, section } from '../ui/widgets';

const verdictTexts: Record<PreviewVerdictKind, { label: string; symbol: string; tone: string }> = {
  rings: { label: 'Rings', symbol: 'alarm.waves.left.and.right.fill', tone: 'good' },
  cooledDown: { label: 'Cooldown', symbol: 'hourglass', tone: 'muted' },
  shadowed: { label: 'Taken by an earlier channel', symbol: 'square.stack', tone: 'muted' },
  disabled: { label: 'Channel off', symbol: 'bell.slash', tone: 'muted' },
  noMatch: { label: 'No match', symbol: 'line.3.horizontal.decrease', tone: 'muted' },
};

const conditionTitles: Record<string, string> = {
  app: 'App',
  sender: 'From',
  keywords: 'Contains',
  calls: 'Phone calls',
  hours: 'Time of day',
  repeated: 'Repeated',
  frequency: 'Repeated',
  activeHours: 'Time of day',
};

function verdictLabel(entry: PreviewEntry): string {
  if (entry.verdict.kind === 'shadowed' && entry.verdict.byName) return `Taken by ${entry.verdict.byName}`;
  return verdictTexts[entry.verdict.kind].label;
}

export function checkRow(check: RuleCheck): TemplateResult {
  return html`<li class="check ${check.passed ? 'passed' : 'failed'}">
    ${icon(check.passed ? 'checkmark.circle.fill' : 'xmark.circle.fill', {
      label: check.passed ? 'Passed' : 'Failed',
      className: check.passed ? 'good' : 'bad',
    })}
    <span><strong>${conditionTitles[check.condition] ?? check.condition}</strong> ${check.detail}</span>
  </li>`;
}

function entryView(entry: PreviewEntry): TemplateResult {
  const { notification } = entry;
  const verdict = verdictTexts[entry.verdict.kind];
  const from = notification.sender || notification.title;
  return html`<li class="preview-entry">
    <details>
      <summary>
        ${icon(verdict.symbol, { className: `row-icon ${verdict.tone}` })}
        <span class="entry-text">
          <span class="entry-title">${notification.app || 'Unknown'}${from ? html` · ${from}` : nothing}</span>
          <span class="entry-body">${[notification.title, notification.body].filter(Boolean).join(' — ')}</span>
        </span>
        <span class="entry-meta">
          <span class="verdict ${verdict.tone}">${verdictLabel(entry)}</span>
          <time>${shortDate(notification.date)}</time>
        </span>
      </summary>
      ${
        entry.checks.length
          ? html`<ul class="checks" aria-label="Checks">
              ${entry.checks.map(checkRow)}
            </ul>`
          : html`<p class="note">No conditions: every notification matches.</p>`
      }
    </details>
  </li>`;
}

// The "As if at" moment chosen per channel: a weekday and a time, judged in
// the daemon's time zone. Without a day the notifications keep their own times.
const asIfAt = new Map<string, { day: string; time: string }>();
const days = [
  ['sun', 'Sunday'],
  ['mon', 'Monday'],
  ['tue', 'Tuesday'],
  ['wed', 'Wednesday'],
  ['thu', 'Thursday'],
  ['fri', 'Friday'],
  ['sat', 'Saturday'],
];

function momentOf(channelId: string): string | undefined {
  const chosen = asIfAt.get(channelId);
  return chosen?.day && chosen.time ? `${chosen.day} ${chosen.time}` : undefined;
}

function asIfPicker(channelId: string): TemplateResult {
  const chosen = asIfAt.get(channelId) ?? { day: '', time: '03:00' };
  const change = (next: Partial<typeof chosen>) => {
    asIfAt.set(channelId, { ...chosen, ...next });
    requestRender();
  };
  return html`<div class="row as-if">
    <label class="row-label" for="as-if-day">As if at</label>
    <span class="row-value">
      <select id="as-if-day" @change=${(event: Event) => change({ day: (event.target as HTMLSelectElement).value })}>
        <option value="" ?selected=${!chosen.day}>Their own times</option>
        ${days.map(([value, label]) => html`<option value=${value} ?selected=${chosen.day === value}>${label}</option>`)}
      </select>
      <input
        type="time"
        aria-label="Time"
        .value=${chosen.time}
        ?disabled=${!chosen.day}
        @change=${(event: Event) => change({ time: (event.target as HTMLInputElement).value })}
      />
    </span>
  </div>`;
}

export function previewScreen(channelId: string): TemplateResult {
  const result = previewQuery(channelId, momentOf(channelId));
  const preview = result.data;
  const header = screenHeader({
    title: 'Preview',
    back: { href: `/channels/${channelId}`, label: preview?.channelName ?? 'Channel' },
    subtitle: preview ? `What “${preview.channelName}” would have done with recent notifications.` : undefined,
  });
  if (!preview) return html`${header}${errorNote(result.error)}${result.error ? nothing : loadingNote()}`;
  return html`${header}
    <div class="tiles">
      <div class="tile">
        <span class="tile-value">${preview.ringCount}</span>
        <span class="tile-label">Would ring</span>
      </div>
      <div class="tile">
        <span class="tile-value">${preview.entries.length}</span>
        <span class="tile-label">${preview.entries.length === 1 ? 'Notification' : 'Notifications'} replayed</span>
      </div>
    </div>
    ${section({
      content: asIfPicker(channelId),
      footer: 'Replays each notification on that day at that time; repeats and cooldowns keep their real dates.',
    })}
    ${
      preview.entries.length === 0
        ? html`<div class="empty-state">
            ${icon('list.bullet.rectangle', { className: 'empty-icon' })}
            <h2>Nothing to Replay</h2>
            <p>Forwarded notifications show up here.</p>
          </div>`
        : section({
            title: 'Recent notifications',
            content: html`<ul class="preview-list">
              ${preview.entries.map(entryView)}
            </ul>`,
            footer: 'Newest first. Open an entry to see each condition.',
          })
    }`;
}
