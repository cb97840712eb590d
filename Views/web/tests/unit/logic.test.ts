// The app's pure logic, without a browser: addresses, the commands it hands to
// a terminal (run through a real shell), history filtering, reachability and
// the texts made from numbers.

import { test, expect } from '@playwright/test';
import { execFileSync } from 'node:child_process';
import type { FireEvent } from '../../src/api/types';
import { contrast, luminance, readableTextOn } from '../../src/logic/colour';
import { eventTitle, filteredEvents, isReaching, notificationLine } from '../../src/logic/history';
import { relativeDescription, untilNextMidnight, untilNextMinute } from '../../src/logic/relativeTime';
import { parseRoute, tabOf } from '../../src/logic/routes';
import { ruleProblems } from '../../src/logic/ruleProblems';
import { captureAppsCommand, shellQuote, testNotificationCommand } from '../../src/logic/shell';
import { clock, duration, minuteToTime, timeToMinute, weekdaysMondayFirst, windowLabel } from '../../src/ui/format';

// The words sh makes of a command line, by running it with printf in front.
function wordsOf(commandLine: string): string[] {
  const output = execFileSync('sh', ['-c', `printf '%s\\0' ${commandLine}`], { encoding: 'utf8' });
  return output.split('\0').slice(0, -1);
}

test.describe('addresses', () => {
  test('name the screens of each tab', () => {
    expect(parseRoute('/', '')).toEqual({ name: 'channels' });
    expect(parseRoute('/channels', '')).toEqual({ name: 'channels' });
    expect(parseRoute('/channels/AB-12', '')).toEqual({ name: 'channel', channelId: 'AB-12', back: '/channels' });
    expect(parseRoute('/channels/AB-12/preview', '')).toEqual({ name: 'preview', channelId: 'AB-12' });
    expect(parseRoute('/history', '')).toEqual({ name: 'history' });
    expect(parseRoute('/history/stats', '')).toEqual({ name: 'stats' });
    expect(parseRoute('/history/E1', '')).toEqual({ name: 'event', eventId: 'E1' });
    expect(parseRoute('/settings/setup', '')).toEqual({ name: 'setupGuide' });
    expect(parseRoute('/settings/setup-test', '')).toEqual({ name: 'setupTest' });
    expect(parseRoute('/settings/nope', '')).toEqual({ name: 'notFound' });
  });

  test('keep a template’s blank condition and open a created channel inside its event', () => {
    expect(parseRoute('/channels/C1', '?blank=sender')).toMatchObject({ name: 'channel', blank: 'sender' });
    expect(parseRoute('/channels/C1', '?blank=hours')).toMatchObject({ name: 'channel', blank: undefined });
    expect(parseRoute('/history/E1/channel/C1', '')).toEqual({
      name: 'channel',
      channelId: 'C1',
      blank: undefined,
      back: '/history/E1',
    });
    expect(tabOf('/history/E1/channel/C1')).toBe('history');
    expect(tabOf('/channels/C1')).toBe('channels');
    expect(tabOf('/settings/setup')).toBe('settings');
  });

  test('treat a malformed escape as no screen instead of failing', () => {
    expect(parseRoute('/channels/%E0%A4%A', '')).toEqual({ name: 'notFound' });
    expect(parseRoute('/channels/a%20b', '')).toMatchObject({ channelId: 'a b' });
  });
});

test.describe('commands for the terminal', () => {
  const awkward = ["Mom's phone", 'a "b" $HOME `id` \\e', 'two\nlines', 'Café ☕', '-n', '*', ''];

  test('quote any name so the shell hands it over unchanged', () => {
    for (const name of awkward) expect(wordsOf(shellQuote(name))).toEqual([name]);
    expect(shellQuote('Signal')).toBe('Signal');
  });

  test('capture exactly the apps to select, or every app', () => {
    const apps = ['Signal', "Mom's phone", 'a "b" $HOME'];
    const command = captureAppsCommand(apps);
    expect(command.startsWith('ringwell capture apps ')).toBe(true);
    expect(wordsOf(command.slice('ringwell capture apps '.length))).toEqual(apps);
    expect(captureAppsCommand(null)).toBe('ringwell capture apps --all');
    expect(captureAppsCommand([])).toBe('ringwell capture apps --all');
  });

  test('post the test notification as the first named app', () => {
    expect(testNotificationCommand(null)).toBe('notify-send "Ringwell test" "It works"');
    expect(testNotificationCommand([])).toBe('notify-send "Ringwell test" "It works"');
    const command = testNotificationCommand(['  ', "Mom's phone", 'Signal']);
    expect(wordsOf(command.slice('notify-send '.length))).toEqual([
      "--app-name=Mom's phone",
      'Ringwell test',
      'It works',
    ]);
  });
});

test.describe('history and connection', () => {
  const event = (fields: Partial<FireEvent>): FireEvent =>
    ({
      id: 'x',
      receivedAt: 0,
      firedAt: 0,
      outcome: 'noMatch',
      isTest: false,
      label: '',
      icon: '',
      ...fields,
    }) as FireEvent;

  test('a row names its notification on one line: the title, else the sender', () => {
    expect(notificationLine({ title: ' Server\r\ndown ', sender: 'Ann' })).toBe('Server down');
    expect(notificationLine({ title: ' \n', sender: 'Ann' })).toBe('Ann');
    expect(notificationLine({})).toBe('');
  });

  test('relative texts pick the largest whole unit, and the clock finds its next boundaries', () => {
    const now = new Date(2026, 10, 23, 9, 30, 15);
    const ago = (seconds: number) => relativeDescription(new Date(now.getTime() - seconds * 1000), now);
    expect([ago(0.4), ago(59), ago(61), ago(2 * 3600 + 5), ago(86_400), ago(8 * 86_400)]).toEqual([
      'now',
      '59 seconds ago',
      '1 minute ago',
      '2 hours ago',
      'yesterday',
      'last week',
    ]);
    expect(untilNextMinute(now)).toBe(45_000);
    expect(untilNextMidnight(now)).toBe(((14 * 60 + 29) * 60 + 45) * 1000);
  });

  test('a channel filter leaves out events without a channel', () => {
    const events = [
      event({ id: '1', channelID: 'A', outcome: 'fired' }),
      event({ id: '2' }),
      event({ id: '3', channelID: 'B', outcome: 'fired' }),
      event({ id: '4', channelID: 'A', outcome: 'cooledDown' }),
    ];
    expect(filteredEvents(events, 'A').map((e) => e.id)).toEqual(['1', '4']);
    expect(filteredEvents(events, null).map((e) => e.id)).toEqual(['1', '2', '3', '4']);
    expect(filteredEvents(events, 'gone')).toEqual([]);
  });

  test('a row is titled by its channel, else its app, else Unknown', () => {
    expect(eventTitle({ channelName: 'Mom', app: 'Messages' })).toBe('Mom');
    expect(eventTitle({ app: 'Messages' })).toBe('Messages');
    expect(eventTitle({})).toBe('Unknown');
  });

  test('an app reaches Ringwell ignoring case but not surrounding blanks', () => {
    expect(isReaching('mail', ['Mail'])).toBe(true);
    expect(isReaching('Mail ', ['Mail'])).toBe(false);
    expect(isReaching('Slack', ['Messages', 'Phone'])).toBe(false);
  });
});

test.describe('texts made from numbers', () => {
  test('durations, windows and clocks', () => {
    expect([30, 90, 300, 3600, 3661].map(duration)).toEqual(['30s', '1m 30s', '5m', '1h', '1h 1m 1s']);
    expect([60, 300, 600, 1800, 3600].map(windowLabel)).toEqual(['1 min', '5 min', '10 min', '30 min', '1 h']);
    // A countdown shows the second it is in, and never less than zero.
    expect([29.2, 0.4, -3, 3725].map(clock)).toEqual(['00:30', '00:01', '00:00', '1:02:05']);
  });

  test('times of day round-trip through the time fields', () => {
    for (const minute of [0, 420, 1320, 1439]) expect(timeToMinute(minuteToTime(minute))).toBe(minute);
    expect(timeToMinute('24:00')).toBeUndefined();
    expect(timeToMinute('')).toBeUndefined();
  });

  test('weekdays run from Monday to Sunday with the rule’s numbers', () => {
    expect(weekdaysMondayFirst.map((day) => day.day)).toEqual([2, 3, 4, 5, 6, 7, 1]);
    expect(weekdaysMondayFirst.map((day) => day.short)).toEqual(['Mon', 'Tue', 'Wed', 'Thu', 'Fri', 'Sat', 'Sun']);
  });
});

test.describe('text on a channel’s colour', () => {
  const palette = ['#FF3B30', '#FF9500', '#FFCC00', '#34C759', '#00C7BE', '#007AFF', '#AF52DE', '#FF2D55'];

  test('stays readable on every colour of the palette', () => {
    for (const tint of palette) {
      const text = readableTextOn(tint);
      expect(contrast(luminance(tint)!, luminance(text)!), tint).toBeGreaterThanOrEqual(3);
    }
    expect(readableTextOn('#FFCC00')).toBe('#000000');
    expect(readableTextOn('#007AFF')).toBe('#ffffff');
  });

  test('falls back to white for a colour it cannot read', () => {
    expect(luminance('red')).toBeUndefined();
    expect(readableTextOn('#12345')).toBe('#ffffff');
    expect(luminance('#ffffff')).toBeCloseTo(1);
    expect(luminance('#000000')).toBe(0);
  });
});

test.describe('rule problems', () => {
  test("sort the daemon's refusal by the list each problem is about", () => {
    const count = 'A rule can have at most 100 keywords; this one has 101.';
    const long = 'The sender "Dr. Who. Or so. Or m…" is longer than 200 characters.';
    expect(ruleProblems(`"rule": ${count} ${long}`)).toEqual({ keywords: count, senders: long });
    expect(ruleProblems('"name": too long')).toEqual({});
  });
});
