// The first run: the onboarding covers the tabs until it is finished or
// skipped, and then never comes back.

import { expect, openApp, snap, test, useDaemon } from './support/fixtures';

test.describe('finishing the onboarding', () => {
  test.describe.configure({ mode: 'serial' });
  const daemon = useDaemon();

  test('walks from the welcome through the automation to a passing setup test and the tabs', async ({ page }) => {
    await openApp(page, daemon());
    const cover = page.getByRole('dialog', { name: 'Welcome to Ringwell' });
    await expect(cover.getByRole('heading', { name: 'Never miss the ones that matter' })).toBeVisible();
    await expect(
      cover.getByText('Turn notifications into alarms that ring through silence and do-not-disturb.'),
    ).toBeVisible();
    // The tabs are behind the cover and out of reach.
    await expect(page.getByRole('navigation', { name: 'Ringwell' })).toBeHidden();
    await snap(page, 'onboarding-welcome');

    await cover.getByRole('button', { name: 'Allow Alarms' }).click();
    await expect(cover.getByText('Alarms allowed')).toBeVisible();
    const permissions = await daemon().api<{ alarms: string }>('GET', '/v1/permissions');
    expect(permissions.alarms).toBe('authorized');
    await cover.getByRole('button', { name: 'Continue' }).click();

    await expect(cover.getByRole('heading', { name: 'Connect your notifications' })).toBeVisible();
    await expect(cover.getByText('One automation, built once. About a minute.')).toBeVisible();
    await expect(cover.getByText('ringwell capture apps --all')).toBeVisible();
    await snap(page, 'onboarding-automation');

    // Back returns to the welcome; Continue comes back.
    await cover.getByRole('button', { name: 'Back' }).click();
    await expect(cover.getByRole('heading', { name: 'Never miss the ones that matter' })).toBeVisible();
    await cover.getByRole('button', { name: 'Continue' }).click();
    await cover.getByRole('button', { name: "It's On. Test It" }).click();

    await expect(cover.getByRole('heading', { name: 'Check your setup' })).toBeVisible();
    const finish = cover.getByRole('button', { name: 'Finish' });
    await expect(finish).toBeDisabled();
    await cover.getByRole('button', { name: 'Start Test' }).click();
    await expect(cover.getByText('Waiting for a notification…')).toBeVisible();
    await snap(page, 'onboarding-test-waiting');

    await daemon().cli(
      'send',
      '--app',
      'Messages',
      '--title',
      'Mom',
      '--body',
      'call me',
      '--sender',
      'Mom',
      '--notification',
      'Mom\ncall me',
      '--time-sensitive',
      'no',
    );
    await expect(cover.getByText('Your automation is set up correctly.')).toBeVisible();
    await expect(cover.getByText("You're all set.")).toBeVisible();
    await expect(finish).toBeEnabled();
    await snap(page, 'onboarding-test-passed');

    await finish.click();
    await expect(cover).toBeHidden();
    const tabs = page.getByRole('navigation', { name: 'Ringwell' });
    await expect(tabs.getByRole('link', { name: 'Channels' })).toHaveAttribute('aria-current', 'page');
    await expect(page.getByRole('heading', { level: 1, name: 'Channels' })).toBeVisible();
    const settings = await daemon().api<{ hasCompletedOnboarding: boolean }>('GET', '/v1/settings');
    expect(settings.hasCompletedOnboarding).toBe(true);
  });

  test('stays finished after a reload', async ({ page }) => {
    await openApp(page, daemon());
    await expect(page.getByRole('heading', { level: 1, name: 'Channels' })).toBeVisible();
    await expect(page.getByRole('dialog', { name: 'Welcome to Ringwell' })).toHaveCount(0);
  });
});

test.describe('skipping the onboarding', () => {
  const daemon = useDaemon();

  test('Skip removes the cover without a setup test and leaves alarms unanswered', async ({ page }) => {
    await openApp(page, daemon());
    const cover = page.getByRole('dialog', { name: 'Welcome to Ringwell' });
    await cover.getByRole('button', { name: 'Skip' }).click();
    await expect(cover).toBeHidden();
    await expect(page.getByRole('heading', { level: 1, name: 'Channels' })).toBeVisible();
    const permissions = await daemon().api<{ alarms: string }>('GET', '/v1/permissions');
    expect(permissions.alarms).toBe('notDetermined');
    // Settings still offers the permission.
    await page.getByRole('navigation', { name: 'Ringwell' }).getByRole('link', { name: 'Settings' }).click();
    await expect(page.getByText('Not requested')).toBeVisible();
    await page.getByRole('button', { name: 'Allow Alarms' }).click();
    await expect(page.getByText('Allowed', { exact: true })).toBeVisible();
  });
});
