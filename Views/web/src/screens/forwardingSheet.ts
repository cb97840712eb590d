// The sheet "Forward <app>", opened from an app's status row in the rule
// editor: it explains how to get the app's notifications to Ringwell and
// switches by itself to the reaching state when the app's first notification
// is logged while it is open.

import { html, nothing, type TemplateResult } from 'lit-html';
import { ref } from 'lit-html/directives/ref.js';
import { knownAppsQuery } from '../state/data';
import { requestRender } from '../state/store';
import { isReaching } from '../logic/history';
import { icon } from '../ui/icons';
import { marked, numberedSteps } from '../ui/widgets';

let sheetApp: string | null = null;

export function openForwardingSheet(app: string): void {
  sheetApp = app;
  requestRender();
}

function close(): void {
  sheetApp = null;
  requestRender();
}

export function forwardingSheet(): TemplateResult | typeof nothing {
  if (sheetApp === null) return nothing;
  const app = sheetApp;
  const known = knownAppsQuery().data ?? [];
  const reaching = isReaching(app, known);
  // The ref runs while the template is drawn, before the dialog is in the
  // document; it can only be shown modally once it is.
  const show = (element?: Element) => {
    const dialog = element as HTMLDialogElement | undefined;
    if (!dialog) return;
    queueMicrotask(() => {
      if (dialog.isConnected && !dialog.open) dialog.showModal();
    });
  };
  return html`<dialog class="sheet" aria-labelledby="forward-title" ${ref(show)} @close=${close}>
    <div class="sheet-bar">
      <h2 id="forward-title">Forward ${app}</h2>
      <button
        type="button"
        class="button"
        @click=${(event: Event) => (event.target as HTMLElement).closest('dialog')?.close()}
      >
        Done
      </button>
    </div>
    ${
      reaching
        ? html`<div class="sheet-state reaching" role="status">
            ${icon('checkmark.seal.fill', { className: 'big-icon good' })}
            <p>${app} notifications are reaching Ringwell.</p>
          </div>`
        : html`<p>Ringwell only hears from apps that your automation forwards.</p>
            ${numberedSteps([
              'Ringwell captures this desktop’s notifications while **ringwell serve** runs.',
              `Make sure **${app}** is captured: name it with **ringwell capture apps**, or capture every app.`,
            ])}
            <a class="button" href="/settings/setup" @click=${close}
              >${icon('arrow.up.forward.app')} Automation Setup</a
            >
            <p class="waiting" role="status">
              <span class="spinner" aria-hidden="true"></span>
              Waiting for a notification from ${app}
            </p>
            <p class="note">
              ${marked(`Its next notification confirms the setup. Until then, ${app} shows a warning in the app list.`)}
            </p>`
    }
  </dialog>`;
}
