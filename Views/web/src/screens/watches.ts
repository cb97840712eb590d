// The watches on forwarding, under the setup guide's app rows: each app's
// expectation, whether it has gone silent or when it was last heard from, a
// form to add one (every N hours, optionally only between two times) and
// removal.

import { html, nothing, type TemplateResult } from 'lit-html';
import { api } from '../api/client';
import type { NewWatch, Watch } from '../api/types';
import { forget, query, requestRender } from '../state/store';
import { shortDate, timeToMinute } from '../ui/format';
import { errorNote, loadingNote, section } from '../ui/widgets';

const watchesKey = 'watches';
let failure: { message: string } | undefined;

function reload(): void {
  forget(watchesKey);
  requestRender();
}

async function change(action: () => Promise<unknown>): Promise<boolean> {
  try {
    await action();
    failure = undefined;
    return true;
  } catch (error) {
    failure = { message: (error as Error).message };
    return false;
  } finally {
    reload();
  }
}

// The form's watch: hours only when both times are given (every day then).
export function watchFromForm(data: FormData): NewWatch {
  const text = (name: string) => (data.get(name) ?? '').toString().trim();
  const watch: NewWatch = { app: text('app'), everySeconds: Math.round(Number(text('hours')) * 3600) };
  const from = timeToMinute(text('from'));
  const to = timeToMinute(text('to'));
  if (from !== undefined && to !== undefined)
    watch.hours = { weekdays: [1, 2, 3, 4, 5, 6, 7], startMinute: from, endMinute: to };
  return watch;
}

export function watchState(watch: Watch): string {
  if (watch.isSilent && watch.silentSince !== undefined) return `Silent since ${shortDate(watch.silentSince)}`;
  const heard = watch.lastHeard !== undefined ? `Last heard ${shortDate(watch.lastHeard)}` : 'Not heard from yet';
  return watch.dueAt !== undefined ? `${heard}; silent if nothing by ${shortDate(watch.dueAt)}` : heard;
}

function watchRow(watch: Watch): TemplateResult {
  return html`<li class="row watch-row ${watch.isSilent ? 'is-silent' : ''}" aria-label="Watch on ${watch.app}">
    <span class="row-label">
      <strong>${watch.app}</strong>
      <span class="note">${watch.summary}</span>
      <span class="watch-state">${watchState(watch)}</span>
    </span>
    <button
      type="button"
      class="button small destructive"
      aria-label="Stop watching ${watch.app}"
      @click=${() => change(() => api.removeWatch(watch.app))}
    >
      Stop watching
    </button>
  </li>`;
}

export function watchesSection(apps: string[] | null | undefined): TemplateResult {
  const result = query(watchesKey, ['events', 'minute'], api.watches);
  const state = result.data;
  const list = !state
    ? result.error
      ? nothing
      : loadingNote()
    : html`${
        state.captureSilentSince !== undefined
          ? html`<p class="warning-note">
              Capture of this computer’s notifications stopped working after ${shortDate(state.captureSilentSince)}.
            </p>`
          : nothing
      }
      ${
        state.watches.length === 0
          ? html`<p class="row muted">No watches yet.</p>`
          : html`<ul class="watch-rows">
              ${state.watches.map(watchRow)}
            </ul>`
      }`;
  return section({
    id: 'watches',
    title: 'Is forwarding still alive?',
    content: html`${errorNote(result.error ?? failure)} ${list}
      <form
        class="padded add-watch"
        @submit=${async (event: Event) => {
          event.preventDefault();
          const form = event.target as HTMLFormElement;
          if (await change(() => api.addWatch(watchFromForm(new FormData(form))))) form.reset();
        }}
      >
        <label>App <input type="text" name="app" required list="watch-apps" maxlength="200" /></label>
        <datalist id="watch-apps">${(apps ?? []).map((app) => html`<option value=${app}></option>`)}</datalist>
        <label
          >A notification at least every
          <input name="hours" type="number" required min="0.5" max="168" step="0.5" value="3" /> hours</label
        >
        <label>Only from <input name="from" type="time" /></label>
        <label>to <input name="to" type="time" /></label>
        <button type="submit" class="button small primary">Watch</button>
      </form>`,
    footer:
      'When a watched app sends nothing for that long, Ringwell tells you once: forwarding may have stopped. ' +
      'A LAN device is watched as “device:NAME”.',
  });
}
