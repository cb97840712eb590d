// How notifications reach Ringwell on Linux: the daemon captures the
// desktop's notifications itself (limited to the apps one chooses), and
// anything else hands notifications to `ringwell send`. Shared by the
// onboarding and the guide.

import { html, type TemplateResult } from 'lit-html';
import { captureAppsCommand, sendCommand } from '../logic/shell';
import { copyableCommand, marked, numberedSteps } from '../ui/widgets';

export const mappingStep =
  'Call **ringwell send** and map each of its options to the notification: **--app**, **--title**, **--body**, **--notification** (title, a line break, then the text) and **--time-sensitive**.';

export const captureSteps = [
  'Keep **ringwell serve** running in your desktop session: it captures the desktop’s notifications itself.',
  'Phone notifications arrive through **KDE Connect** or **GSConnect**.',
  'Choose the apps that might ring, or every app:',
];

export function automationSections(apps: string[] | null | undefined): TemplateResult {
  return html`<section class="group" aria-labelledby="add-automation-title">
      <h2 class="group-title" id="add-automation-title">Add the automation</h2>
      <div class="group-body padded">${numberedSteps(captureSteps)} ${copyableCommand(captureAppsCommand(apps))}</div>
    </section>
    <section class="group" aria-labelledby="by-hand-title">
      <h2 class="group-title" id="by-hand-title">By hand</h2>
      <div class="group-body padded">
        ${numberedSteps([
          'For notifications from elsewhere (a script, another machine), keep those of the apps that might ring.',
          mappingStep,
        ])}
        ${copyableCommand(sendCommand)}
      </div>
    </section>`;
}

export function markedParagraph(text: string): TemplateResult {
  return html`<p>${marked(text)}</p>`;
}
