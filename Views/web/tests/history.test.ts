// The road of a forwarded notification in the app: it appears in History at
// once, rings, is stopped from the alarm's presentation, and shows up in the
// detail, the filter, the statistics and when the history is cleared.

import type { Channel, FireEvent, Stats } from '../src/api/types';
import type { Daemon } from './support/daemon';
import type { Locator } from '@playwright/test';
import { expect, openApp, phone, snap, test } from './support/fixtures';

// Every test starts from a fresh daemon and seeds what it looks at.
test.use({ onboarded: true });

const channels = (daemon: Daemon) => daemon.api<Channel[]>('GET', '/v1/channels');

// Forwards notifications and silences what they rang, so that no alarm
// covers the screen under test.
async function forward(daemon: Daemon, ...notifications: [app: string, title: string, body: string][]) {
  for (const [app, title, body] of notifications)
    await daemon.cli('send', '--app', app, '--title', title, '--body', body);
  await daemon.api('POST', '/v1/stop-all');
}

// "Urgent" rings for everything; narrowed to one app, the rest goes unmatched.
async function narrowUrgent(daemon: Daemon, app: string): Promise<void> {
  const urgent = (await channels(daemon)).find((channel) => channel.name === 'Urgent')!;
  await daemon.api('PUT', `/v1/channels/${urgent.id}`, { ...urgent, rule: { ...urgent.rule, apps: [app] } });
}

test('shows a forwarded notification at once, rings it, and stops it from the alarm panel', async ({
  page,
  daemon,
}) => {
  await openApp(page, daemon, '/history');
  await expect(page.getByRole('heading', { name: 'No History' })).toBeVisible();
  await expect(page.getByText('Forwarded notifications show up here.')).toBeVisible();
  await snap(page, 'history-empty');

  await daemon.cli('send', '--app', 'Messages', '--title', 'Mom', '--body', 'call me');
  const row = page.locator('.event-row').first();
  await expect(row).toContainText('Urgent');
  await expect(row).toContainText('Fired');

  // The seeded channel rings at once: a one-second countdown, then it alerts.
  const alarm = page.locator('.alarm-card');
  await expect(alarm).toBeVisible();
  await expect(alarm).toHaveClass(/alerting/, { timeout: 10_000 });
  await expect(alarm.getByRole('heading')).toHaveText('Mom: call me');
  await expect(page.getByRole('alertdialog')).toBeVisible();
  await snap(page, 'alarm-ringing');

  await alarm.getByRole('button', { name: 'Stop' }).click();
  await expect(alarm).toHaveCount(0);
  await expect.poll(() => daemon.api<unknown[]>('GET', '/v1/alarms')).toEqual([]);
});

test('pauses and resumes a countdown, and snoozes a ringing alarm', async ({ page, daemon }) => {
  const urgent = (await daemon.api<Channel[]>('GET', '/v1/channels'))[0]!;
  await daemon.api('PUT', `/v1/channels/${urgent.id}`, {
    ...urgent,
    mode: 'countdown',
    countdownSeconds: 30,
    snoozeEnabled: true,
    snoozeSeconds: 60,
  });
  await openApp(page, daemon, '/history');
  await daemon.cli('send', '--app', 'Messages', '--title', 'Ann', '--body', 'are you up?');
  const alarm = page.locator('.alarm-card');
  await expect(alarm).toHaveClass(/countdown/);
  await expect(alarm.getByRole('heading')).toHaveText('Urgent');
  await expect(alarm.getByRole('timer')).toHaveText(/00:(2\d|30)/);
  await snap(page, 'alarm-countdown');

  await alarm.getByRole('button', { name: 'Pause' }).click();
  await expect(alarm).toHaveClass(/paused/);
  await expect(alarm.getByRole('heading')).toHaveText('Paused');
  await alarm.getByRole('button', { name: 'Resume' }).click();
  await expect(alarm).toHaveClass(/countdown/);

  // Ringing now: a second ring of the same channel is coalesced, so start over
  // with an immediate alarm to see the snooze button.
  await alarm.getByRole('button', { name: 'Stop' }).click();
  await expect(alarm).toHaveCount(0);
  const current = (await daemon.api<Channel[]>('GET', '/v1/channels'))[0]!;
  await daemon.api('PUT', `/v1/channels/${urgent.id}`, { ...current, mode: 'immediate' });
  await daemon.cli('send', '--app', 'Messages', '--title', 'Ann', '--body', 'hello?');
  await expect(alarm).toHaveClass(/alerting/, { timeout: 10_000 });
  await alarm.getByRole('button', { name: 'Snooze' }).click();
  await expect(alarm).toHaveClass(/countdown/);
  await expect(alarm.getByRole('timer')).toHaveText(/0[01]:\d\d/);
  await alarm.getByRole('button', { name: 'Stop' }).click();
  await expect(alarm).toHaveCount(0);
});

test('opens an event, and creates a channel from it in the editor', async ({ page, daemon }) => {
  await forward(daemon, ['Messages', 'Mom', 'call me']);
  await openApp(page, daemon, '/history');
  await page.locator('.event-row').filter({ hasText: 'Fired' }).click();
  await expect(page.getByRole('heading', { level: 1, name: 'Event' })).toBeVisible();
  const notification = page.getByRole('region', { name: 'Notification' });
  await expect(notification).toContainText('Messages');
  await expect(notification).toContainText('Not provided');
  await expect(page.getByRole('region', { name: 'From the automation' })).toContainText('call me');
  await expect(page.getByRole('region', { name: 'Outcome' })).toContainText('Fired');
  await snap(page, 'history-detail');
  const why = page.getByRole('region', { name: 'Why' });
  await expect(why).toContainText('Rang “Urgent”: the first enabled channel whose rule matched.');
  await expect(why.getByRole('list', { name: 'Checks' }).or(why.getByText('No conditions'))).toBeVisible();
  // Edited after the fact, the channel no longer takes it: the section says so.
  await narrowUrgent(daemon, 'Mail');
  await expect(why).toContainText("Today's channels would decide differently");
  await expect(why).toContainText('Changed: Urgent.');

  await page.getByRole('button', { name: 'Create Channel from This' }).click();
  await expect(page).toHaveURL(/\/history\/[\w-]+\/channel\/[\w-]+$/);
  await expect(page.getByRole('heading', { level: 1, name: 'Mom' })).toBeVisible();
  await expect(page.getByRole('link', { name: 'Event' })).toBeVisible();
  const created = (await daemon.api<Channel[]>('GET', '/v1/channels')).find((channel) => channel.name === 'Mom');
  expect(created?.rule).toMatchObject({ apps: ['Messages'], senders: ['Mom'] });
});

test('filters by channel and keeps unmatched events out of a channel filter', async ({ page, daemon }) => {
  // A "Mom" channel and a notification that nothing matches.
  await daemon.api('POST', '/v1/channels', { name: 'Mom', rule: { apps: ['Messages'], senders: ['Mom'] } });
  await narrowUrgent(daemon, 'Pager');
  await forward(
    daemon,
    ['Mail', 'Newsletter', 'weekly'],
    ['Messages', 'Mom', 'lunch?'],
    ['Pager', 'On call', 'disk full'],
  );

  await openApp(page, daemon, '/history');
  const rows = page.locator('.event-row');
  await expect(rows).toHaveCount(3);
  await expect(rows.filter({ hasText: 'No match' })).toHaveCount(1);

  const filter = page.getByRole('button', { name: 'Filter' });
  await filter.click();
  const menu = page.getByRole('menu', { name: 'Filter' });
  await expect(menu.getByRole('menuitemradio')).toHaveText(['All Channels', 'Urgent', 'Mom']);
  await expect(menu.getByRole('menuitemradio', { name: 'All Channels' })).toHaveAttribute('aria-checked', 'true');
  await menu.getByRole('menuitemradio', { name: 'Mom' }).click();
  await expect(rows).toHaveCount(1);
  await expect(rows.first()).toContainText('Mom');
  await expect(page.getByText('Showing Mom')).toBeVisible();
  await snap(page, 'history-filtered');

  await filter.click();
  await menu.getByRole('menuitemradio', { name: 'All Channels' }).click();
  await expect(rows).toHaveCount(3);
  await expect(rows.filter({ hasText: 'No match' })).toHaveCount(1);
  await snap(page, 'history-list');
});

test('shows the day’s bars and figures in Stats', async ({ page, daemon }) => {
  await forward(daemon, ['Messages', 'Mom', 'call me']);
  await narrowUrgent(daemon, 'Messages');
  await forward(daemon, ['Mail', 'Newsletter', 'weekly']);
  await daemon.api('POST', '/v1/channels/' + (await daemon.api<Channel[]>('GET', '/v1/channels'))[0]!.id + '/test');
  await daemon.api('POST', '/v1/stop-all');
  const stats = await daemon.api<Stats>('GET', '/v1/stats');
  const events = await daemon.api<FireEvent[]>('GET', '/v1/events');
  const counted = events.filter((event) => !event.isTest && event.outcome !== 'setupTest');
  expect(stats.received).toBe(counted.length);

  await openApp(page, daemon, '/history');
  await page.getByRole('link', { name: 'Stats' }).click();
  await expect(page.getByRole('heading', { level: 1, name: 'Stats' })).toBeVisible();
  const lastWeek = page.getByRole('region', { name: 'Last 7 days' });
  await expect(lastWeek.locator('.tile').filter({ hasText: 'Received' })).toContainText(String(stats.received));
  await expect(lastWeek.locator('.tile').filter({ hasText: 'Rang' })).toContainText(String(stats.rang));
  await expect(page.getByRole('img', { name: 'Notifications per day for the last 7 days' })).toBeVisible();
  await expect(page.getByText('Last 200 notifications, not counting tests.')).toBeVisible();

  // Today's bar holds every notification: the rang ones and the quiet rest.
  const today = lastWeek.locator('tbody tr').last();
  await expect(today.locator('td')).toHaveText([String(stats.rang), String(stats.received - stats.rang)]);
  await expect(lastWeek.locator('tbody tr').first().locator('td')).toHaveText(['0', '0']);
  // The chart really drew the bars: today's column has coloured pixels, once
  // the chart has sized its canvas and drawn (it may draw after the page shows).
  const canvas = page.locator('canvas');
  const colouredPixels = () =>
    canvas.evaluate((element: HTMLCanvasElement) => {
      if (element.width === 0) return 0;
      const context = element.getContext('2d')!;
      const { width, height } = element;
      const column = context.getImageData(Math.floor(width * 0.9), 0, Math.floor(width * 0.08), height).data;
      let count = 0;
      for (let i = 0; i < column.length; i += 4) {
        const [r, g, b, a] = [column[i]!, column[i + 1]!, column[i + 2]!, column[i + 3]!];
        if (a > 200 && Math.max(r, g, b) - Math.min(r, g, b) > 60) count += 1;
      }
      return count;
    });
  await expect.poll(colouredPixels).toBeGreaterThan(50);

  const topApps = page.getByRole('region', { name: 'Top apps' });
  await expect(topApps).toContainText('Messages');
  await expect(page.getByRole('region', { name: 'Channels that rang' })).toContainText('Urgent');
  await expect(page.getByRole('region', { name: 'Outcomes' })).toContainText('No match');
  await snap(page, 'stats');
});

test('clears the history only after confirming', async ({ page, daemon }) => {
  await forward(daemon, ['Messages', 'Mom', 'call me'], ['Mail', 'Newsletter', 'weekly']);
  await openApp(page, daemon, '/history');
  const rows = page.locator('.event-row');
  await expect(rows).toHaveCount(2);

  await page.getByRole('button', { name: 'Clear' }).click();
  const confirm = page.getByRole('dialog', { name: 'Clear all history?' });
  await expect(confirm).toBeVisible();
  await snap(page, 'history-clear-confirmation');
  await confirm.getByRole('button', { name: 'Cancel' }).click();
  await expect(rows).toHaveCount(2);

  await page.getByRole('button', { name: 'Clear' }).click();
  await confirm.getByRole('button', { name: 'Clear History' }).click();
  await expect(page.getByRole('heading', { name: 'No History' })).toBeVisible();
  expect(await daemon.api<unknown[]>('GET', '/v1/events')).toEqual([]);

  // With no events the statistics show zeros and their empty texts.
  await page.getByRole('link', { name: 'Stats' }).click();
  await expect(page.getByText('No notifications yet.')).toBeVisible();
  await expect(page.getByText('No channel has rung this week.')).toBeVisible();
  await expect(page.getByText('Nothing to show yet.')).toBeVisible();
  await snap(page, 'stats-empty');
});

test('names each notification on one line, and at phone width dates leave the text its width', async ({
  page,
  daemon,
}) => {
  await narrowUrgent(daemon, 'Pager');
  await daemon.cli(
    'send',
    '--app',
    'Mail',
    '--title',
    'Quarterly report\nfor the whole team, with every figure of the year',
    '--body',
    'x',
  );
  await daemon.cli('send', '--app', 'Messages', '--sender', 'Ann', '--body', 'on my way');
  await openApp(page, daemon, '/history');
  const rows = page.locator('.event-row');
  await expect(rows.locator('.event-notification')).toHaveText([
    'Ann',
    'Quarterly report for the whole team, with every figure of the year',
  ]);

  await page.setViewportSize(phone);
  const oneLine = async (element: Locator) =>
    element.evaluate(
      (node) => node.getBoundingClientRect().height <= parseFloat(getComputedStyle(node).lineHeight) * 1.5,
    );
  const report = rows.nth(1).locator('.event-notification');
  // Cut with an ellipsis, on one line.
  expect(await report.evaluate((node) => node.scrollWidth > node.clientWidth)).toBe(true);
  expect(await oneLine(report)).toBe(true);
  // The date sits under the text: the text keeps most of the row's width.
  for (const row of await rows.all()) {
    const label = (await row.locator('.row-label').boundingBox())!;
    expect(label.width).toBeGreaterThan(phone.width * 0.6);
    expect(await oneLine(row.locator('.event-title'))).toBe(true);
  }

  const [urgent] = await channels(daemon);
  await openApp(page, daemon, `/channels/${urgent!.id}/preview`);
  const entries = page.locator('.preview-entry');
  await expect(entries).toHaveCount(2);
  for (const entry of await entries.all()) {
    const text = (await entry.locator('.entry-text').boundingBox())!;
    expect(text.width).toBeGreaterThan(phone.width * 0.6);
  }
});
