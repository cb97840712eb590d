// The forwarding script that the app offers really forwards: on a private
// session bus, a Notify call reaches Ringwell with its fields mapped, and
// only the apps named on its command line are forwarded.

import { spawn, execFile, type ChildProcess } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';
import type { FireEvent } from '../src/api/types';
import { binDir, type Daemon } from './support/daemon';
import { expect, openApp, test } from './support/fixtures';

const here = path.dirname(fileURLToPath(import.meta.url));

const run = promisify(execFile);
const script = path.resolve(here, '../public/ringwell-forward.sh');

// Each test has a daemon of its own; the session bus is shared.
test.use({ onboarded: true });

let bus: ChildProcess | undefined;
let busAddress = '';
let forwarder: ChildProcess | undefined;
let scratch = '';

test.beforeAll(async () => {
  scratch = mkdtempSync(path.join(tmpdir(), 'ringwell-bus-'));
  bus = spawn('dbus-daemon', ['--session', '--nofork', '--print-address=1', `--address=unix:path=${scratch}/bus`], {
    stdio: ['ignore', 'pipe', 'pipe'],
  });
  bus.stderr!.on('data', (chunk: Buffer) => (busLog += chunk.toString()));
  busAddress = await new Promise<string>((resolve, reject) => {
    bus!.stdout!.once('data', (chunk: Buffer) => resolve(chunk.toString().trim()));
    bus!.once('exit', (code) => reject(new Error(`dbus-daemon exited with ${code}`)));
  });
});

test.afterEach(stopForwarder);

test.afterAll(() => {
  stopForwarder();
  bus?.kill('SIGTERM');
  rmSync(scratch, { recursive: true, force: true });
});

function stopForwarder(): void {
  if (forwarder?.pid && forwarder.exitCode === null) process.kill(-forwarder.pid, 'SIGTERM');
  forwarder = undefined;
}

// The bus logs every connection that becomes a monitor, as dbus-monitor
// does, and every monitor that goes away.
let busLog = '';
function activeMonitors(): number {
  const started = busLog.match(/became a monitor/g)?.length ?? 0;
  const closed = busLog.match(/Monitoring connection \S+ closed/g)?.length ?? 0;
  return started - closed;
}

async function startForwarder(daemon: Daemon, ...apps: string[]): Promise<void> {
  stopForwarder();
  await expect.poll(activeMonitors).toBe(0);
  // Its own process group, so that stopping it also stops dbus-monitor and awk.
  forwarder = spawn('sh', [script, ...apps], {
    detached: true,
    stdio: ['ignore', 'inherit', 'inherit'],
    env: {
      ...daemon.env,
      DBUS_SESSION_BUS_ADDRESS: busAddress,
      RINGWELL: path.join(binDir(), 'ringwell'),
    },
  });
  // Notifications count from the moment dbus-monitor is on the bus.
  await expect.poll(activeMonitors).toBe(1);
}

// A Notify call as a desktop app makes it (dbus-send cannot nest variants, so
// the urgency hint is a plain byte; the script reads both forms).
async function notify(app: string, summary: string, body: string, urgency = 1): Promise<void> {
  await run(
    'dbus-send',
    [
      '--session',
      '--type=method_call',
      '--dest=org.freedesktop.Notifications',
      '/org/freedesktop/Notifications',
      'org.freedesktop.Notifications.Notify',
      `string:${app}`,
      'uint32:0',
      'string:',
      `string:${summary}`,
      `string:${body}`,
      'array:string:default,Open',
      `dict:string:byte:urgency,${urgency}`,
      'int32:-1',
    ],
    { env: { ...process.env, DBUS_SESSION_BUS_ADDRESS: busAddress } },
  );
}

test('forwards a notification with every field mapped, and it shows in History', async ({ page, daemon }) => {
  await startForwarder(daemon);
  await openApp(page, daemon, '/history');
  await notify('Signal', 'Mom', 'Call me "now"\nplease', 2);
  await expect(page.locator('.event-row').first()).toContainText('Urgent');

  const [event] = await daemon.api<FireEvent[]>('GET', '/v1/events');
  expect(event).toMatchObject({ app: 'Signal', title: 'Mom', body: 'Call me "now"\nplease', isTimeSensitive: true });
  expect(event!.received).toEqual(
    expect.arrayContaining([
      { name: 'Notification', value: 'Mom\nCall me "now"\nplease' },
      { name: 'Is Time Sensitive', value: 'yes' },
    ]),
  );
  await daemon.api('POST', '/v1/stop-all');
});

test('passes the setup test', async ({ daemon }) => {
  await startForwarder(daemon);
  await daemon.api('POST', '/v1/setup-test/start');
  await notify('Signal', 'Ann', 'on my way');
  await expect
    .poll(async () => (await daemon.api<{ state: string; allPassed?: boolean }>('GET', '/v1/setup-test')).allPassed)
    .toBe(true);
});

test('forwards only the apps it was given', async ({ daemon }) => {
  await startForwarder(daemon, 'signal', 'Thunderbird');
  await notify('Slack', 'Deploy', 'done');
  await notify('Thunderbird', 'Invoice', 'due today');
  await expect.poll(async () => (await daemon.api<FireEvent[]>('GET', '/v1/events')).length).toBe(1);
  const [latest] = await daemon.api<FireEvent[]>('GET', '/v1/events');
  expect(latest!.app).toBe('Thunderbird');
  await daemon.api('POST', '/v1/stop-all');
});
