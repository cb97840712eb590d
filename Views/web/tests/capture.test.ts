// The setup guide's capture section: the apps seen since start with their
// counts, the "Ring for this app" shortcut, and the phone bridge's state.

import { expect, openApp, test } from './support/fixtures';
import type { CaptureState, Channel } from '../src/api/types';

test.use({ onboarded: true });

test('says when nothing was seen yet and no phone bridge either', async ({ page, daemon }) => {
  await openApp(page, daemon, '/settings/setup');
  const capture = page.getByRole('region', { name: 'Capture this computer’s notifications' });
  await expect(capture).toContainText('No notifications yet.');
  await expect(capture.getByLabel('Phone bridge')).toContainText('No phone seen since start.');
});

test('lists the apps seen, and rings for one through a new channel', async ({ page, daemon }) => {
  // What a desktop's notifications would have left: the daemon's own state
  // with sightings seeded in (a real capture is tested against a private bus
  // in the daemon's tests).
  const real = await daemon.api<CaptureState>('GET', '/v1/capture');
  const now = (Date.now() - Date.UTC(2001, 0, 1)) / 1000;
  const seeded: CaptureState = {
    ...real,
    seen: 4,
    seenApps: [
      { name: 'Messages', count: 1, lastSeen: now - 30 },
      { name: 'Signal', count: 3, lastSeen: now - 120 },
    ],
    bridges: [{ kind: 'KDE Connect', device: 'Pixel 7', lastSeen: now - 30 }],
  };
  await page.route('**/v1/capture', (route) =>
    route.request().method() === 'GET' ? route.fulfill({ json: seeded }) : route.continue(),
  );
  await openApp(page, daemon, '/settings/setup');
  const capture = page.getByRole('region', { name: 'Capture this computer’s notifications' });
  const apps = capture.getByRole('list', { name: 'Apps seen since start' }).getByRole('listitem');
  await expect(apps).toHaveCount(2);
  await expect(apps.nth(0)).toContainText('Messages');
  await expect(apps.nth(1)).toContainText('Signal');
  await expect(apps.nth(1)).toContainText('3 notifications, last 2 minutes ago');
  await expect(capture.getByLabel('Phone bridge')).toContainText('Pixel 7 through KDE Connect');

  await capture.getByRole('button', { name: 'Ring for Signal' }).click();
  await expect(page).toHaveURL(/\/channels\/[0-9A-F-]{36}$/);
  const channelId = page.url().split('/').pop() ?? '';
  const channel = await daemon.api<Channel>('GET', `/v1/channels/${channelId}`);
  expect(channel.rule.apps).toEqual(['Signal']);
  await expect(page.getByRole('heading', { level: 1 })).toContainText('Signal');
});
