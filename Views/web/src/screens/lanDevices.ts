// Phones that send over the network: the devices, adding one (its URL, its
// token shown once, a QR code of both and two ready recipes) and removing one.

import { html, nothing, type TemplateResult } from 'lit-html';
import qrcode from 'qrcode-generator';
import { api } from '../api/client';
import type { NewLanDevice } from '../api/types';
import { forget, query, requestRender } from '../state/store';
import { icon } from '../ui/icons';
import { copyableCommand, errorNote, loadingNote, section } from '../ui/widgets';

const devicesKey = 'devices';
let justAdded: NewLanDevice | undefined;
let failure: { message: string } | undefined;

function reload(): void {
  forget(devicesKey);
  requestRender();
}

async function addDevice(form: HTMLFormElement): Promise<void> {
  const name = (new FormData(form).get('name') ?? '').toString();
  try {
    justAdded = await api.addDevice(name);
    failure = undefined;
    form.reset();
  } catch (error) {
    failure = { message: (error as Error).message };
  }
  reload();
}

async function removeDevice(name: string): Promise<void> {
  try {
    await api.removeDevice(name);
    if (justAdded?.name === name) justAdded = undefined;
    failure = undefined;
  } catch (error) {
    failure = { message: (error as Error).message };
  }
  reload();
}

// Both texts a phone needs, in one code to scan.
function qrImage(device: NewLanDevice): TemplateResult {
  const code = qrcode(0, 'M');
  code.addData(JSON.stringify({ url: device.url, token: device.token }));
  code.make();
  return html`<img class="device-qr" alt="QR code of the URL and the token" src=${code.createDataURL(4, 8)} />`;
}

// The Send's JSON body, with the trigger's values where an automation fills them in.
export function androidBody(): string {
  return JSON.stringify({ app: '%app', notificationTitle: '%title', notificationBody: '%text' }, null, 2);
}

function newDevice(device: NewLanDevice): TemplateResult {
  const bearer = `Bearer ${device.token}`;
  return html`<div class="padded new-device" aria-label="New device">
    <p><strong>${device.name}</strong> is added. Its token is shown only now: copy it or scan the code.</p>
    <p class="row-label">URL</p>
    ${copyableCommand(device.url)}
    <p class="row-label">Token</p>
    ${copyableCommand(device.token)} ${qrImage(device)}
    ${device.problem ? html`<p class="note">Not listening yet: ${device.problem}</p>` : nothing}
    <h3>iPhone: an automation with “Get Contents of URL”</h3>
    <ol class="steps">
      <li>Automation: When I get a notification from the apps that might ring.</li>
      <li>Action “Get Contents of URL”; URL: <code>${device.url}</code>.</li>
      <li>Method: POST. Headers: add <code>Authorization</code> with the value <code>${bearer}</code>.</li>
      <li>
        Request Body: JSON, with text fields <code>app</code> ← App, <code>notificationTitle</code> ← Title,
        <code>notificationBody</code> ← Body, <code>sender</code> ← Sender, <code>timeSensitive</code> ← Is Time
        Sensitive (each the automation’s Shortcut Input).
      </li>
    </ol>
    <h3>Android: an HTTP request (Tasker, Automate, HTTP Shortcuts)</h3>
    <ol class="steps">
      <li>On a notification of the apps that might ring, send an HTTP request.</li>
      <li>Method POST to <code>${device.url}</code>.</li>
      <li>Headers: <code>Authorization: ${bearer}</code> and <code>Content-Type: application/json</code>.</li>
      <li>Body (replace the %… placeholders with your app’s notification variables):</li>
    </ol>
    ${copyableCommand(androidBody())}
  </div>`;
}

export function lanDevicesSection(): TemplateResult {
  const result = query(devicesKey, [], api.devices);
  const state = result.data;
  const list = !state
    ? result.error
      ? nothing
      : loadingNote()
    : state.devices.length === 0
      ? html`<p class="row muted">No phones yet. Add one below: it gets an address and a token for its automation.</p>`
      : html`<ul class="app-rows device-rows">
          ${state.devices.map(
            (device) =>
              html`<li class="row">
                ${icon('phone.fill', { className: 'row-icon' })}
                <span class="row-label">${device.name}</span>
                <button
                  type="button"
                  class="button small destructive"
                  aria-label="Remove ${device.name}"
                  @click=${() => removeDevice(device.name)}
                >
                  Remove
                </button>
              </li>`,
          )}
        </ul>`;
  const listener = !state
    ? nothing
    : html`<p class="note listener-note">
        ${
          state.listening
            ? `Phones send to ${state.url}.`
            : state.devices.length === 0
              ? 'Off until a device is added.'
              : `Not listening: ${state.problem}`
        }
        ${state.tls ? '' : ' Without TLS the token crosses the network in clear.'}
      </p>`;
  return section({
    id: 'lan-devices',
    title: 'Phones on the network',
    content: html`${errorNote(result.error ?? failure)} ${list}
      <form
        class="padded add-device"
        @submit=${(event: Event) => {
          event.preventDefault();
          void addDevice(event.target as HTMLFormElement);
        }}
      >
        <label>Device name <input type="text" name="name" required maxlength="64" /></label>
        <button type="submit" class="button small primary">Add device</button>
      </form>
      ${justAdded ? newDevice(justAdded) : nothing} ${listener}`,
    footer: 'A phone’s own automation can send its notifications here over the local network.',
  });
}
