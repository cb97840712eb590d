// Ringwell's web app: the shell with its three tabs, the onboarding cover
// until it has been completed, the alarm presentation over every screen, and
// the live link to the daemon.

import { html, nothing, render, type TemplateResult } from 'lit-html';
import { setUnauthorizedHandler } from './api/client';
import { currentRoute, currentTab, installRouter, takeFocusRequest, type Tab } from './router';
import { alarmPanel } from './screens/alarmPanel';
import { channelEditorScreen } from './screens/channelEditor';
import { channelListScreen } from './screens/channelList';
import { eventDetailScreen } from './screens/eventDetail';
import { forwardingSheet } from './screens/forwardingSheet';
import { historyScreen, resetHistoryFilter } from './screens/history';
import { onboardingCover } from './screens/onboarding';
import { previewScreen } from './screens/rulePreview';
import { settingsScreen } from './screens/settings';
import { setupGuideScreen } from './screens/setupGuide';
import { setupTestScreen } from './screens/setupTest';
import { statsScreen } from './screens/stats';
import { startClock } from './state/clock';
import { settingsQuery, statusQuery } from './state/data';
import { liveLinkState, startLiveUpdates } from './state/live';
import { requestRender, setRenderer } from './state/store';
import { toastView } from './ui/dialog';
import { icon } from './ui/icons';
import './styles.css';

let unauthorized = false;

const tabs: { id: Tab; label: string; symbol: string; href: string }[] = [
  { id: 'channels', label: 'Channels', symbol: 'alarm.waves.left.and.right', href: '/channels' },
  { id: 'history', label: 'History', symbol: 'clock.arrow.circlepath', href: '/history' },
  { id: 'settings', label: 'Settings', symbol: 'gearshape', href: '/settings' },
];

function screen(): TemplateResult {
  const route = currentRoute();
  switch (route.name) {
    case 'channels':
      return channelListScreen();
    case 'channel':
      return channelEditorScreen(route.channelId, route.blank, route.back);
    case 'preview':
      return previewScreen(route.channelId);
    case 'history':
      return historyScreen();
    case 'stats':
      return statsScreen();
    case 'event':
      return eventDetailScreen(route.eventId);
    case 'settings':
      return settingsScreen();
    case 'setupGuide':
      return setupGuideScreen();
    case 'setupTest':
      return setupTestScreen();
    case 'notFound':
      return html`<div class="empty-state">
        <h1 tabindex="-1">Not Found</h1>
        <p>There is no such screen.</p>
        <a class="button" href="/channels">Channels</a>
      </div>`;
  }
}

function tabBar(): TemplateResult {
  const active = currentTab();
  const onTab = (tab: Tab) => () => {
    if (tab === 'history') resetHistoryFilter();
  };
  return html`<nav class="tabbar" aria-label="Ringwell">
    <span class="brand" aria-hidden="true">${icon('alarm.waves.left.and.right.fill')} Ringwell</span>
    <ul>
      ${tabs.map(
        (tab) =>
          html`<li>
            <a
              href=${tab.href}
              class="tab"
              aria-current=${tab.id === active ? 'page' : nothing}
              @click=${onTab(tab.id)}
            >
              ${icon(tab.symbol)}<span>${tab.label}</span>
            </a>
          </li>`,
      )}
    </ul>
  </nav>`;
}

function linkBanner(): TemplateResult | typeof nothing {
  if (liveLinkState() !== 'lost') return nothing;
  return html`<div class="link-banner" role="alert">
    ${icon('wifi.exclamationmark')} Ringwell isn't running. Start it with <code>ringwell serve</code>.
  </div>`;
}

// Sends are still acknowledged while the history cannot be written; say so
// until a save succeeds again.
function saveBanner(): TemplateResult | typeof nothing {
  const problem = statusQuery().data?.saveProblem;
  if (!problem) return nothing;
  return html`<div class="link-banner save-banner" role="alert">
    ${icon('exclamationmark.triangle.fill')} ${problem}
  </div>`;
}

function lockedView(): TemplateResult {
  return html`<main class="locked">
    ${icon('alarm.waves.left.and.right.fill', { className: 'hero-icon' })}
    <h1>Open Ringwell from its address</h1>
    <p>
      This browser has no key for Ringwell. Run <code>ringwell open</code>, or open the address that
      <code>ringwell serve</code> printed.
    </p>
  </main>`;
}

function appView(): TemplateResult {
  if (unauthorized) return lockedView();
  const settings = settingsQuery();
  if (!settings.data) {
    return html`<main class="starting">
      ${
        settings.error
          ? html`<h1>Ringwell isn't running</h1>
              <p>${settings.error.message}</p>`
          : html`<p class="loading" aria-busy="true">Loading…</p>`
      }
    </main>`;
  }
  const onboarding = !settings.data.hasCompletedOnboarding;
  return html`<a class="skip-link" href="#main" data-external>Skip to content</a>
    ${linkBanner()} ${saveBanner()}
    <div class="app ${onboarding ? 'covered' : ''}" ?inert=${onboarding} aria-hidden=${onboarding ? 'true' : nothing}>
      ${tabBar()}
      <main id="main" class="content">${screen()}</main>
    </div>
    ${onboarding ? onboardingCover() : nothing} ${forwardingSheet()} ${alarmPanel()} ${toastView()}`;
}

const root = document.getElementById('app')!;

function renderApp(): void {
  render(appView(), root);
  if (takeFocusRequest()) {
    root.querySelector<HTMLElement>('main h1[tabindex="-1"]')?.focus({ preventScroll: true });
  }
  document.title = titleOf();
}

function titleOf(): string {
  const heading = root.querySelector('main h1')?.textContent?.trim();
  return heading ? `${heading} – Ringwell` : 'Ringwell';
}

setUnauthorizedHandler(() => {
  unauthorized = true;
  requestRender();
});
setRenderer(renderApp);
installRouter();
startLiveUpdates();
startClock();
renderApp();
