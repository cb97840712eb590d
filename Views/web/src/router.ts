// Client-side navigation over real paths: the daemon answers every path
// without an extension with index.html, so a reload or a bookmark lands on the
// same screen.

import { requestRender } from './state/store';

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
  const parts = pathname.split('/').filter(Boolean).map(decodeURIComponent);
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

let route: Route = parseRoute(location.pathname, location.search);
let focusAfterRender = false;

export function currentRoute(): Route {
  return route;
}

export function currentTab(): Tab {
  return tabOf(location.pathname);
}

export function navigate(to: string, options: { replace?: boolean } = {}): void {
  const url = new URL(to, location.origin);
  if (options.replace) history.replaceState(null, '', url);
  else history.pushState(null, '', url);
  route = parseRoute(url.pathname, url.search);
  focusAfterRender = true;
  window.scrollTo(0, 0);
  requestRender();
}

// After a navigation, focus moves to the new screen's heading so that keyboard
// and screen-reader users start reading the screen they asked for.
export function takeFocusRequest(): boolean {
  const wanted = focusAfterRender;
  focusAfterRender = false;
  return wanted;
}

export function installRouter(): void {
  window.addEventListener('popstate', () => {
    route = parseRoute(location.pathname, location.search);
    focusAfterRender = true;
    requestRender();
  });
  // Plain links inside the app navigate without reloading.
  document.addEventListener('click', (event) => {
    if (event.defaultPrevented || event.button !== 0) return;
    if (event.metaKey || event.ctrlKey || event.shiftKey || event.altKey) return;
    const anchor = (event.target as Element | null)?.closest?.('a');
    if (!anchor || anchor.target || anchor.hasAttribute('download')) return;
    const href = anchor.getAttribute('href');
    if (!href || !href.startsWith('/') || href.startsWith('/v1/') || anchor.dataset.external !== undefined) return;
    event.preventDefault();
    navigate(href);
  });
}
