// The client's view of the daemon's state. Screens ask for data with `query`,
// naming the change topics it depends on; when the daemon reports a change of
// one of those topics (live.ts) the topic's version goes up and the next
// render refetches exactly the queries that depend on it. Nothing is fetched
// for screens that are not shown.

import { ApiError } from '../api/client';
import type { Topic } from '../api/types';
import { errorMessage } from '../logic/errors';

// Besides the daemon's topics, the passing of time: `minute` for relative
// texts worked out by the daemon, `day` for figures that count from today.
export type ClockTopic = 'minute' | 'day';
export type QueryTopic = Topic | ClockTopic;

const versions: Record<QueryTopic, number> = {
  minute: 0,
  day: 0,
  channels: 0,
  events: 0,
  setupWarning: 0,
  saveError: 0,
  alarms: 0,
  authorization: 0,
  setupTest: 0,
  settings: 0,
  capture: 0,
};

interface Entry {
  stamp: string | null; // the topic versions the data (or the pending fetch) belongs to; null before the first fetch
  data?: unknown;
  dataSequence: number; // the sequence number of the fetch that brought `data`
  error?: ApiError;
  pending: boolean;
}

// Every fetch is numbered when it starts, so a caller can tell whether data
// was asked for after a moment it cares about (see `fetchSequence`).
let fetchCounter = 0;

export function fetchSequence(): number {
  return fetchCounter;
}

const entries = new Map<string, Entry>();

export interface QueryResult<T> {
  data: T | undefined;
  sequence: number;
  error: ApiError | undefined;
  loading: boolean;
}

let renderScheduled = false;
let renderer: () => void = () => {};

export function setRenderer(render: () => void): void {
  renderer = render;
}

// Renders once on the next frame, however many changes arrive before it.
export function requestRender(): void {
  if (renderScheduled) return;
  renderScheduled = true;
  queueMicrotask(() => {
    renderScheduled = false;
    renderer();
  });
}

function stampOf(topics: readonly QueryTopic[]): string {
  return topics.map((topic) => versions[topic]).join('.');
}

// The data last fetched under `key`, starting a fetch when there is none yet
// or when one of `topics` changed since. Keys must name everything `load`
// depends on besides the topics (for example the channel's id).
export function query<T>(key: string, topics: readonly QueryTopic[], load: () => Promise<T>): QueryResult<T> {
  const stamp = stampOf(topics);
  let entry = entries.get(key);
  if (!entry) {
    entry = { stamp: null, pending: false, dataSequence: 0 };
    entries.set(key, entry);
  }
  if (entry.stamp !== stamp && !entry.pending) {
    const current = entry;
    current.pending = true;
    current.stamp = stamp;
    const sequence = ++fetchCounter;
    load()
      .then(
        (data) => {
          current.data = data;
          current.dataSequence = sequence;
          current.error = undefined;
        },
        (error: unknown) => {
          current.error = error instanceof ApiError ? error : new ApiError(0, errorMessage(error));
        },
      )
      .finally(() => {
        current.pending = false;
        requestRender();
      });
  }
  return {
    data: entry.data as T | undefined,
    sequence: entry.dataSequence,
    error: entry.error,
    loading: entry.pending,
  };
}

// Marks topics as changed, from the live stream or after a change this client made.
export function invalidate(...topics: QueryTopic[]): void {
  for (const topic of topics) versions[topic] += 1;
  requestRender();
}

// Drops a query's data, for keys that will not be asked for again.
export function forget(key: string): void {
  entries.delete(key);
}
