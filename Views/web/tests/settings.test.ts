// Settings, the setup guide and the setup test screen.

import { readFileSync } from 'node:fs';
import type { Daemon } from './support/daemon';
import { desktop, expect, openApp, phone, snap, test } from './support/fixtures';

// Every test starts from a fresh daemon and seeds what it looks at.
test.use({ onboarded: true });

// "Urgent" counts down for five minutes, which leaves the screen usable.
async function countDownUrgent(daemon: Daemon): Promise<void> {
  const [urgent] = await daemon.api<Record<string, unknown>[]>('GET', '/v1/channels');
  await daemon.api('PUT', `/v1/channels/${urgent!.id}`, { ...urgent, mode: 'countdown', countdownSeconds: 300 });
}

// A notification with every field mapped as it should be.
const wellFormed = [
  'send',
  '--app',
  'Signal',
  '--title',
  'Ann',
  '--body',
  'on my way',
  '--sender',
  'Ann',
  '--notification',
  'Ann\non my way',
  '--time-sensitive',
  'no',
];

test('shows the permission, the help and the version', async ({ page, daemon }) => {
  await openApp(page, daemon, '/settings');
  const permissions = page.getByRole('region', { name: 'Permissions' });
  await expect(permissions).toContainText('Alarms');
  await expect(permissions).toContainText('Allowed');
  await expect(page.getByText('No channel names, people, keywords or notification text.')).toBeVisible();
  const status = await daemon.api<{ version: string; build: number }>('GET', '/v1/status');
  await expect(page.getByRole('region', { name: 'About' })).toContainText(`${status.version} (${status.build})`);
  await snap(page, 'settings');
});

test('stops every alarm and confirms it', async ({ page, daemon }) => {
  await countDownUrgent(daemon);
  await daemon.cli('send', '--app', 'Messages', '--title', 'Mom', '--body', 'call me');
  await openApp(page, daemon, '/settings');
  await expect(page.locator('.alarm-card.countdown')).toBeVisible();
  await page.getByRole('button', { name: 'Stop All Alarms' }).click();
  await expect(page.getByRole('status').filter({ hasText: 'All Ringwell alarms stopped.' })).toBeVisible();
  await expect(page.locator('.alarm-card')).toHaveCount(0);
  expect(await daemon.api<unknown[]>('GET', '/v1/alarms')).toEqual([]);
});

test('downloads the diagnostics report as “Ringwell Diagnostics.txt”', async ({ page, daemon }) => {
  await countDownUrgent(daemon);
  await daemon.cli('send', '--app', 'Messages', '--title', 'Mom', '--body', 'call me');
  await daemon.api('POST', '/v1/stop-all');
  await openApp(page, daemon, '/settings');
  const [download] = await Promise.all([
    page.waitForEvent('download'),
    page.getByRole('link', { name: 'Share Diagnostics' }).click(),
  ]);
  expect(download.suggestedFilename()).toBe('Ringwell Diagnostics.txt');
  const text = readFileSync((await download.path())!, 'utf8');
  expect(text.startsWith('Ringwell diagnostics\nGenerated: ')).toBe(true);
  expect(text).toContain('Alarms permission: allowed');
  expect(text).toMatch(/Channels \(1\):\n {2}1\. on, countdown, any app/);
  expect(text).toContain('Recent events (1 of 1):');
  // Privacy: the notification's person and text never appear.
  expect(text).not.toContain('Mom');
  expect(text).not.toContain('call me');
  expect(text).not.toContain('Urgent');
});

test('hands the support mail to the mail program', async ({ page, daemon }) => {
  await openApp(page, daemon, '/settings');
  const mail = await daemon.api<{ url: string }>('GET', '/v1/diagnostics/email');
  expect(mail.url).toMatch(/^mailto:/);
  const request = page.waitForRequest((candidate) => candidate.url().endsWith('/v1/diagnostics/email'));
  await page.route('**/v1/diagnostics/email', async (route) => {
    const response = await route.fetch();
    const body = (await response.json()) as { url: string };
    expect(body.url).toMatch(/^mailto:.*subject=Ringwell%20support/);
    // A headless browser has no mail program: a same-page fragment stands in
    // for the mail link, so the test sees where the app sends the browser.
    await route.fulfill({ response, json: { url: '#mail-opened' } });
  });
  await page.getByRole('button', { name: 'Email Support' }).click();
  await request;
  await expect(page).toHaveURL(/#mail-opened$/);
});

test('the setup guide lists the apps to forward and how to capture them', async ({ page, daemon }) => {
  await openApp(page, daemon, '/settings');
  await page.getByRole('link', { name: 'Automation Setup' }).click();
  await expect(page.getByRole('heading', { level: 1, name: 'Automation Setup' })).toBeVisible();
  await expect(page.getByText('One automation forwards notifications. Your channels decide what rings.')).toBeVisible();
  await expect(page.getByText('A channel accepts any app. Select every app that might ring.')).toBeVisible();
  await expect(page.getByText('Only selected apps reach Ringwell.')).toBeVisible();
  await snap(page, 'setup-guide');
  // At phone width lines break between words, never inside an option name.
  await page.setViewportSize(phone);
  const tokens = page.locator('.token');
  await expect(tokens.filter({ hasText: '--time-sensitive' })).not.toHaveCount(0);
  const broken = await tokens.evaluateAll((nodes) =>
    nodes.filter((node) => node.getClientRects().length > 1).map((node) => node.textContent),
  );
  expect(broken).toEqual([]);
  await page.setViewportSize(desktop);

  await expect(page.getByText('ringwell capture apps --all')).toBeVisible();

  // Once every channel names its apps, the guide lists them.
  const [urgent] = await daemon.api<{ id: string; rule: object }[]>('GET', '/v1/channels');
  const channel = await daemon.api<Record<string, unknown>>('GET', `/v1/channels/${urgent!.id}`);
  await daemon.api('PUT', `/v1/channels/${urgent!.id}`, { ...channel, rule: { apps: ['Signal', 'Phone'] } });
  const apps = page.getByRole('region', { name: 'Apps to select' });
  await expect(apps.getByRole('listitem')).toHaveText(['Phone', 'Signal']);
  await expect(page.getByText('ringwell capture apps Phone Signal')).toBeVisible();
});

test('the setup test passes with a well-formed notification', async ({ page, daemon }) => {
  // With apps named, the example notification borrows the first one.
  const [urgent] = await daemon.api<Record<string, unknown>[]>('GET', '/v1/channels');
  await daemon.api('PUT', `/v1/channels/${urgent!.id}`, { ...urgent, rule: { apps: ['Phone', 'Signal'] } });
  await openApp(page, daemon, '/settings/setup');
  await page.getByRole('link', { name: 'Test your setup' }).click();
  await expect(page.getByRole('heading', { level: 1, name: 'Test Your Setup' })).toBeVisible();
  await expect(page.getByText('Checks your automation with the next notification it sends to Ringwell.')).toBeVisible();
  await snap(page, 'setup-test-idle');
  await page.getByRole('button', { name: 'Start Test' }).click();
  await expect(page.getByText('Waiting for a notification…')).toBeVisible();
  await expect(
    page.getByText('Nothing after a minute? Check that the automation is on and that the app is selected in it.'),
  ).toBeVisible();
  await expect(page.getByText('notify-send --app-name=Phone "Ringwell test" "It works"')).toBeVisible();
  await snap(page, 'setup-test-waiting');

  await daemon.cli(...wellFormed);
  await expect(page.getByText('Checked a notification from Signal')).toBeVisible();
  await expect(page.getByText('Your automation is set up correctly.')).toBeVisible();
  const rows = page.getByRole('list', { name: 'Fields' }).getByRole('listitem');
  await expect(rows).toHaveCount(6);
  await expect(rows.locator('.check-label')).toHaveText([
    'App',
    'Title',
    'Subtitle',
    'Body',
    'Is Time Sensitive',
    'Sender',
  ]);
  await expect(rows.filter({ hasText: 'Subtitle' })).toContainText('This notification had no subtitle.');
  await expect(page.getByRole('button', { name: 'Test Again' })).toBeVisible();
  await snap(page, 'setup-test-passed');
  // The test's notification did not ring.
  expect(await daemon.api<unknown[]>('GET', '/v1/alarms')).toEqual([]);
});

test('the setup test names the fields that fail', async ({ page, daemon }) => {
  await daemon.cli('setup-test', 'start');
  await daemon.cli(...wellFormed);
  await openApp(page, daemon, '/settings/setup-test');
  await page.getByRole('button', { name: 'Test Again' }).click();
  await expect(page.getByText('Waiting for a notification…')).toBeVisible();
  await daemon.cli(
    'send',
    '--app',
    'Signal',
    '--title',
    'on my way',
    '--body',
    'on my way',
    '--notification',
    'Ann\non my way',
    '--time-sensitive',
    'maybe',
  );
  await expect(page.getByText('Some fields need fixing in your automation.')).toBeVisible();
  const failed = page.locator('.check-row.failed');
  await expect(failed.locator('.check-label')).toHaveText(['Title', 'Body', 'Is Time Sensitive']);
  await expect(failed.filter({ hasText: 'Title' })).toContainText(
    'Doesn\'t match the notification\'s title (Ann). Set Title from the notification with --title or the JSON field "notificationTitle".',
  );
  await expect(failed.filter({ hasText: 'Is Time Sensitive' })).toContainText(
    'Set Is Time Sensitive from the notification with --time-sensitive or the JSON field "timeSensitive".',
  );
  await expect(page.getByRole('button', { name: 'Test Again After Fixing' })).toBeVisible();
  await snap(page, 'setup-test-failed');
  const settings = await daemon.api<{ lastSetupTestResult: string }>('GET', '/v1/settings');
  expect(settings.lastSetupTestResult).toMatch(
    /^failed: Title, Body, Is Time Sensitive \(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ\)$/,
  );
});

test('changes the sound settings and tests the alarm volume', async ({ page, daemon }) => {
  await openApp(page, daemon, '/settings');
  const sound = page.getByRole('region', { name: 'Sound' });
  await sound.getByRole('switch', { name: 'Ring through mute' }).click();
  await sound.getByLabel('Alarm volume').selectOption('50');
  await expect
    .poll(() => daemon.api<{ ringThroughMute: boolean; alarmVolume: number }>('GET', '/v1/settings'))
    .toMatchObject({ ringThroughMute: false, alarmVolume: 50 });
  await expect(sound.getByRole('switch', { name: 'Ring through mute' })).toHaveAttribute('aria-checked', 'false');

  // The test daemon has no audio server: the screen says why nothing is heard.
  await sound.getByRole('button', { name: 'Test Alarm Volume' }).click();
  await expect(page.getByRole('status').filter({ hasText: 'No sound:' })).toBeVisible();
  await expect(sound).toContainText('No audio server');
});
