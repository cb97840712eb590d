// The Channels tab: the list, the add menu and its templates, the channel
// editor with the rule editor, reordering, the preview and the forwarding sheet.

import type { Page } from '@playwright/test';
import type { Channel } from '../src/api/types';
import type { Daemon } from './support/daemon';
import { expect, openApp, snap, test } from './support/fixtures';

// Every test starts from a fresh daemon and seeds the channels it works on.
test.use({ onboarded: true });

const channels = (daemon: Daemon) => daemon.api<Channel[]>('GET', '/v1/channels');
const channelNamed = async (daemon: Daemon, name: string) =>
  (await channels(daemon)).find((channel) => channel.name === name);

// "Mom": what the "Calls from someone" template makes for Mom's calls.
const addMom = (daemon: Daemon) =>
  daemon.api<Channel>('POST', '/v1/channels', {
    rule: { apps: ['Phone'], senders: ['Mom'], calls: 'incoming', cooldownSeconds: 300 },
  });
const addSlack = (daemon: Daemon) => daemon.api<Channel>('POST', '/v1/channels', { rule: { apps: ['Slack'] } });

function rowOf(page: Page, name: string) {
  return page.locator('.channel-row').filter({ has: page.locator('.channel-name', { hasText: name }) });
}

test('lists the seeded channel with its badge, status and the reorder footer', async ({ page, daemon }) => {
  await openApp(page, daemon);
  const urgent = rowOf(page, 'Urgent');
  await expect(urgent).toBeVisible();
  await expect(urgent.getByText('Immediate')).toBeVisible();
  await expect(urgent.getByText('Never triggered')).toBeVisible();
  await expect(urgent.getByText('Any app')).toBeVisible();
  await expect(page.getByText('The first matching channel rings. Drag to reorder.')).toBeVisible();
  await snap(page, 'channels-list');
});

test('follows channels changed elsewhere without reloading', async ({ page, daemon }) => {
  await openApp(page, daemon);
  const { stdout } = await daemon.cli('channel', 'add', '--template', 'missed-calls', '--json');
  const added = JSON.parse(stdout) as Channel;
  await expect(rowOf(page, 'Missed Calls')).toContainText('Phone · missed calls');
  await daemon.cli('channel', 'delete', added.id);
  await expect(rowOf(page, 'Missed Calls')).toHaveCount(0);
});

test('adds a channel from a template and fills its blank condition first', async ({ page, daemon }) => {
  await openApp(page, daemon);
  // The add menu works from the keyboard.
  await page.getByRole('button', { name: 'Add Channel' }).focus();
  await page.keyboard.press('ArrowDown');
  const menu = page.getByRole('menu', { name: 'Add Channel' });
  await expect(menu.getByRole('menuitem')).toHaveCount(9);
  await expect(menu.getByRole('menuitem').first()).toBeFocused();
  await expect(menu.getByRole('menuitem', { name: /Calls from someone/ })).toContainText(
    'Rings while their call is ringing, even when muted',
  );
  await snap(page, 'channels-add-menu');
  await menu.getByRole('menuitem', { name: /Calls from someone/ }).click();

  await expect(page.getByRole('heading', { level: 1, name: 'Incoming Calls' })).toBeVisible();
  const from = page.locator('[data-condition="sender"]');
  await expect(from).toHaveClass(/needs-input/);
  const field = from.getByRole('textbox', { name: 'Add a person' });
  await expect(field).toBeFocused();
  await snap(page, 'channel-editor-template');

  await field.fill('Mom');
  await field.press('Enter');
  await expect(from.getByRole('listitem').filter({ hasText: 'Mom' })).toBeVisible();
  // The automatic name follows the rule once the daemon has stored it.
  await expect(page.getByRole('heading', { level: 1, name: 'Mom' })).toBeVisible();
  await expect
    .poll(async () => (await channelNamed(daemon, 'Mom'))?.rule)
    .toMatchObject({
      apps: ['Phone'],
      senders: ['Mom'],
      calls: 'incoming',
      cooldownSeconds: 300,
    });
  // Phone is always among the known apps, so its row says it reaches Ringwell.
  await expect(page.locator('[data-condition="app"]').getByText('Reaching Ringwell')).toBeVisible();

  await page.getByRole('link', { name: 'Channels' }).first().click();
  await expect(rowOf(page, 'Mom')).toContainText('Phone · from Mom · incoming calls');
});

test('edits the alarm settings, the name and the colour, and the list follows', async ({ page, daemon }) => {
  const mom = await addMom(daemon);
  await openApp(page, daemon, `/channels/${mom.id}`);
  await expect(page.getByText('Leave blank to name it after its conditions.')).toBeVisible();

  await page.getByRole('radio', { name: 'Countdown' }).click();
  await page.getByLabel('Countdown', { exact: true }).selectOption('60');
  await page.getByRole('switch', { name: 'Snooze' }).click();
  await page.getByRole('radio', { name: 'Blue' }).click();
  await page.getByLabel('Name').fill('Mother');
  await expect
    .poll(async () => (await channels(daemon)).find((channel) => channel.id === mom.id))
    .toMatchObject({
      name: 'Mother',
      usesAutomaticName: false,
      mode: 'countdown',
      countdownSeconds: 60,
      snoozeEnabled: true,
      tintHex: '#007AFF',
    });

  // Clearing the name hands it back to the rule.
  await page.getByLabel('Name').fill('');
  await expect.poll(async () => (await channels(daemon)).find((channel) => channel.id === mom.id)?.name).toBe('Mom');
  await page.getByRole('link', { name: 'Channels' }).first().click();
  await expect(rowOf(page, 'Mom').getByText('Countdown 1m')).toBeVisible();
});

test.describe('tone preview', () => {
  // The refused preview below is logged by the browser as a failed request.
  test.use({ expectedConsoleError: /status of 409/ });

  test('plays a tone through the daemon, and says so when it cannot', async ({ page, daemon }) => {
    const mom = await addMom(daemon);
    await openApp(page, daemon, `/channels/${mom.id}`);
    await page.getByLabel('Tone', { exact: true }).selectOption('klaxon');
    const played = page.waitForResponse((response) => response.url().endsWith('/v1/tones/klaxon/preview'));
    await page.getByRole('button', { name: 'Play Tone' }).click();
    expect((await played).ok()).toBe(true);
    await expect(page.getByRole('status').filter({ hasText: 'Playing Klaxon on this computer.' })).toBeVisible();
    await expect.poll(async () => (await channelNamed(daemon, 'Mom'))?.sound).toBe('klaxon');

    // A machine without an audio server: the daemon answers 409 with the reason.
    await page.route('**/v1/tones/*/preview', (route) =>
      route.fulfill({ status: 409, json: { error: 'There is no audio server.' } }),
    );
    await page.getByRole('button', { name: 'Play Tone' }).click();
    await expect(
      page.getByRole('status').filter({ hasText: "Can't play the tone here: There is no audio server." }),
    ).toBeVisible();
  });
});

test('adds and removes conditions and reports invalid patterns', async ({ page, daemon }) => {
  const mom = await addMom(daemon);
  await openApp(page, daemon, `/channels/${mom.id}`);
  const addCondition = page.getByRole('button', { name: 'Add Condition' });
  // The menu opens and closes from the keyboard, handing the focus back.
  await addCondition.focus();
  await page.keyboard.press('Enter');
  await expect(page.getByRole('menuitem').first()).toBeFocused();
  await page.keyboard.press('Escape');
  await expect(page.getByRole('menu')).toHaveCount(0);
  await expect(addCondition).toBeFocused();

  await addCondition.click();
  await page.getByRole('menuitem', { name: 'Contains' }).click();
  const contains = page.locator('[data-condition="keywords"]');
  const words = contains.getByRole('textbox', { name: 'Add a word' });
  await expect(words).toBeFocused();
  await words.fill('(');
  await words.press('Enter');
  await page.getByRole('switch', { name: 'Regular expressions' }).click();
  await expect(page.getByText('Invalid pattern: (')).toBeVisible();
  await words.fill('urgent|asap');
  await words.press('Enter');
  await contains.getByRole('button', { name: 'Remove (' }).click();
  await expect(page.getByText('Invalid pattern:')).toHaveCount(0);

  await addCondition.click();
  await page.getByRole('menuitem', { name: 'Time of day' }).click();
  const hours = page.locator('[data-condition="hours"]');
  const days = hours.getByRole('group', { name: 'Days' }).getByRole('button');
  await expect(days).toHaveText(['Mon', 'Tue', 'Wed', 'Thu', 'Fri', 'Sat', 'Sun']);
  await hours.getByRole('button', { name: 'Sunday' }).click();
  await hours.getByRole('button', { name: 'Saturday' }).click();
  await expect(hours.getByRole('button', { name: 'Saturday' })).toHaveAttribute('aria-pressed', 'false');

  await addCondition.click();
  await page.getByRole('menuitem', { name: 'Repeated' }).click();
  // Every condition is in use now (the template brought a cooldown).
  await expect(addCondition).toHaveCount(0);

  await expect
    .poll(async () => (await channelNamed(daemon, 'Mom'))?.rule)
    .toMatchObject({
      keywords: ['urgent|asap'],
      usesRegex: true,
      activeHours: { weekdays: [2, 3, 4, 5, 6], startMinute: 1320, endMinute: 420 },
      frequency: { count: 3, windowSeconds: 600 },
    });
  await expect(page.getByLabel('Rule summary')).toHaveText(
    'Phone · from Mom · contains urgent|asap · incoming calls · Weekdays 22:00–07:00 · 3× in 10 min',
  );
  await snap(page, 'channel-editor-conditions');

  await hours.getByRole('button', { name: 'Remove Time of day' }).click();
  // The cards below move up once it is gone.
  await expect(hours).toHaveCount(0);
  await page.locator('[data-condition="repeated"]').getByRole('button', { name: 'Remove Repeated' }).click();
  await expect.poll(async () => (await channelNamed(daemon, 'Mom'))?.rule.activeHours).toBeUndefined();
  await expect.poll(async () => (await channelNamed(daemon, 'Mom'))?.rule.frequency).toBeUndefined();
});

test.describe('over the limits', () => {
  // The daemon answers the refused saves with 400, which the browser logs.
  test.use({ expectedConsoleError: /status of 400/ });

  test('shows the limits the daemon refuses next to the list they are about', async ({ page, daemon }) => {
    const keywords = Array.from({ length: 100 }, (_, i) => `word ${i}`);
    const channel = await daemon.api<Channel>('POST', '/v1/channels', { name: 'Busy', rule: { keywords } });
    await openApp(page, daemon, `/channels/${channel.id}`);
    const contains = page.locator('[data-condition="keywords"]');
    const words = contains.getByRole('textbox', { name: 'Add a word' });
    await words.fill('one too many');
    await words.press('Enter');
    const problem = contains.getByRole('alert');
    await expect(problem).toHaveText('A rule can have at most 100 keywords; this one has 101.');
    await expect(words).toHaveAttribute('aria-invalid', 'true');

    // A sender past the length limit is shown under the people, not the words.
    await page.getByRole('button', { name: 'Add Condition' }).click();
    await page.getByRole('menuitem', { name: 'From' }).click();
    const from = page.locator('[data-condition="sender"]');
    const people = from.getByRole('textbox', { name: 'Add a person' });
    await people.fill('x'.repeat(201));
    await people.press('Enter');
    await expect(from.getByRole('alert')).toContainText('is longer than 200 characters.');
    await expect(contains.getByRole('alert')).toHaveCount(0);

    // The refused entry is gone again; the next save the daemon takes clears the note.
    await people.fill('Mom');
    await people.press('Enter');
    await expect(from.getByRole('alert')).toHaveCount(0);
    await expect.poll(async () => (await channelNamed(daemon, 'Busy'))?.rule.senders).toEqual(['Mom']);
  });
});

test('shows whether an app reaches Ringwell, and the forwarding sheet turns live', async ({ page, daemon }) => {
  const added = await daemon.api<Channel>('POST', '/v1/channels', { rule: { apps: ['Slack'] } });
  await openApp(page, daemon, `/channels/${added.id}`);
  const app = page.locator('[data-condition="app"]');
  await expect(app.getByText('Not heard from yet. Check setup.')).toBeVisible();
  await app.getByRole('button', { name: 'Check Slack' }).click();
  const sheet = page.getByRole('dialog', { name: 'Forward Slack' });
  await expect(sheet.getByText('Waiting for a notification from Slack')).toBeVisible();
  await snap(page, 'forwarding-sheet');

  await daemon.cli('send', '--app', 'Slack', '--title', 'Deploy', '--body', 'done');
  await expect(sheet.getByText('Slack notifications are reaching Ringwell.')).toBeVisible();
  // "Urgent" took it and rings over every screen; silence it to go on.
  await daemon.api('POST', '/v1/stop-all');
  await sheet.getByRole('button', { name: 'Done' }).click();
  await expect(sheet).toBeHidden();
  await expect(app.getByText('Reaching Ringwell')).toBeVisible();
});

test('reorders by dragging and from the keyboard', async ({ page, daemon }) => {
  await addMom(daemon);
  await addSlack(daemon);
  await openApp(page, daemon);
  const names = async () => (await channels(daemon)).map((channel) => channel.name);
  expect(await names()).toEqual(['Urgent', 'Mom', 'Slack']);

  // Drag "Slack" by its handle above "Urgent".
  const handle = rowOf(page, 'Slack').getByRole('button', { name: /Reorder Slack/ });
  const target = rowOf(page, 'Urgent');
  const from = (await handle.boundingBox())!;
  const to = (await target.boundingBox())!;
  await page.mouse.move(from.x + from.width / 2, from.y + from.height / 2);
  await page.mouse.down();
  await page.mouse.move(from.x + from.width / 2, to.y + 4, { steps: 8 });
  await page.mouse.up();
  await expect.poll(names).toEqual(['Slack', 'Urgent', 'Mom']);
  await expect(page.locator('.channel-name')).toHaveText(['Slack', 'Urgent', 'Mom']);

  // Arrow keys on a handle move that channel one place.
  await rowOf(page, 'Slack')
    .getByRole('button', { name: /Reorder Slack/ })
    .focus();
  await page.keyboard.press('ArrowDown');
  await expect.poll(names).toEqual(['Urgent', 'Slack', 'Mom']);
  await expect(page.getByRole('button', { name: /Reorder Slack, position 2 of 3/ })).toBeFocused();
  await page.keyboard.press('End');
  await expect.poll(names).toEqual(['Urgent', 'Mom', 'Slack']);
});

test('switches a channel off from the list', async ({ page, daemon }) => {
  await addSlack(daemon);
  await openApp(page, daemon);
  const toggle = page.getByRole('switch', { name: 'Slack enabled' });
  await expect(toggle).toHaveAttribute('aria-checked', 'true');
  await toggle.click();
  await expect(toggle).toHaveAttribute('aria-checked', 'false');
  await expect.poll(async () => (await channelNamed(daemon, 'Slack'))?.isEnabled).toBe(false);
});

test('previews the rule against recent notifications with each check', async ({ page, daemon }) => {
  const mom = await addMom(daemon);
  await daemon.cli('send', '--app', 'Phone', '--title', 'Mom', '--sender', 'Mom');
  await daemon.cli('send', '--app', 'Messages', '--title', 'Dad', '--body', 'dinner?');
  await daemon.api('POST', '/v1/stop-all');
  await openApp(page, daemon, `/channels/${mom.id}/preview`);
  await expect(page.getByRole('heading', { level: 1, name: 'Preview' })).toBeVisible();
  const entries = page.locator('.preview-entry');
  await expect(entries.first()).toContainText('Messages · Dad');
  await expect(entries.first()).toContainText('No match');
  const call = entries.filter({ hasText: 'Phone · Mom' });
  await expect(call).toContainText(/Rings|Taken by/);
  await call.locator('summary').click();
  await expect(call.getByRole('list', { name: 'Checks' }).getByRole('listitem').first()).toBeVisible();
  await snap(page, 'channel-preview');
  // As if at another moment: the same replay through the daemon's trace engine.
  await page.getByLabel('As if at').selectOption('sun');
  await page.getByLabel('Time').fill('03:00');
  await expect(entries.first()).toContainText('Messages · Dad');
  await expect(page.locator('.error-note')).toHaveCount(0);
});

test('rings a test alarm from the editor and deletes the channel after confirming', async ({ page, daemon }) => {
  const slack = await addSlack(daemon);
  await daemon.api('PUT', `/v1/channels/${slack.id}`, { ...slack, isEnabled: false });
  await openApp(page, daemon, `/channels/${slack.id}`);
  // Even a switched-off channel rings when tested.
  await page.getByRole('button', { name: 'Test', exact: true }).click();
  const alarm = page.locator('.alarm-card');
  await expect(alarm).toBeVisible();
  await expect(alarm).toContainText('Slack');
  await alarm.getByRole('button', { name: 'Stop' }).click();
  await expect(alarm).toHaveCount(0);

  await page.getByRole('button', { name: 'Delete Channel' }).click();
  const confirm = page.getByRole('dialog', { name: 'Delete “Slack”?' });
  await confirm.getByRole('button', { name: 'Cancel' }).click();
  expect(await channelNamed(daemon, 'Slack')).toBeDefined();
  await page.getByRole('button', { name: 'Delete Channel' }).click();
  await confirm.getByRole('button', { name: 'Delete Channel' }).click();
  await expect(page.getByRole('heading', { level: 1, name: 'Channels' })).toBeVisible();
  await expect.poll(async () => await channelNamed(daemon, 'Slack')).toBeUndefined();
});
