// The channel editor: name, colour, switch, rule, alarm settings and tones.
// Edits apply to a local draft and are saved to the daemon as they are made
// (typing is saved after a short pause), so the list, the preview and every
// other open window follow. While an edit is on its way the draft wins over
// what the daemon reports; afterwards the daemon's stored channel (with its
// automatic name and clamped values) replaces the draft.

import { html, nothing, type TemplateResult } from 'lit-html';
import { ifDefined } from 'lit-html/directives/if-defined.js';
import { styleMap } from 'lit-html/directives/style-map.js';
import { api, ApiError } from '../api/client';
import type { Channel, ChannelRule, PaletteColour, RuleConditionId, RuleDescription } from '../api/types';
import { navigate } from '../router';
import { channelViewsQuery, configQuery, tonesQuery } from '../state/data';
import { fetchSequence, forget, invalidate, query, requestRender } from '../state/store';
import { confirmDialog, showToast } from '../ui/dialog';
import { duration } from '../ui/format';
import { icon } from '../ui/icons';
import { errorNote, linkRow, loadingNote, screenHeader, section, segmented, selectRow, switchRow } from '../ui/widgets';
import { ruleEditor } from './ruleEditor';
import { escalationRefused, escalationSaved, escalationSection } from './escalationEditor';
import { ChannelDraft } from '../state/channelDraft';
import { errorMessage } from '../logic/errors';
import { ruleProblems, type RuleProblems } from '../logic/ruleProblems';

const repeatIntervals = [60, 120, 300, 600, 900, 1800];

interface EditorState {
  channelId: string;
  draft: ChannelDraft;
  description: RuleDescription | undefined;
  describedRule: string;
  describing: boolean;
  open: Set<RuleConditionId>;
  toneMessage: string;
  blankFocused: boolean;
  ruleProblems: RuleProblems; // from the last refused save, until one succeeds
}

let state: EditorState | null = null;

function stateFor(channelId: string): EditorState {
  if (!state || state.channelId !== channelId) {
    state?.draft.flush();
    state = {
      channelId,
      draft: new ChannelDraft({
        save: async (channel) => {
          const stored = await api.updateChannel(channel);
          if (state?.channelId === channelId) state.ruleProblems = {};
          escalationSaved(channelId, channel.escalation ?? []);
          return stored;
        },
        fetchSequence,
        saved: () => invalidate('channels'),
        failed: (error) => {
          // A rule past the limits: each problem also shows under its list.
          if (error instanceof ApiError && error.status === 400 && state?.channelId === channelId) {
            state.ruleProblems = ruleProblems(error.message);
            escalationRefused(channelId, error.message);
          }
          showToast(errorMessage(error));
        },
        changed: requestRender,
      }),
      description: undefined,
      describedRule: '',
      describing: false,
      open: new Set(),
      toneMessage: '',
      blankFocused: false,
      ruleProblems: {},
    };
  }
  return state;
}

// Leaving the editor must not lose a pending edit.
window.addEventListener('pagehide', () => state?.draft.flush());

function edit(editor: EditorState, change: (channel: Channel) => Channel, delay = 0): void {
  editor.draft.edit(change, delay);
}

function describe(editor: EditorState, rule: ChannelRule): void {
  const key = JSON.stringify(rule);
  if (editor.describedRule === key || editor.describing) return;
  editor.describing = true;
  api
    .describeRule(rule)
    .then(
      (description) => {
        editor.description = description;
        editor.describedRule = key;
      },
      () => {
        editor.describedRule = key;
      },
    )
    .finally(() => {
      editor.describing = false;
      requestRender();
    });
}

// The fields of the rule that each condition owns.
const conditionFields: Record<RuleConditionId, (keyof ChannelRule)[]> = {
  app: ['apps'],
  sender: ['senders'],
  keywords: ['keywords'],
  calls: ['calls'],
  hours: ['activeHours'],
  repeated: ['frequency'],
  cooldown: ['cooldownSeconds'],
};

// Adding (seeding) and removing (clearing) a condition follow the rule
// model's own logic in the daemon. The answer replaces only the fields of
// that condition, so edits made while it was on its way, or another
// condition changed at the same time, are kept.
async function changeCondition(
  editor: EditorState,
  condition: RuleConditionId,
  action: 'seed' | 'clear',
): Promise<void> {
  const draft = editor.draft.current;
  if (!draft) return;
  try {
    const { rule: changed } = await api.changeCondition(draft.rule, condition, action);
    if (action === 'seed') editor.open.add(condition);
    else editor.open.delete(condition);
    edit(editor, (channel) => {
      const rule: ChannelRule = { ...channel.rule };
      for (const field of conditionFields[condition]) {
        if (changed[field] === undefined) delete rule[field];
        else Object.assign(rule, { [field]: changed[field] });
      }
      return { ...channel, rule };
    });
    // A new condition takes the focus once it is drawn; a removed one hands
    // it to the add menu.
    window.setTimeout(() => {
      const target =
        action === 'seed'
          ? document.querySelector<HTMLElement>(
              `[data-condition="${condition}"] input, [data-condition="${condition}"] button:not(.icon-button), [data-condition="${condition}"] select`,
            )
          : document.getElementById('add-condition-button');
      target?.focus();
    }, 0);
  } catch (error) {
    showToast(errorMessage(error));
  }
}

async function previewTone(editor: EditorState, toneId: string): Promise<void> {
  const label = tonesQuery().data?.find((tone) => tone.id === toneId)?.label ?? toneId;
  editor.toneMessage = '';
  requestRender();
  try {
    await api.previewTone(toneId);
    editor.toneMessage = `Playing ${label} on this computer.`;
  } catch (error) {
    editor.toneMessage =
      error instanceof ApiError && error.status === 409
        ? `Can't play the tone here: ${error.message}`
        : errorMessage(error);
  }
  requestRender();
}

async function testRing(channel: Channel): Promise<void> {
  try {
    await api.testChannel(channel.id);
    invalidate('alarms', 'events');
  } catch (error) {
    showToast(errorMessage(error));
  }
}

async function deleteChannel(channel: Channel, back: string): Promise<void> {
  const confirmed = await confirmDialog({
    title: `Delete “${channel.name}”?`,
    message: 'Its alarms stop ringing for new notifications. The history keeps its events.',
    confirmLabel: 'Delete Channel',
    destructive: true,
  });
  if (!confirmed) return;
  if (state?.channelId === channel.id) {
    state.draft.discard();
    state = null;
  }
  // Leave the editor first: the live update of the deletion can arrive before
  // the answer, and the editor would ask again for the channel that is gone.
  navigate(back);
  try {
    await api.deleteChannel(channel.id);
    forget(`channel:${channel.id}`);
    invalidate('channels');
  } catch (error) {
    showToast(errorMessage(error));
  }
}

function secondsChoices(presets: readonly number[], current: number) {
  const all = presets.includes(current) ? [...presets] : [...presets, current].sort((a, b) => a - b);
  return all.map((seconds) => ({ value: seconds, label: duration(seconds) }));
}

function colourPicker(editor: EditorState, channel: Channel, palette: readonly PaletteColour[]): TemplateResult {
  const onKey = (event: KeyboardEvent) => {
    const index = palette.findIndex((colour) => colour.hex === channel.tintHex.toUpperCase());
    const step =
      event.key === 'ArrowRight' || event.key === 'ArrowDown'
        ? 1
        : event.key === 'ArrowLeft' || event.key === 'ArrowUp'
          ? -1
          : 0;
    if (!step) return;
    event.preventDefault();
    const next = palette[(Math.max(index, 0) + step + palette.length) % palette.length];
    if (!next) return;
    edit(editor, (draft) => ({ ...draft, tintHex: next.hex }));
    queueMicrotask(() =>
      (event.currentTarget as HTMLElement | null)?.querySelector<HTMLElement>('[aria-checked="true"]')?.focus(),
    );
  };
  const group = (event: KeyboardEvent) => onKey(event);
  return html`<div class="row wrap">
    <span class="row-label" id="colour-label">Colour</span>
    <div class="palette" role="radiogroup" aria-labelledby="colour-label" @keydown=${group}>
      ${palette.map((colour) => {
        const checked = colour.hex === channel.tintHex.toUpperCase();
        return html`<button
          type="button"
          role="radio"
          class="swatch"
          aria-checked=${checked ? 'true' : 'false'}
          aria-label=${colour.name}
          tabindex=${checked ? '0' : '-1'}
          style=${styleMap({ background: colour.hex })}
          @click=${() => edit(editor, (draft) => ({ ...draft, tintHex: colour.hex }))}
        ></button>`;
      })}
    </div>
  </div>`;
}

function toneRow(
  editor: EditorState,
  options: { id: string; label: string; value: string; includeSame: boolean; onChange: (value: string) => void },
): TemplateResult {
  const tones = tonesQuery().data ?? [];
  const playable = options.value || editor.draft.current?.sound || 'system';
  return html`<div class="row">
    <label class="row-label" for=${options.id}>${options.label}</label>
    <select
      id=${options.id}
      class="select"
      .value=${options.value}
      @change=${(event: Event) => options.onChange((event.target as HTMLSelectElement).value)}
    >
      ${options.includeSame ? html`<option value="" ?selected=${options.value === ''}>Same as Tone</option>` : nothing}
      ${tones.map((tone) => html`<option value=${tone.id} ?selected=${tone.id === options.value}>${tone.label}</option>`)}
    </select>
    <button
      type="button"
      class="icon-button"
      aria-label=${`Play ${options.label}`}
      title=${`Play ${options.label}`}
      @click=${() => void previewTone(editor, playable)}
    >
      ${icon('speaker.wave.2')}
    </button>
  </div>`;
}

export function channelEditorScreen(
  channelId: string,
  blank: 'sender' | 'app' | undefined,
  back: string,
): TemplateResult {
  const editor = stateFor(channelId);
  const stored = query(`channel:${channelId}`, ['channels'], () => api.channel(channelId));
  // The palette, presets and limits are the daemon's (GET /v1/config).
  const config = configQuery().data;
  const views = channelViewsQuery().data;
  const backLink = { href: back, label: back.startsWith('/history') ? 'Event' : 'Channels' };

  if (stored.data) editor.draft.adopt(stored.data, stored.sequence);
  const channel = editor.draft.current;
  if (!channel) {
    if (stored.error?.status === 404) {
      return html`${screenHeader({ title: 'Channel', back: backLink })}
        <div class="empty-state">
          <h2>Channel Deleted</h2>
          <p>This channel no longer exists.</p>
        </div>`;
    }
    return html`${screenHeader({ title: 'Channel', back: backLink })}${errorNote(stored.error)}${stored.error ? nothing : loadingNote()}`;
  }
  describe(editor, channel.rule);
  const description = editor.description;
  const view = views?.find((candidate) => candidate.channel.id === channel.id);
  // A template's blank condition is the one to fill in first: its field takes
  // the focus once, after the screen heading has taken it on navigation.
  if (blank && !editor.blankFocused) {
    editor.blankFocused = true;
    const fieldId = `${channel.id}-${blank === 'sender' ? 'senders' : 'apps'}-input`;
    window.setTimeout(() => document.getElementById(fieldId)?.focus(), 0);
  }

  const nameValue = channel.usesAutomaticName ? '' : channel.name;
  const onName = (event: Event) => {
    const typed = (event.target as HTMLInputElement).value;
    edit(
      editor,
      (draft) =>
        typed.trim() === ''
          ? { ...draft, usesAutomaticName: true, name: editor.description?.suggestedName ?? draft.name }
          : { ...draft, usesAutomaticName: false, name: typed },
      500,
    );
  };

  return html`${screenHeader({
    title: channel.name,
    back: backLink,
    actions: html`<button type="button" class="toolbar-button with-label" @click=${() => void testRing(channel)}>
      ${icon('alarm.waves.left.and.right')}<span>Test</span>
    </button>`,
  })}
  ${section({
    id: 'channel-basics',
    content: html`<div class="field">
        <label for="channel-name">Name</label>
        <input
          id="channel-name"
          type="text"
          maxlength=${ifDefined(config?.nameLimit)}
          .value=${nameValue}
          placeholder=${description?.suggestedName ?? channel.name}
          aria-describedby="channel-name-hint"
          @input=${onName}
        />
        <p class="hint" id="channel-name-hint">Leave blank to name it after its conditions.</p>
      </div>
      ${colourPicker(editor, channel, config?.palette ?? [])}
      ${switchRow({
        label: 'Enabled',
        detail: channel.isEnabled ? undefined : 'Matching notifications are skipped.',
        checked: channel.isEnabled,
        onChange: (isEnabled) => edit(editor, (draft) => ({ ...draft, isEnabled })),
      })}`,
  })}
  ${section({
    id: 'conditions',
    title: 'Conditions',
    content: ruleEditor({
      channelId: channel.id,
      rule: channel.rule,
      description,
      limits: config,
      open: editor.open,
      blank,
      problems: editor.ruleProblems,
      onRule: (rule) => edit(editor, (draft) => ({ ...draft, rule }), 300),
      onCondition: (condition, action) => void changeCondition(editor, condition, action),
    }),
    footer: html`${view ? html`<span>${view.connection.label}</span>` : nothing}`,
  })}
  ${section({
    content: linkRow(`/channels/${channel.id}/preview`, 'Preview', {
      symbol: 'list.bullet.rectangle',
      detail: 'What recent notifications would do',
    }),
  })}
  ${section({
    id: 'alarm',
    title: 'Alarm',
    content: html`<div class="row">
        <span class="row-label">Mode</span>
        ${segmented({
          label: 'Mode',
          value: channel.mode,
          choices: [
            { value: 'immediate', label: 'Immediate' },
            { value: 'countdown', label: 'Countdown' },
          ],
          onChange: (mode) => edit(editor, (draft) => ({ ...draft, mode })),
        })}
      </div>
      ${
        channel.mode === 'countdown'
          ? selectRow({
              id: 'countdown',
              label: 'Countdown',
              value: channel.countdownSeconds,
              choices: secondsChoices(config?.countdownPresets ?? [], channel.countdownSeconds),
              onChange: (countdownSeconds) => edit(editor, (draft) => ({ ...draft, countdownSeconds })),
            })
          : nothing
      }
      ${switchRow({
        label: 'Snooze',
        checked: channel.snoozeEnabled,
        onChange: (snoozeEnabled) => edit(editor, (draft) => ({ ...draft, snoozeEnabled })),
      })}
      ${
        channel.snoozeEnabled
          ? selectRow({
              id: 'snooze',
              label: 'Snooze for',
              value: channel.snoozeSeconds,
              choices: secondsChoices(config?.snoozePresets ?? [], channel.snoozeSeconds),
              onChange: (snoozeSeconds) => edit(editor, (draft) => ({ ...draft, snoozeSeconds })),
            })
          : nothing
      }
      ${switchRow({
        label: 'Repeat',
        detail: 'Reminder alarms after the first one.',
        checked: channel.repeatEnabled,
        onChange: (repeatEnabled) => edit(editor, (draft) => ({ ...draft, repeatEnabled })),
      })}
      ${
        channel.repeatEnabled
          ? html`${selectRow({
              id: 'repeat-interval',
              label: 'Every',
              value: channel.repeatIntervalSeconds,
              choices: secondsChoices(repeatIntervals, channel.repeatIntervalSeconds),
              onChange: (repeatIntervalSeconds) => edit(editor, (draft) => ({ ...draft, repeatIntervalSeconds })),
            })}
            ${selectRow({
              id: 'repeat-count',
              label: 'Reminders',
              value: channel.repeatCount,
              choices: Array.from({ length: 10 }, (_, i) => ({ value: i + 1, label: String(i + 1) })),
              onChange: (repeatCount) => edit(editor, (draft) => ({ ...draft, repeatCount })),
            })}`
          : nothing
      }
      ${switchRow({
        label: 'Show notification text',
        detail: 'The alarm shows the title and text of the notification.',
        checked: channel.showNotificationText,
        onChange: (showNotificationText) => edit(editor, (draft) => ({ ...draft, showNotificationText })),
      })}`,
  })}
  ${section({
    id: 'sound',
    title: 'Sound',
    content: html`${toneRow(editor, {
      id: 'tone',
      label: 'Tone',
      value: channel.sound,
      includeSame: false,
      onChange: (sound) => edit(editor, (draft) => ({ ...draft, sound })),
    })}
    ${
      channel.repeatEnabled
        ? toneRow(editor, {
            id: 'reminder-tone',
            label: 'Reminder Tone',
            value: channel.reminderSound ?? '',
            includeSame: true,
            onChange: (value) =>
              edit(editor, (draft) => {
                const next = { ...draft, reminderSound: value || undefined };
                if (!value) delete next.reminderSound;
                return next;
              }),
          })
        : nothing
    }`,
    footer: html`<span role="status"
      >${editor.toneMessage || 'The play button plays the tone on this computer.'}</span
    >`,
  })}
  ${escalationSection(channel, (escalation, delay) => edit(editor, (draft) => ({ ...draft, escalation }), delay))}
  ${section({
    content: html`<button
      type="button"
      class="row row-button destructive"
      @click=${() => void deleteChannel(channel, back)}
    >
      ${icon('trash', { className: 'row-icon' })}<span class="row-label">Delete Channel</span>
    </button>`,
  })}`;
}
