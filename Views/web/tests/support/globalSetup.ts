// Before the tests: make sure the built `ringwell` is there, and build the web
// app into a scratch directory unless RINGWELL_WEB_DIR names a built one (as
// CTest does, with the files the `ringwell-web` target built).

import { execFileSync } from 'node:child_process';
import { existsSync } from 'node:fs';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { binDir } from './daemon';

const here = path.dirname(fileURLToPath(import.meta.url));

export default function globalSetup(): void {
  const ringwell = path.join(binDir(), 'ringwell');
  if (!existsSync(ringwell)) {
    throw new Error(`${ringwell} does not exist: build Ringwell first, or set RINGWELL_BIN_DIR`);
  }
  if (!existsSync('/usr/bin/chromium')) {
    throw new Error("/usr/bin/chromium is missing: install Debian's chromium package (make deps)");
  }
  if (process.env.RINGWELL_WEB_DIR && existsSync(path.join(process.env.RINGWELL_WEB_DIR, 'index.html'))) return;
  const out = path.resolve(here, '../../test-results/web');
  execFileSync('npx', ['vite', 'build', '--logLevel', 'warn'], {
    cwd: path.resolve(here, '../..'),
    env: { ...process.env, RINGWELL_WEB_OUT: out },
    stdio: 'inherit',
  });
  process.env.RINGWELL_WEB_DIR = out;
}
