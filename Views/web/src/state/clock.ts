// Keeps what depends on the time of day current: every minute the page
// renders again (relative texts such as "Last triggered 2 minutes ago"), and
// at local midnight the day-based figures are fetched again ("today", the
// seven days of the statistics). Timers are set for the next boundary rather
// than at fixed intervals, so a late timer does not drift.

import { untilNextMidnight, untilNextMinute } from '../logic/relativeTime';
import { invalidate } from './store';

function everyMinute(): void {
  window.setTimeout(() => {
    invalidate('minute');
    everyMinute();
  }, untilNextMinute(new Date()));
}

function everyMidnight(): void {
  window.setTimeout(() => {
    invalidate('day', 'minute');
    everyMidnight();
  }, untilNextMidnight(new Date()));
}

export function startClock(): void {
  everyMinute();
  everyMidnight();
}
