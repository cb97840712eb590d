// How notifications reach Ringwell on Linux: a ready-made forwarding script
// (served beside the app) or an automation of one's own that hands each
// notification to `ringwell send`. Shared by the onboarding and the guide.

import { html, type TemplateResult } from 'lit-html';
import { forwardingScriptCommand, scriptName, sendCommand } from '../logic/shell';
import { icon } from '../ui/icons';
import { copyableCommand, marked, numberedSteps } from '../ui/widgets';

export const scriptPath = `/${scriptName}`;

export const mappingStep =
  'Call **ringwell send** and map each of its options to the notification: **--app**, **--title**, **--body**, **--notification** (title, a line break, then the text) and **--time-sensitive**.';

export function downloadButton(): TemplateResult {
  return html`<a class="button primary" href=${scriptPath} download=${scriptName} data-external>
    ${icon('square.and.arrow.down')} Add the Ringwell Automation
  </a>`;
}

export function automationSections(apps: string[] | null | undefined): TemplateResult {
  return html`<section class="group" aria-labelledby="add-automation-title">
      <h2 class="group-title" id="add-automation-title">Add the automation</h2>
      <div class="group-body padded">
        <p>A ready-made automation. Add it, pick apps, turn it on.</p>
        ${numberedSteps([
          'Click **Add the Ringwell Automation** to save the forwarding script.',
          'Name the apps that might ring after it. Apps aren’t in the file.',
          'Turn the automation **on**: run it in your desktop session, or add it to your session’s autostart.',
        ])}
        ${downloadButton()} ${copyableCommand(forwardingScriptCommand(apps))}
      </div>
    </section>
    <section class="group" aria-labelledby="by-hand-title">
      <h2 class="group-title" id="by-hand-title">By hand</h2>
      <div class="group-body padded">
        ${numberedSteps([
          'Watch the desktop’s notifications, for example with **dbus-monitor** on the session bus.',
          'Keep the notifications of the apps that might ring.',
          mappingStep,
        ])}
        ${copyableCommand(sendCommand)}
      </div>
    </section>`;
}

export function markedParagraph(text: string): TemplateResult {
  return html`<p>${marked(text)}</p>`;
}
