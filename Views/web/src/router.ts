// Client-side navigation over real paths: the daemon answers every path
// without an extension with index.html, so a reload or a bookmark lands on the
// same screen.

import { parseRoute, tabOf, type Route, type Tab } from './logic/routes';
import { requestRender } from './state/store';

export type { Route, Tab };

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
