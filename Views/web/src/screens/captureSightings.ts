// The setup guide's capture section, below its switch: the apps whose
// notifications the daemon saw since it started, each with a count and a
// "Ring for this app" shortcut to a new channel for it, and whether a phone
// bridge (KDE Connect, GSConnect) mirrored anything.

import { html, type TemplateResult } from 'lit-html';
import { api } from '../api/client';
import { toDate, type CaptureState } from '../api/types';
import { errorMessage } from '../logic/errors';
import { relativeDescription } from '../logic/relativeTime';
import { navigate } from '../router';
import { requestRender } from '../state/store';
import { icon } from '../ui/icons';
import { errorNote } from '../ui/widgets';

let shortcutError: string | undefined;

// A new channel whose rule names the app, opened in the channel editor.
async function ringForApp(app: string): Promise<void> {
  try {
    shortcutError = undefined;
    const channel = await api.addChannel({ rule: { apps: [app] } });
    navigate(`/channels/${channel.id}`);
  } catch (error) {
    shortcutError = errorMessage(error);
    requestRender();
  }
}

function lastSeen(seconds: number, now: Date): string {
  return `last ${relativeDescription(toDate(seconds), now)}`;
}

export function seenAppRows(capture: CaptureState, now = new Date()): TemplateResult {
  const apps = capture.seenApps ?? [];
  return html`<h3 class="capture-subtitle" id="seen-apps-title">Apps seen since start</h3>
    ${errorNote(shortcutError === undefined ? undefined : { message: shortcutError })}
    ${
      apps.length === 0
        ? html`<p class="row muted">No notifications yet. Apps appear here as they post.</p>`
        : html`<ul class="app-rows" aria-labelledby="seen-apps-title">
            ${apps.map(
              (app) =>
                html`<li class="row">
                  ${icon('app.badge', { className: 'row-icon' })}
                  <span class="row-label"
                    >${app.name}
                    <span class="row-detail"
                      >${app.count === 1 ? '1 notification' : `${app.count} notifications`},
                      ${lastSeen(app.lastSeen, now)}</span
                    ></span
                  >
                  <button
                    class="button small"
                    aria-label=${`Ring for ${app.name}`}
                    @click=${() => void ringForApp(app.name)}
                  >
                    Ring for this app
                  </button>
                </li>`,
            )}
          </ul>`
    }`;
}

export function bridgeRows(capture: CaptureState, now = new Date()): TemplateResult {
  const bridges = capture.bridges ?? [];
  if (bridges.length === 0)
    return html`<div class="row" aria-label="Phone bridge">
      ${icon('phone.fill', { className: 'row-icon' })}
      <span class="row-label"
        >Phone bridge
        <span class="row-detail"
          >No phone seen since start. KDE Connect or GSConnect mirror a phone’s notifications here.</span
        ></span
      >
    </div>`;
  return html`${bridges.map(
    (bridge) =>
      html`<div class="row" aria-label="Phone bridge">
        ${icon('phone.fill', { className: 'row-icon' })}
        <span class="row-label"
          >${bridge.device || 'A phone'} through ${bridge.kind}
          <span class="row-detail">Seen, ${lastSeen(bridge.lastSeen, now)}</span></span
        >
      </div>`,
  )}`;
}
