// The channel editor's draft and the order of its saves, without the page.
// Edits apply to the draft at once and are saved after an optional pause.
// One save is on its way at a time: requests on separate connections may
// reach the daemon out of order, and an older draft must never overwrite a
// newer one. Edits made while a save is on its way are sent by one more save
// after it. While edits are pending the draft wins over what the daemon
// reports; afterwards the daemon's stored channel (with its automatic name
// and clamped values) replaces the draft.

import type { Channel } from '../api/types';

export interface DraftEffects {
  save(channel: Channel): Promise<Channel>;
  // The number of the latest fetch started (see fetchSequence in store.ts).
  fetchSequence(): number;
  saved(): void;
  failed(error: unknown): void;
  changed(): void;
  schedule?(run: () => void, delay: number): unknown;
  cancel?(handle: unknown): void;
}

export class ChannelDraft {
  current: Channel | null = null;
  private edits = 0; // edits made since the draft was last taken from the daemon
  private timer: unknown = undefined;
  private saving = false;
  private saveAgain = false;
  // Only channel data fetched after this sequence number is newer than the
  // draft; older fetches may predate the last save.
  private freshAfter = -1;

  constructor(private readonly effects: DraftEffects) {}

  // Takes the daemon's stored channel when nothing of ours is pending and the
  // fetch started after our last save.
  adopt(stored: Channel, sequence: number): void {
    const idle = this.edits === 0 && this.timer === undefined && !this.saving;
    if (!idle || sequence <= this.freshAfter) return;
    if (JSON.stringify(stored) !== JSON.stringify(this.current)) this.current = stored;
  }

  edit(change: (channel: Channel) => Channel, delay = 0): void {
    if (!this.current) return;
    this.current = change(this.current);
    this.edits += 1;
    this.cancelTimer();
    this.timer = this.schedule(() => void this.save(), delay);
    this.effects.changed();
  }

  // Sends a pending edit now (when the editor is left).
  flush(): void {
    if (this.timer === undefined) return;
    this.cancelTimer();
    void this.save();
  }

  // Drops a pending edit (the channel is being deleted).
  discard(): void {
    this.cancelTimer();
  }

  private async save(): Promise<void> {
    this.timer = undefined;
    if (this.saving) {
      this.saveAgain = true;
      return;
    }
    const draft = this.current;
    if (!draft) return;
    this.saving = true;
    const editsAtSave = this.edits;
    try {
      const stored = await this.effects.save(draft);
      // Only a save that carried the latest edit may replace the draft.
      if (this.edits === editsAtSave) {
        this.current = stored;
        this.edits = 0;
      }
      this.freshAfter = this.effects.fetchSequence();
    } catch (error) {
      this.effects.failed(error);
      if (this.edits === editsAtSave) this.edits = 0;
    } finally {
      this.saving = false;
    }
    if (this.saveAgain) {
      this.saveAgain = false;
      void this.save();
    }
    this.effects.saved();
  }

  private schedule(run: () => void, delay: number): unknown {
    return this.effects.schedule ? this.effects.schedule(run, delay) : setTimeout(run, delay);
  }

  private cancelTimer(): void {
    if (this.timer === undefined) return;
    if (this.effects.cancel) this.effects.cancel(this.timer);
    else clearTimeout(this.timer as ReturnType<typeof setTimeout>);
    this.timer = undefined;
  }
}
