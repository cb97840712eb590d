// The app's screens as addresses: what a path names, and which tab it
// belongs to. Pure, so that the router and the tests share it.

export type Tab = 'channels' | 'history' | 'settings';

export type Route =
  | { name: 'channels' }
  | { name: 'channel'; channelId: string; blank?: 'sender' | 'app'; back: string }
  | { name: 'preview'; channelId: string }
  | { name: 'history' }
  | { name: 'stats' }
  | { name: 'event'; eventId: string }
  | { name: 'settings' }
  | { name: 'setupGuide' }
  | { name: 'setupTest' }
  | { name: 'notFound' };

export function parseRoute(pathname: string, search: string): Route {
  let parts: string[];
  try {
    parts = pathname.split('/').filter(Boolean).map(decodeURIComponent);
  } catch {
    // A malformed escape ("%E0%A4%A") names no screen.
    return { name: 'notFound' };
  }
  const params = new URLSearchParams(search);
  const blankParam = params.get('blank');
  const blank = blankParam === 'sender' || blankParam === 'app' ? blankParam : undefined;
  const [first, second, third, fourth] = parts;
  if (parts.length === 0) return { name: 'channels' };
  if (first === 'channels') {
    if (parts.length === 1) return { name: 'channels' };
    if (parts.length === 2 && second) return { name: 'channel', channelId: second, blank, back: '/channels' };
    if (parts.length === 3 && second && third === 'preview') return { name: 'preview', channelId: second };
  }
  if (first === 'history') {
    if (parts.length === 1) return { name: 'history' };
    if (parts.length === 2 && second === 'stats') return { name: 'stats' };
    if (parts.length === 2 && second) return { name: 'event', eventId: second };
    // A channel created from an event opens inside that event's detail.
    if (parts.length === 4 && second && third === 'channel' && fourth)
      return { name: 'channel', channelId: fourth, blank, back: `/history/${encodeURIComponent(second)}` };
  }
  if (first === 'settings') {
    if (parts.length === 1) return { name: 'settings' };
    if (parts.length === 2 && second === 'setup') return { name: 'setupGuide' };
    if (parts.length === 2 && second === 'setup-test') return { name: 'setupTest' };
  }
  return { name: 'notFound' };
}

export function tabOf(pathname: string): Tab {
  if (pathname.startsWith('/history')) return 'history';
  if (pathname.startsWith('/settings')) return 'settings';
  return 'channels';
}
