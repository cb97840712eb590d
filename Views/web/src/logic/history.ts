// What the history and the rule editor derive from the daemon's records.

import type { FireEvent } from '../api/types';

// The events shown under a channel filter. Events without a channel (no
// match, ignored, setup test) never appear under one.
export function filteredEvents(events: readonly FireEvent[], channelId: string | null): FireEvent[] {
  if (channelId === null) return [...events];
  return events.filter((event) => event.channelID !== undefined && event.channelID === channelId);
}

// A row's title: the channel's name, else the app's, else "Unknown".
export function eventTitle(event: Pick<FireEvent, 'channelName' | 'app'>): string {
  return event.channelName ?? event.app ?? 'Unknown';
}

// Which notification a row is: its title, else its sender, on one line (the
// screen cuts it with an ellipsis). Empty when it had neither.
export function notificationLine(event: Pick<FireEvent, 'title' | 'sender'>): string {
  const pick = (text: string | undefined) => text?.replace(/\s+/g, ' ').trim() ?? '';
  return pick(event.title) || pick(event.sender);
}

// An app named in a rule reaches Ringwell when its lower-cased name is among
// the lower-cased names of the apps the store knows. Apart from case the
// names must match exactly: "Mail " is not "Mail".
export function isReaching(app: string, knownApps: readonly string[]): boolean {
  const wanted = app.toLowerCase();
  return knownApps.some((known) => known.toLowerCase() === wanted);
}
