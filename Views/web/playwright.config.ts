import { defineConfig } from '@playwright/test';

// The tests drive Debian's chromium; Playwright never downloads a browser.
export default defineConfig({
  testDir: './tests',
  outputDir: './test-results/output',
  globalSetup: './tests/support/globalSetup.ts',
  timeout: 60_000,
  expect: { timeout: 5_000 },
  fullyParallel: false,
  // Each file runs its own daemon; two at a time fit the two cores.
  workers: process.env.CI ? 1 : 2,
  retries: 0,
  reporter: [['list']],
  use: {
    browserName: 'chromium',
    viewport: { width: 1280, height: 800 },
    colorScheme: 'light',
    locale: 'en-US',
    acceptDownloads: true,
    trace: 'off',
    launchOptions: {
      executablePath: '/usr/bin/chromium',
      args: [
        '--headless',
        '--no-sandbox',
        '--disable-gpu',
        '--disable-quic',
        '--no-first-run',
        '--disable-background-networking',
        '--disable-component-update',
        '--disable-sync',
      ],
    },
  },
});
