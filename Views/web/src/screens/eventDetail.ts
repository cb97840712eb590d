// One event of the history: the notification, what the automation delivered,
// the outcome, and "Create Channel from This", which opens the new channel's
// editor inside this detail.

import { html, nothing, type TemplateResult } from 'lit-html';
import { api } from '../api/client';
import type { FireEvent } from '../api/types';
import { navigate } from '../router';
import { eventsQuery } from '../state/data';
import { invalidate } from '../state/store';
import { showToast } from '../ui/dialog';
import { fullDate } from '../ui/format';
import { icon } from '../ui/icons';
import { errorNote, loadingNote, row, screenHeader, section } from '../ui/widgets';
import { outcomeIcon } from './history';
import { errorMessage } from '../logic/errors';

function valueOrNotProvided(value: string | undefined): TemplateResult {
  return value === undefined ? html`<span class="muted">Not provided</span>` : html`${value}`;
}

async function createChannel(event: FireEvent): Promise<void> {
  try {
    const channel = await api.addChannel({ likeEvent: event.id });
    invalidate('channels');
    navigate(`/history/${event.id}/channel/${channel.id}`);
  } catch (error) {
    showToast(errorMessage(error));
  }
}

export function eventDetailScreen(eventId: string): TemplateResult {
  const result = eventsQuery();
  const event = result.data?.find((candidate) => candidate.id === eventId);
  const done = html`<a class="toolbar-button with-label" href="/history"><span>Done</span></a>`;
  if (!event) {
    if (result.data)
      return html`${screenHeader({ title: 'Event', actions: done })}
        <div class="empty-state">
          <h2>Event Cleared</h2>
          <p>This event is no longer in the history.</p>
        </div>`;
    return html`${screenHeader({ title: 'Event', actions: done })}${errorNote(result.error)}${result.error ? nothing : loadingNote()}`;
  }
  return html`${screenHeader({ title: event.isTest ? 'Test' : 'Event', actions: done })}
  ${section({
    id: 'notification',
    title: 'Notification',
    content: html`${row('App', valueOrNotProvided(event.app))} ${row('Sender', valueOrNotProvided(event.sender))}
    ${row('Title', valueOrNotProvided(event.title))} ${row('Subtitle', valueOrNotProvided(event.subtitle))}
    ${row('Body', valueOrNotProvided(event.body))}`,
  })}
  ${
    event.received
      ? section({
          id: 'received',
          title: 'From the automation',
          content: event.received.map((field) =>
            row(field.name, field.value === '' ? html`<span class="muted">Empty</span>` : field.value),
          ),
        })
      : nothing
  }
  ${section({
    id: 'outcome',
    title: 'Outcome',
    content: html`${row('Channel', event.channelName ?? 'None')}
    ${row('Result', html`<span class="result">${outcomeIcon(event)} ${event.label}</span>`)}
    ${event.errorMessage ? row('Error', html`<span class="bad">${event.errorMessage}</span>`) : nothing}
    ${row('Received', fullDate(event.receivedAt))} ${row('Handled', fullDate(event.firedAt))}`,
  })}
  ${section({
    content: html`<button type="button" class="row row-button" @click=${() => void createChannel(event)}>
      ${icon('plus.rectangle.on.rectangle', { className: 'row-icon accent' })}
      <span class="row-label accent">Create Channel from This</span>
    </button>`,
  })}`;
}
