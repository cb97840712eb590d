// Relative texts worked out in the browser at render time, so that they age
// with the page instead of staying as the daemon wrote them.

import { toDate } from '../api/types';

const minute = 60;
const hour = 60 * minute;
const day = 24 * hour;

// Largest first; months and years as 30 and 365 days, as the daemon counts
// them: the text is a rough indication.
const units: readonly [Intl.RelativeTimeFormatUnit, number][] = [
  ['year', 365 * day],
  ['month', 30 * day],
  ['week', 7 * day],
  ['day', day],
  ['hour', hour],
  ['minute', minute],
];

const relative = new Intl.RelativeTimeFormat('en', { numeric: 'auto' });

// "now", "5 seconds ago", "2 minutes ago", "yesterday", "last week".
export function relativeDescription(date: Date, now: Date): string {
  const interval = (date.getTime() - now.getTime()) / 1000;
  const [unit, size] = units.find(([, seconds]) => Math.abs(interval) >= seconds) ?? ['second', 1];
  // Math.trunc gives -0 for a moment ago; "now" either way.
  const offset = Math.trunc(interval / size) || 0;
  return relative.format(offset, unit);
}

// The channel list's status: when the channel last rang, if ever.
export function lastTriggeredLabel(lastTriggered: number | undefined, now: Date): string {
  return lastTriggered === undefined
    ? 'Never triggered'
    : `Last triggered ${relativeDescription(toDate(lastTriggered), now)}`;
}

// Milliseconds from `now` to the next whole minute and to the next local
// midnight: when relative texts and day-based figures go stale.
export function untilNextMinute(now: Date): number {
  return 60_000 - (now.getTime() % 60_000);
}

export function untilNextMidnight(now: Date): number {
  const midnight = new Date(now.getFullYear(), now.getMonth(), now.getDate() + 1);
  return midnight.getTime() - now.getTime();
}
