// Follows the daemon's change stream (GET /v1/stream, server-sent events) and
// turns each `change` into a refetch of what changed. EventSource reconnects by
// itself; since changes may have been missed while the stream was down, every
// (re)connection refetches everything that is shown.

import { allTopics, type Topic } from '../api/types';
import { invalidate, requestRender } from './store';

export type LinkState = 'connecting' | 'live' | 'lost';

let linkState: LinkState = 'connecting';
let lostTimer: number | undefined;

export function liveLinkState(): LinkState {
  return linkState;
}

function setLinkState(state: LinkState): void {
  if (linkState === state) return;
  linkState = state;
  requestRender();
}

function isTopic(value: unknown): value is Topic {
  return typeof value === 'string' && (allTopics as readonly string[]).includes(value);
}

export function startLiveUpdates(): EventSource {
  const source = new EventSource('/v1/stream');
  source.addEventListener('open', () => {
    window.clearTimeout(lostTimer);
    lostTimer = undefined;
    const wasDown = linkState !== 'live';
    setLinkState('live');
    if (wasDown) invalidate(...allTopics);
  });
  source.addEventListener('change', (message) => {
    try {
      const { what } = JSON.parse((message as MessageEvent<string>).data) as { what?: unknown };
      if (isTopic(what)) {
        invalidate(what);
        // The setup warning is part of the settings record.
        if (what === 'setupWarning') invalidate('settings');
      } else {
        invalidate(...allTopics);
      }
    } catch {
      invalidate(...allTopics);
    }
  });
  source.addEventListener('error', () => {
    // A short gap is a reconnection; a longer one means the daemon is gone.
    if (lostTimer === undefined) {
      lostTimer = window.setTimeout(() => {
        lostTimer = undefined;
        if (source.readyState !== EventSource.OPEN) setLinkState('lost');
      }, 2500);
    }
  });
  return source;
}
