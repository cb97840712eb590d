// The channel editor's save ordering, with saves the test answers by hand and
// timers it runs itself.

import { test, expect } from '@playwright/test';
import type { Channel } from '../../src/api/types';
import { ChannelDraft } from '../../src/state/channelDraft';

interface PendingSave {
  sent: Channel;
  answer(stored: Channel): Promise<void>;
  fail(error: Error): Promise<void>;
}

function harness() {
  const saves: PendingSave[] = [];
  const timers = new Map<number, () => void>();
  const failures: unknown[] = [];
  let nextTimer = 0;
  let sequence = 0;
  // Lets the draft's awaits after a settled save run.
  const settle = () => new Promise<void>((resolve) => setTimeout(resolve, 0));
  const draft = new ChannelDraft({
    save: (channel) =>
      new Promise<Channel>((resolve, reject) => {
        saves.push({
          sent: channel,
          answer: async (stored) => (resolve(stored), settle()),
          fail: async (error) => (reject(error), settle()),
        });
      }),
    fetchSequence: () => sequence,
    saved: () => {},
    failed: (error) => failures.push(error),
    changed: () => {},
    schedule: (run) => (timers.set(++nextTimer, run), nextTimer),
    cancel: (handle) => timers.delete(handle as number),
  });
  const runTimers = () => {
    const due = [...timers.values()];
    timers.clear();
    due.forEach((run) => run());
  };
  const fetched = () => ++sequence;
  return { draft, saves, timers, failures, runTimers, fetched };
}

const channel = (name: string, extra: Partial<Channel> = {}): Channel => ({ id: 'C', name, ...extra }) as Channel;
const rename = (name: string) => (draft: Channel) => ({ ...draft, name });

test.describe('channel draft', () => {
  test('sends one save at a time, and edits made meanwhile in one more save after it', async () => {
    const { draft, saves, runTimers } = harness();
    draft.adopt(channel('A'), 1);
    draft.edit(rename('B'));
    runTimers();
    expect(saves.map((save) => save.sent.name)).toEqual(['B']);

    draft.edit(rename('C'));
    draft.edit(rename('D'), 500);
    runTimers();
    // Still one request on its way.
    expect(saves).toHaveLength(1);
    // The older answer does not replace the newer draft...
    await saves[0]!.answer(channel('B'));
    expect(draft.current?.name).toBe('D');
    // ...and the latest draft goes next.
    expect(saves.map((save) => save.sent.name)).toEqual(['B', 'D']);
    await saves[1]!.answer(channel('D', { usesAutomaticName: false }));
    expect(draft.current).toEqual(channel('D', { usesAutomaticName: false }));
  });

  test('keeps its draft over the daemon’s data until a fetch after the last save', async () => {
    const { draft, saves, runTimers, fetched } = harness();
    draft.adopt(channel('A'), fetched());
    draft.edit(rename('B'));
    // A fetch that reports the old channel while the edit waits.
    draft.adopt(channel('A'), fetched());
    expect(draft.current?.name).toBe('B');
    runTimers();
    const before = fetched();
    await saves[0]!.answer(channel('B'));
    draft.adopt(channel('A'), before);
    expect(draft.current?.name).toBe('B');
    // Someone else renamed it later: a newer fetch wins.
    draft.adopt(channel('Elsewhere'), fetched());
    expect(draft.current?.name).toBe('Elsewhere');
  });

  test('a failed save reports its error and keeps the edit; leaving sends a pending edit at once', async () => {
    const { draft, saves, timers, failures, runTimers } = harness();
    draft.adopt(channel('A'), 1);
    draft.edit(rename('B'));
    runTimers();
    await saves[0]!.fail(new Error('disk full'));
    expect(failures).toEqual([new Error('disk full')]);
    expect(draft.current?.name).toBe('B');

    draft.edit(rename('C'), 500);
    draft.flush();
    expect(timers.size).toBe(0);
    expect(saves.map((save) => save.sent.name)).toEqual(['B', 'C']);
    draft.edit(rename('D'), 500);
    draft.discard();
    expect(timers.size).toBe(0);
  });
});
