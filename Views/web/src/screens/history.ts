// The History tab: every forwarded notification's outcome, newest first, with
// the channel filter, the way to the statistics and clearing the history.

import { html, nothing, type TemplateResult } from 'lit-html';
import { api } from '../api/client';
import type { FireEvent } from '../api/types';
import { channelsQuery, eventsQuery } from '../state/data';
import { invalidate, requestRender } from '../state/store';
import { confirmDialog, showToast } from '../ui/dialog';
import { shortDate } from '../ui/format';
import { eventTitle, filteredEvents, notificationLine } from '../logic/history';
import { icon } from '../ui/icons';
import { menuButton } from '../ui/menu';
import { errorNote, loadingNote, screenHeader } from '../ui/widgets';
import { errorMessage } from '../logic/errors';

// Not kept anywhere: every visit starts unfiltered.
let channelFilter: string | null = null;

export function resetHistoryFilter(): void {
  channelFilter = null;
}

export function outcomeIcon(event: FireEvent): TemplateResult {
  return icon(event.icon, { className: `row-icon outcome-icon ${event.outcome === 'failed' ? 'bad' : 'muted'}` });
}

async function clearHistory(): Promise<void> {
  const confirmed = await confirmDialog({
    title: 'Clear all history?',
    confirmLabel: 'Clear History',
    destructive: true,
  });
  if (!confirmed) return;
  try {
    await api.clearEvents();
    invalidate('events');
  } catch (error) {
    showToast(errorMessage(error));
  }
}

function filterMenu(): TemplateResult {
  const channels = channelsQuery().data ?? [];
  // A filter on a channel that is gone shows nothing; fall back to all.
  const choose = (id: string | null) => {
    channelFilter = id;
    requestRender();
  };
  return menuButton({
    id: 'history-filter',
    label: 'Filter',
    symbol: channelFilter ? 'line.3.horizontal.decrease.circle.fill' : 'line.3.horizontal.decrease.circle',
    groups: [
      {
        title: 'Channel',
        items: [
          { label: 'All Channels', checked: channelFilter === null, onSelect: () => choose(null) },
          ...channels.map((channel) => ({
            label: channel.name,
            checked: channelFilter === channel.id,
            onSelect: () => choose(channel.id),
          })),
        ],
      },
    ],
  });
}

function eventRow(event: FireEvent): TemplateResult {
  return html`<li>
    <a class="row row-link event-row" href=${`/history/${event.id}`}>
      ${outcomeIcon(event)}
      <span class="row-label">
        <span class="event-title"
          >${eventTitle(event)}${event.isTest ? html` <span class="badge test">Test</span>` : nothing}</span
        >
        ${notificationLine(event) ? html`<span class="event-notification">${notificationLine(event)}</span>` : nothing}
        <span class="row-detail ${event.outcome === 'failed' ? 'bad' : ''}">${event.label}</span>
      </span>
      <time class="row-value" datetime="">${shortDate(event.receivedAt)}</time>
      ${icon('chevron.right', { className: 'row-chevron' })}
    </a>
  </li>`;
}

export function historyScreen(): TemplateResult {
  const result = eventsQuery();
  const channels = channelsQuery().data;
  const filterName = channelFilter ? channels?.find((channel) => channel.id === channelFilter)?.name : undefined;
  const events = result.data ? filteredEvents(result.data, channelFilter) : undefined;
  return html`${screenHeader({
    title: 'History',
    subtitle: filterName ? `Showing ${filterName}` : undefined,
    actions: html`${filterMenu()}
      <a class="toolbar-button" href="/history/stats" aria-label="Stats" title="Stats">${icon('chart.bar.xaxis')}</a>
      <button
        type="button"
        class="toolbar-button with-label"
        ?disabled=${!result.data || result.data.length === 0}
        @click=${() => void clearHistory()}
      >
        <span>Clear</span>
      </button>`,
  })}
  ${errorNote(result.error)}
  ${
    !events
      ? result.error
        ? nothing
        : loadingNote()
      : events.length === 0
        ? html`<div class="empty-state">
            ${icon('list.bullet.rectangle', { className: 'empty-icon' })}
            <h2>No History</h2>
            <p>Forwarded notifications show up here.</p>
          </div>`
        : html`<section class="group" aria-label="Events, newest first">
            <ul class="group-body event-list">
              ${events.map(eventRow)}
            </ul>
          </section>`
  }`;
}
