// The channel editor's escalation steps: shown with their secrets masked,
// added, changed, reordered and removed, with the daemon's refusals under the
// step they concern.

import type { Channel } from '../src/api/types';
import { expect, openApp, test } from './support/fixtures';

// The refused saves are the point of this test.
test.use({ onboarded: true, expectedConsoleError: /status of 400 \(Bad Request\)/ });

test('edits the escalation steps and shows the daemon refusals inline', async ({ page, daemon }) => {
  const [urgent] = await daemon.api<Channel[]>('GET', '/v1/channels');
  await daemon.api('PUT', `/v1/channels/${urgent!.id}`, {
    ...urgent,
    escalation: [
      { afterSeconds: 60, action: 'louder' },
      {
        afterSeconds: 300,
        action: 'webhook',
        url: 'https://ntfy.example.org/partner',
        headers: { Authorization: 'Bearer SECRET-TOKEN-42' },
      },
    ],
  });
  const stored = async () => (await daemon.api<Channel>('GET', `/v1/channels/${urgent!.id}`)).escalation ?? [];

  await openApp(page, daemon, `/channels/${urgent!.id}`);
  const section = page.locator('#escalation');
  await expect(section.getByRole('group')).toHaveCount(2);
  await expect(section.getByLabel('Step 2 header 1 value')).toHaveValue('••••');
  await expect(page.content()).resolves.not.toContain('SECRET-TOKEN-42');

  // A new webhook step without its URL is refused and stays on screen.
  await section.getByRole('button', { name: 'Add Step' }).click();
  await expect(section.getByRole('group')).toHaveCount(3);
  await section.getByLabel('Step 3 action').selectOption('webhook');
  await expect(section.locator('#escalation-3-problem')).toContainText('a webhook step needs a "url"');
  await section.getByLabel('Step 3 URL').fill('http://homeassistant.local:8123/api/webhook/ringwell');
  await expect(section.locator('#escalation-3-problem')).toHaveCount(0);
  await expect
    .poll(async () => (await stored()).map((step) => step.url ?? step.action))
    .toEqual(['louder', 'https://ntfy.example.org/partner', 'http://homeassistant.local:8123/api/webhook/ringwell']);
  // The masked secret was sent back unchanged and is still there.
  await expect.poll(async () => (await stored())[1]?.headers).toEqual({ Authorization: '••••' });

  // Out of order is refused with the step's reason; removing the step fixes it.
  await section.getByRole('button', { name: 'Move step 3 up' }).click();
  await expect(section.locator('#escalation-3-problem')).toContainText('it comes after step 2');
  await section.getByRole('button', { name: 'Remove step 2' }).click();
  await expect(section.locator('[role="alert"]')).toHaveCount(0);
  await expect.poll(async () => (await stored()).map((step) => step.afterSeconds)).toEqual([60, 300]);
});
