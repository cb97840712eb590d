// The browser side of the tests: a page signed in to the file's daemon that
// fails the test on any console error it did not expect, and screenshots of
// each screen at desktop and phone size in light and dark.

import { test as base, expect, type Page } from '@playwright/test';
import { mkdirSync } from 'node:fs';
import path from 'node:path';
import { repoRoot, skipOnboarding, startDaemon, type Daemon } from './daemon';

export { expect };

// One daemon shared by the tests of a file, for tests that only read what the
// daemon starts with; tests that change data use the `daemon` fixture.
export function useDaemon(prepare?: (daemon: Daemon) => Promise<void>): () => Daemon {
  let daemon: Daemon | undefined;
  base.beforeAll(async () => {
    daemon = await startDaemon();
    await prepare?.(daemon);
  });
  base.afterAll(async () => {
    await daemon?.stop();
  });
  return () => {
    if (!daemon) throw new Error('the daemon has not started');
    return daemon;
  };
}

interface AppFixtures {
  // Whether a test's own daemon starts with the onboarding done and alarms
  // allowed; set with test.use().
  onboarded: boolean;
  // A daemon of the test's own, in fresh XDG directories: a test sees only
  // the data it seeds, whatever ran before it.
  daemon: Daemon;
  // Console errors matching this are expected by the test. (A single
  // pattern: Playwright would read an array here as a value and options.)
  expectedConsoleError: RegExp | null;
  consoleErrors: string[];
}

export const test = base.extend<AppFixtures>({
  expectedConsoleError: [null, { option: true }],
  onboarded: [false, { option: true }],
  daemon: async ({ onboarded, page }, use) => {
    const daemon = await startDaemon();
    try {
      if (onboarded) await skipOnboarding(daemon);
      await use(daemon);
    } finally {
      // The page goes first: requests it still has under way (a debounced
      // save, a refetch) must not meet a daemon that is already gone.
      await page.close();
      await daemon.stop();
    }
  },
  consoleErrors: [
    async ({ page, expectedConsoleError }, use) => {
      const errors: string[] = [];
      page.on('console', (message) => {
        if (message.type() !== 'error') return;
        const text = `${message.text()} (${message.location().url})`;
        if (!expectedConsoleError?.test(text)) errors.push(text);
      });
      page.on('pageerror', (error) => errors.push(`uncaught: ${error.message}`));
      await use(errors);
      expect(errors, 'console errors').toEqual([]);
    },
    { auto: true },
  ],
});

// Opens the app the way `ringwell open` does: the address with the token,
// which the daemon turns into a cookie and a redirect to the bare path.
export async function openApp(page: Page, daemon: Daemon, pathname = '/'): Promise<void> {
  await page.goto(daemon.openUrl);
  await expect(page).toHaveURL(`${daemon.origin}/`);
  if (pathname !== '/') await page.goto(`${daemon.origin}${pathname}`);
  await expect(page.locator('#app')).not.toBeEmpty();
}

export const desktop = { width: 1280, height: 800 };
export const phone = { width: 375, height: 812 };

export const screenshotDir = path.resolve(repoRoot, process.env.RINGWELL_SCREENSHOT_DIR ?? 'build/screenshots');

// Four pictures of what the page shows now: desktop and phone, light and
// dark, each checked for content wider than the screen. The page is left at
// desktop size in light mode.
export async function snap(page: Page, name: string): Promise<void> {
  mkdirSync(screenshotDir, { recursive: true });
  for (const [sizeName, size] of [
    ['desktop', desktop],
    ['phone', phone],
  ] as const) {
    await page.setViewportSize(size);
    for (const scheme of ['light', 'dark'] as const) {
      await page.emulateMedia({ colorScheme: scheme });
      // Let the chart and the layout follow the change before the picture.
      await page.evaluate(() => new Promise((resolve) => requestAnimationFrame(() => requestAnimationFrame(resolve))));
      // Nothing may stick out sideways: every screen fits a phone's width.
      const width = await page.evaluate(() => document.documentElement.scrollWidth);
      expect(width, `${name} at ${sizeName} size is wider than the screen`).toBeLessThanOrEqual(size.width);
      await page.screenshot({
        path: path.join(screenshotDir, `${name}-${sizeName}-${scheme}.png`),
        fullPage: true,
        animations: 'disabled',
      });
    }
  }
  await page.setViewportSize(desktop);
  await page.emulateMedia({ colorScheme: 'light' });
}
