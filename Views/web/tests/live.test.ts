// The live link: when the daemon goes away the app says so, and when it is
// back the app catches up on what changed meanwhile, without a reload.

import { skipOnboarding } from './support/daemon';
import { expect, openApp, test, useDaemon } from './support/fixtures';

const daemon = useDaemon(skipOnboarding);

// While the daemon is down the browser logs its failed reconnections.
test.use({ expectedConsoleError: /ERR_CONNECTION_REFUSED|Failed to load resource/ });

test('says when Ringwell stops, and catches up once it is back', async ({ page }) => {
  await openApp(page, daemon(), '/history');
  await expect(page.getByRole('heading', { name: 'No History' })).toBeVisible();

  await daemon().pause();
  await expect(page.getByRole('alert').filter({ hasText: "Ringwell isn't running." })).toBeVisible({ timeout: 10_000 });

  await daemon().resume();
  // A change made while the page was not listening.
  await daemon().cli('send', '--app', 'Messages', '--title', 'Mom', '--body', 'back again');
  await daemon().api('POST', '/v1/stop-all');
  await expect(page.getByRole('alert').filter({ hasText: "Ringwell isn't running." })).toHaveCount(0, {
    timeout: 15_000,
  });
  await expect(page.locator('.event-row').first()).toContainText('Urgent', { timeout: 15_000 });
});
