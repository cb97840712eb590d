// Every screen can be used from the keyboard and read by a screen reader:
// controls have names, each screen has one main heading, focus is visible
// and moves to the heading of the screen that opens.

import type { Page } from '@playwright/test';
import type { Channel } from '../src/api/types';
import { skipOnboarding } from './support/daemon';
import { expect, openApp, test, useDaemon } from './support/fixtures';

const daemon = useDaemon(async (started) => {
  await skipOnboarding(started);
  await started.cli('send', '--app', 'Messages', '--title', 'Mom', '--body', 'call me');
  await started.api('POST', '/v1/stop-all');
});

// The controls on the page that have no accessible name.
async function unnamedControls(page: Page): Promise<string[]> {
  return page.evaluate(() => {
    const named = (element: Element): boolean => {
      const label = element.getAttribute('aria-label') ?? '';
      const labelledBy = element.getAttribute('aria-labelledby');
      const byId = labelledBy
        ? labelledBy
            .split(' ')
            .map((id) => document.getElementById(id)?.textContent ?? '')
            .join('')
        : '';
      const field = element as HTMLInputElement;
      const labels = field.labels
        ? Array.from(field.labels)
            .map((l) => l.textContent ?? '')
            .join('')
        : '';
      return (label + byId + labels + (element.textContent ?? '')).trim() !== '';
    };
    const controls = document.querySelectorAll(
      'main button, main a, main input, main select, nav a, [role="switch"], [role="radio"]',
    );
    return Array.from(controls)
      .filter((element) => !element.closest('[aria-hidden="true"]') && !named(element))
      .map((element) => element.outerHTML.slice(0, 120));
  });
}

test('every screen names its controls and has one main heading', async ({ page }) => {
  const [urgent] = await daemon().api<Channel[]>('GET', '/v1/channels');
  const [event] = await daemon().api<{ id: string }[]>('GET', '/v1/events');
  const paths = [
    '/channels',
    `/channels/${urgent!.id}`,
    `/channels/${urgent!.id}/preview`,
    '/history',
    `/history/${event!.id}`,
    '/history/stats',
    '/settings',
    '/settings/setup',
    '/settings/setup-test',
  ];
  await openApp(page, daemon());
  for (const path of paths) {
    await page.goto(`${daemon().origin}${path}`);
    await expect(page.locator('main h1')).toHaveCount(1);
    await expect(page.locator('.loading')).toHaveCount(0);
    expect(await unnamedControls(page), path).toEqual([]);
  }
});

test('the keyboard reaches the tabs first, with a visible focus, and a new screen starts at its heading', async ({
  page,
}) => {
  await openApp(page, daemon(), '/channels');
  // Start from the top of the page once the screen has rendered and placed
  // its own focus, so the first Tab is not racing the first render.
  await expect(page.getByRole('heading', { level: 1, name: 'Channels' })).toBeVisible();
  await page.evaluate(() => (document.activeElement as HTMLElement | null)?.blur());
  await page.keyboard.press('Tab');
  await expect(page.getByRole('link', { name: 'Skip to content' })).toBeFocused();
  await page.keyboard.press('Tab');
  const channelsTab = page.getByRole('navigation', { name: 'Ringwell' }).getByRole('link', { name: 'Channels' });
  await expect(channelsTab).toBeFocused();
  const outline = await channelsTab.evaluate((element) => getComputedStyle(element).outlineStyle);
  expect(outline).not.toBe('none');

  await page.keyboard.press('Tab');
  await page.keyboard.press('Enter');
  await expect(page.getByRole('heading', { level: 1, name: 'History' })).toBeFocused();
  await expect(page).toHaveTitle('History – Ringwell');
});
