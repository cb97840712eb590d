// A real Ringwell daemon for one test file: the built `ringwell serve` in
// temporary XDG directories on a free port, with no session bus and no
// audio server, and the command line pointed at it.

import { spawn, execFile, type ChildProcess } from 'node:child_process';
import { mkdtempSync, mkdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';

const here = path.dirname(fileURLToPath(import.meta.url));

const run = promisify(execFile);

export const repoRoot = path.resolve(here, '../../../..');

export function binDir(): string {
  return path.resolve(repoRoot, process.env.RINGWELL_BIN_DIR ?? 'build/release/bin');
}

export function webDir(): string {
  const dir = process.env.RINGWELL_WEB_DIR;
  if (!dir) throw new Error('RINGWELL_WEB_DIR is not set; the global set-up builds the app and sets it');
  return dir;
}

export interface Daemon {
  origin: string; // http://127.0.0.1:PORT
  port: number;
  token: string;
  openUrl: string; // the address `ringwell serve` prints, with the token
  env: NodeJS.ProcessEnv;
  home: string;
  // Runs `ringwell ARGS...` against this daemon.
  cli(...args: string[]): Promise<{ stdout: string; stderr: string }>;
  // A request to the API with the token header, as a script would make it.
  api<T = unknown>(method: string, apiPath: string, body?: unknown): Promise<T>;
  // Stops the daemon and starts it again on the same port, with its files.
  pause(): Promise<void>;
  resume(): Promise<void>;
  stop(): Promise<void>;
  output(): string;
}

// Starts `ringwell serve` and waits for the address it prints.
async function serve(
  env: NodeJS.ProcessEnv,
  port: number,
  log: (text: string) => void,
): Promise<{ child: ChildProcess; address: string }> {
  const ringwell = path.join(binDir(), 'ringwell');
  const child = spawn(ringwell, ['serve', '--port', String(port), '--lan-address', '127.0.0.2', '--lan-port', '0'], {
    env,
    stdio: ['ignore', 'pipe', 'pipe'],
  });
  let output = '';
  const address = await new Promise<string>((resolve, reject) => {
    const timer = setTimeout(() => reject(new Error(`ringwell serve printed no address:\n${output}`)), 15_000);
    const onData = (chunk: Buffer) => {
      output += chunk.toString();
      log(chunk.toString());
      const match = /Web app: (http:\/\/127\.0\.0\.1:\d+\/\?token=[\w-]+)/.exec(output);
      if (match?.[1]) {
        clearTimeout(timer);
        resolve(match[1]);
      }
    };
    child.stdout?.on('data', onData);
    child.stderr?.on('data', onData);
    child.once('exit', (code) => {
      clearTimeout(timer);
      reject(new Error(`ringwell serve exited with ${code}:\n${output}`));
    });
  });
  return { child, address };
}

async function terminate(child: ChildProcess): Promise<void> {
  if (child.exitCode !== null || child.signalCode !== null) return;
  const exited = new Promise((resolve) => child.once('exit', resolve));
  child.kill('SIGTERM');
  await Promise.race([exited, new Promise((resolve) => setTimeout(resolve, 5000))]);
  if (child.exitCode === null && child.signalCode === null) child.kill('SIGKILL');
}

export async function startDaemon(): Promise<Daemon> {
  const home = mkdtempSync(path.join(tmpdir(), 'ringwell-web-test-'));
  const runtime = path.join(home, 'runtime');
  mkdirSync(runtime, { mode: 0o700 });
  const env: NodeJS.ProcessEnv = {
    ...process.env,
    HOME: home,
    XDG_DATA_HOME: path.join(home, 'data'),
    XDG_CONFIG_HOME: path.join(home, 'config'),
    XDG_RUNTIME_DIR: runtime,
    // No desktop session and no sound: notices go to the log, alarms still alert.
    DBUS_SESSION_BUS_ADDRESS: 'unix:path=/nonexistent/ringwell-test-bus',
    PULSE_SERVER: 'unix:/nonexistent/ringwell-test-pulse',
    RINGWELL_WEB_DIR: webDir(),
  };
  delete env.RINGWELL_WEB_PORT;

  let output = '';
  const log = (text: string) => (output += text);
  const started = await serve(env, 0, log);
  const address = started.address;
  let child = started.child;
  const url = new URL(address);
  const token = url.searchParams.get('token') ?? '';
  const ringwell = path.join(binDir(), 'ringwell');

  const daemon: Daemon = {
    origin: url.origin,
    port: Number(url.port),
    token,
    openUrl: address,
    env,
    home,
    async cli(...args) {
      try {
        return await run(ringwell, args, { env, timeout: 20_000 });
      } catch (error) {
        const failure = error as Error & { stdout?: string; stderr?: string };
        throw new Error(`ringwell ${args.join(' ')} failed: ${failure.message}\n${failure.stderr ?? ''}`, {
          cause: error,
        });
      }
    },
    async api<T>(method: string, apiPath: string, body?: unknown): Promise<T> {
      const response = await fetch(`${url.origin}${apiPath}`, {
        method,
        headers: { 'X-Ringwell-Token': token, ...(body === undefined ? {} : { 'Content-Type': 'application/json' }) },
        body: body === undefined ? undefined : JSON.stringify(body),
      });
      if (!response.ok) throw new Error(`${method} ${apiPath}: ${response.status} ${await response.text()}`);
      if (response.status === 204) return undefined as T;
      const type = response.headers.get('content-type') ?? '';
      return (type.includes('json') ? await response.json() : await response.text()) as T;
    },
    async pause() {
      await terminate(child);
    },
    async resume() {
      ({ child } = await serve(env, Number(url.port), log));
    },
    async stop() {
      await terminate(child);
      rmSync(home, { recursive: true, force: true });
    },
    output: () => output,
  };
  return daemon;
}

// The app's start state for tests that are not about onboarding: alarms
// allowed and the onboarding done.
export async function skipOnboarding(daemon: Daemon): Promise<void> {
  await daemon.api('PUT', '/v1/permissions/alarms', { state: 'authorized' });
  await daemon.api('PUT', '/v1/settings', { hasCompletedOnboarding: true });
}
