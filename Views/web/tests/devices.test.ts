// The setup guide's capture switch and the phones that send over the network.

import { expect, openApp, test } from './support/fixtures';

test.use({ onboarded: true });

test('leads with the capture switch, which turns capture off and on', async ({ page, daemon }) => {
  await openApp(page, daemon, '/settings/setup');
  const capture = page.getByRole('region', { name: 'Capture this computer’s notifications' });
  await expect(page.locator('section.group').first()).toHaveAttribute('id', 'capture');
  const toggle = capture.getByRole('switch');
  await expect(toggle).toHaveAttribute('aria-checked', 'true');
  await toggle.click();
  await expect(toggle).toHaveAttribute('aria-checked', 'false');
  expect((await daemon.api<{ enabled: boolean }>('GET', '/v1/capture')).enabled).toBe(false);
});

test('adds a device that sends, shows its token once, and removes it', async ({ page, daemon }) => {
  await openApp(page, daemon, '/settings/setup');
  const devices = page.getByRole('region', { name: 'Phones on the network' });
  await expect(devices).toContainText('Off until a device is added.');
  // Without devices the card says so, instead of showing an empty list as a blank row.
  const noDevices = async () => {
    await expect(devices.getByText('No phones yet.')).toBeVisible();
    await expect(devices.locator('ul:not(:has(li))')).toHaveCount(0);
  };
  await noDevices();
  await devices.getByLabel('Device name').fill('Pixel');
  await devices.getByRole('button', { name: 'Add device' }).click();

  const added = devices.getByLabel('New device');
  await expect(added).toContainText('Get Contents of URL');
  await expect(added).toContainText('"notificationTitle": "%title"');
  await expect(added.getByRole('img', { name: 'QR code of the URL and the token' })).toBeVisible();
  const text = (await added.textContent()) ?? '';
  const url = /http:\/\/127\.0\.0\.2:\d+\/v1\/send/.exec(text)?.[0];
  const token = /Bearer ([0-9a-f]{64})/.exec(text)?.[1];
  expect(url).toBeTruthy();
  expect(token).toBeTruthy();

  const send = () =>
    fetch(url!, {
      method: 'POST',
      headers: { Authorization: `Bearer ${token}`, 'Content-Type': 'application/json' },
      body: JSON.stringify({ app: 'Signal', notificationTitle: 'Mom' }),
    });
  expect((await send()).status).toBe(200);

  await devices.getByRole('button', { name: 'Remove Pixel' }).click();
  await expect(devices.getByLabel('New device')).toHaveCount(0);
  await expect(devices).toContainText('Off until a device is added.');
  await noDevices();
  // Revoked at once: refused on a kept-alive connection, and no listener is left for new ones.
  const after = await send().then(
    (response) => response.status,
    () => 'closed',
  );
  expect([401, 'closed']).toContain(after);
});
