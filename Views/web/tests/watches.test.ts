// The setup guide's watches: adding one, traffic shown as last heard, and removing it.

import { expect, openApp, snap, test } from './support/fixtures';

test.use({ onboarded: true });

test('adds a watch, shows when the app was last heard from, and removes it', async ({ page, daemon }) => {
  await openApp(page, daemon, '/settings/setup');
  const watches = page.getByRole('region', { name: 'Is forwarding still alive?' });
  await expect(watches).toContainText('No watches yet.');

  await watches.getByLabel('App').fill('Signal');
  await watches.getByLabel('A notification at least every').fill('2');
  await watches.getByLabel('Only from').fill('09:00');
  await watches.getByLabel('to', { exact: true }).fill('17:00');
  await watches.getByRole('button', { name: 'Watch' }).click();
  const row = watches.getByRole('listitem', { name: 'Watch on Signal' });
  await expect(row).toContainText('every 2 h, Every day 09:00–17:00');
  await expect(row).toContainText('Not heard from yet');

  await daemon.cli('send', '--app', 'Signal', '--title', 'Hello');
  await expect(row).toContainText('Last heard');

  await row.getByRole('button', { name: 'Stop watching Signal' }).click();
  await expect(watches).toContainText('No watches yet.');
  expect((await daemon.api<{ watches: unknown[] }>('GET', '/v1/watches')).watches).toEqual([]);
});

test('shows a silent watch and a stopped capture as the daemon reports them', async ({ page, daemon }) => {
  // Silences are told by the daemon's minute check; the answer is seeded here.
  const since = (Date.UTC(2026, 2, 1, 9, 30) - Date.UTC(2001, 0, 1)) / 1000;
  await page.route('**/v1/watches', (route) =>
    route.fulfill({
      json: {
        watches: [
          {
            app: 'Mail',
            everySeconds: 3600,
            since,
            summary: 'every 1 h, any time',
            isSilent: true,
            silentSince: since,
          },
        ],
        captureSilentSince: since,
      },
    }),
  );
  await openApp(page, daemon, '/settings/setup');
  const watches = page.getByRole('region', { name: 'Is forwarding still alive?' });
  await expect(watches.getByRole('listitem', { name: 'Watch on Mail' })).toContainText('Silent since');
  await expect(watches).toContainText('Capture of this computer’s notifications stopped working after');
  await watches.scrollIntoViewIfNeeded();
  await snap(page, 'setup-watches');
});
