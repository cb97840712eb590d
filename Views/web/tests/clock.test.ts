// Texts that depend on the time of day follow it: relative texts each minute,
// "today" and the statistics' days at local midnight. The page's clock is
// Playwright's, so the test moves time instead of waiting for it.

import { expect, openApp, test } from './support/fixtures';

test.use({ onboarded: true });

// Today's rows show the time alone, other days' rows the day too.
const timeOnly = /^\d{1,2}:\d\d(\s?[AP]M)?$/;

test('the channel list’s “Last triggered” ages with the minutes', async ({ page, daemon }) => {
  await page.clock.install({ time: new Date() });
  await daemon.cli('send', '--app', 'Messages', '--title', 'Mom', '--body', 'call me');
  await daemon.api('POST', '/v1/stop-all');
  await openApp(page, daemon, '/channels');
  const status = page.locator('.channel-row .status').first();
  await expect(status).toHaveText(/^Last triggered (now|\d+ seconds? ago)$/);
  await page.clock.fastForward('02:30');
  await expect(status).toHaveText('Last triggered 2 minutes ago');
  await page.clock.fastForward('01:00:00');
  await expect(status).toHaveText('Last triggered 1 hour ago');
});

test('at midnight today’s rows take their date and the statistics are fetched again', async ({ page, daemon }) => {
  await daemon.cli('send', '--app', 'Messages', '--title', 'Mom', '--body', 'call me');
  await daemon.api('POST', '/v1/stop-all');
  // A minute before the coming local midnight.
  const now = new Date();
  await page.clock.install({ time: new Date(now.getFullYear(), now.getMonth(), now.getDate(), 23, 59) });
  await openApp(page, daemon, '/history');
  const time = page.locator('.event-row time');
  await expect(time).toHaveText(timeOnly);

  await page.getByRole('link', { name: 'Stats' }).click();
  await expect(page.getByRole('heading', { level: 1, name: 'Stats' })).toBeVisible();
  const refetched = page.waitForRequest((request) => request.url().endsWith('/v1/stats'));
  await page.clock.fastForward('01:30');
  await refetched;

  await page.getByRole('link', { name: 'History' }).first().click();
  // Yesterday's row now names its day.
  await expect(time).not.toHaveText(timeOnly);
});
