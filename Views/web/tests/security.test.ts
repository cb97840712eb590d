// Nobody but the person who runs Ringwell gets in: requests need the token
// (as the cookie the address sets, or a header), a loopback Host, and on
// changes a same-origin Origin.

import { request as httpRequest } from 'node:http';
import { expect, test, useDaemon } from './support/fixtures';

const daemon = useDaemon();

interface Answer {
  status: number;
  headers: Record<string, string | string[] | undefined>;
  body: string;
}

// node:http, because fetch does not let a caller choose the Host header.
function send(options: {
  method?: string;
  path: string;
  headers?: Record<string, string>;
  body?: string;
}): Promise<Answer> {
  return new Promise((resolve, reject) => {
    const req = httpRequest(
      {
        host: '127.0.0.1',
        port: daemon().port,
        method: options.method ?? 'GET',
        path: options.path,
        headers: { Host: `127.0.0.1:${daemon().port}`, ...options.headers },
      },
      (res) => {
        let body = '';
        res.setEncoding('utf8');
        res.on('data', (chunk: string) => (body += chunk));
        res.on('end', () => resolve({ status: res.statusCode ?? 0, headers: res.headers, body }));
      },
    );
    req.on('error', reject);
    if (options.body) req.write(options.body);
    req.end();
  });
}

const token = () => ({ 'X-Ringwell-Token': daemon().token });

test('the address with the token sets the cookie and redirects to the bare path', async () => {
  const answer = await send({ path: `/history?token=${daemon().token}` });
  expect(answer.status).toBe(303);
  expect(answer.headers.location).toBe('/history');
  const cookie = String(answer.headers['set-cookie']);
  expect(cookie).toContain(`ringwell_token=${daemon().token}`);
  expect(cookie).toMatch(/HttpOnly/i);
  expect(cookie).toMatch(/SameSite=Strict/i);
  expect(cookie).toMatch(/Path=\//);

  const withCookie = await send({ path: '/v1/status', headers: { Cookie: `ringwell_token=${daemon().token}` } });
  expect(withCookie.status).toBe(200);
});

test('a request without the token is refused', async () => {
  const api = await send({ path: '/v1/channels' });
  expect(api.status).toBe(401);
  expect(JSON.parse(api.body)).toHaveProperty('error');

  const page = await send({ path: '/', headers: { Accept: 'text/html' } });
  expect(page.status).toBe(401);
  expect(page.body).toContain('ringwell open');

  const wrong = await send({ path: '/v1/channels', headers: { 'X-Ringwell-Token': 'not-the-token' } });
  expect(wrong.status).toBe(401);
  const wrongCookie = await send({ path: '/v1/channels', headers: { Cookie: 'ringwell_token=guess' } });
  expect(wrongCookie.status).toBe(401);
  const wrongAddress = await send({ path: '/?token=guess' });
  expect(wrongAddress.status).not.toBe(303);
  expect(String(wrongAddress.headers['set-cookie'] ?? '')).not.toContain('guess');
});

test('a foreign Host is refused even with the token', async () => {
  for (const host of [
    `evil.example:${daemon().port}`,
    'localhost',
    `127.0.0.1:${daemon().port + 1}`,
    `rebind.127.0.0.1.nip.io:${daemon().port}`,
  ]) {
    const answer = await send({ path: '/v1/status', headers: { ...token(), Host: host } });
    expect(answer.status, host).toBe(403);
  }
  for (const host of [`localhost:${daemon().port}`, `[::1]:${daemon().port}`, `127.0.0.1:${daemon().port}`]) {
    const answer = await send({ path: '/v1/status', headers: { ...token(), Host: host } });
    expect(answer.status, host).toBe(200);
  }
});

test('a change from a foreign Origin is refused; the app’s own origin and no Origin pass', async () => {
  const before = await daemon().api<unknown[]>('GET', '/v1/channels');
  const body = JSON.stringify({ name: 'Sneaky' });
  const json = { ...token(), 'Content-Type': 'application/json' };
  for (const origin of ['http://evil.example', `http://127.0.0.1:${daemon().port + 1}`, 'null']) {
    const answer = await send({ method: 'POST', path: '/v1/channels', headers: { ...json, Origin: origin }, body });
    expect(answer.status, origin).toBe(403);
  }
  const deleteAll = await send({
    method: 'DELETE',
    path: '/v1/events',
    headers: { ...token(), Origin: 'http://evil.example' },
  });
  expect(deleteAll.status).toBe(403);
  expect(await daemon().api<unknown[]>('GET', '/v1/channels')).toHaveLength(before.length);

  for (const origin of [`http://127.0.0.1:${daemon().port}`, `http://localhost:${daemon().port}`]) {
    const answer = await send({
      method: 'POST',
      path: '/v1/stop-all',
      headers: { ...json, Origin: origin },
      body: '{}',
    });
    expect(answer.status, origin).toBe(204);
  }
  const script = await send({ method: 'POST', path: '/v1/stop-all', headers: json, body: '{}' });
  expect(script.status).toBe(204);
});

test.describe('in a browser', () => {
  test.use({ expectedConsoleError: /status of 401/ });

  test('without the cookie it sees how to get in, not the app', async ({ page }) => {
    await page.goto(`${daemon().origin}/`);
    await expect(page.getByText('ringwell open')).toBeVisible();
    await expect(page.getByRole('navigation', { name: 'Ringwell' })).toHaveCount(0);
  });
});
