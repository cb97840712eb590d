// Texts made from numbers and dates, in the forms the daemon uses too.

import { toDate } from '../api/types';

// "30s", "1m 30s", "5m", "1h" — the narrow duration of the mode badge.
export function duration(seconds: number): string {
  const hours = Math.floor(seconds / 3600);
  const minutes = Math.floor((seconds % 3600) / 60);
  const rest = Math.floor(seconds % 60);
  const parts: string[] = [];
  if (hours) parts.push(`${hours}h`);
  if (minutes) parts.push(`${minutes}m`);
  if (rest || parts.length === 0) parts.push(`${rest}s`);
  return parts.join(' ');
}

// "1 min", "10 min", "1 h" — the look-back windows of the repeated condition.
export function windowLabel(seconds: number): string {
  if (seconds >= 3600 && seconds % 3600 === 0) return `${seconds / 3600} h`;
  return `${Math.floor(seconds / 60)} min`;
}

// A plain plural: "s" unless the count is exactly 1.
export function counted(count: number, noun: string): string {
  return `${count} ${noun}${count === 1 ? '' : 's'}`;
}

// "mm:ss", or "h:mm:ss" past an hour, for a countdown.
export function clock(totalSeconds: number): string {
  const seconds = Math.max(0, Math.ceil(totalSeconds));
  const h = Math.floor(seconds / 3600);
  const m = Math.floor((seconds % 3600) / 60);
  const s = seconds % 60;
  const pad = (n: number) => String(n).padStart(2, '0');
  return h ? `${h}:${pad(m)}:${pad(s)}` : `${pad(m)}:${pad(s)}`;
}

// Minutes of the day as the value of a time input ("22:00").
export function minuteToTime(minute: number): string {
  const pad = (n: number) => String(n).padStart(2, '0');
  return `${pad(Math.floor(minute / 60))}:${pad(minute % 60)}`;
}

export function timeToMinute(value: string): number | undefined {
  const match = /^(\d{1,2}):(\d{2})/.exec(value);
  if (!match) return undefined;
  const minute = Number(match[1]) * 60 + Number(match[2]);
  return minute >= 0 && minute < 1440 ? minute : undefined;
}

const timeFormat = new Intl.DateTimeFormat(undefined, { hour: '2-digit', minute: '2-digit' });
const dayTimeFormat = new Intl.DateTimeFormat(undefined, {
  weekday: 'short',
  day: 'numeric',
  month: 'short',
  hour: '2-digit',
  minute: '2-digit',
});
const fullFormat = new Intl.DateTimeFormat(undefined, { dateStyle: 'medium', timeStyle: 'medium' });

// A row's date: the time for today, else the day and the time.
export function shortDate(seconds: number, now = new Date()): string {
  const date = toDate(seconds);
  return date.toDateString() === now.toDateString() ? timeFormat.format(date) : dayTimeFormat.format(date);
}

export function fullDate(seconds: number): string {
  return fullFormat.format(toDate(seconds));
}

const narrowWeekday = new Intl.DateTimeFormat('en', { weekday: 'narrow' });
const longWeekday = new Intl.DateTimeFormat('en', { weekday: 'long', day: 'numeric', month: 'long' });

export function narrowWeekdayOf(seconds: number): string {
  return narrowWeekday.format(toDate(seconds));
}

export function longDayOf(seconds: number): string {
  return longWeekday.format(toDate(seconds));
}

// Weekday numbers as the rule stores them (1 = Sunday), Monday first.
export const weekdaysMondayFirst: readonly { day: number; short: string; long: string }[] = [
  { day: 2, short: 'Mon', long: 'Monday' },
  { day: 3, short: 'Tue', long: 'Tuesday' },
  { day: 4, short: 'Wed', long: 'Wednesday' },
  { day: 5, short: 'Thu', long: 'Thursday' },
  { day: 6, short: 'Fri', long: 'Friday' },
  { day: 7, short: 'Sat', long: 'Saturday' },
  { day: 1, short: 'Sun', long: 'Sunday' },
];
