// One event of the history: the notification, what the automation delivered,
// the outcome, and "Create Channel from This", which opens the new channel's
// editor inside this detail.

import { html, nothing, type TemplateResult } from 'lit-html';
import { api } from '../api/client';
import type { FireEvent, WhyExplanation, WhyRole } from '../api/types';
import { navigate } from '../router';
import { eventsQuery, whyQuery } from '../state/data';
import { invalidate } from '../state/store';
import { showToast } from '../ui/dialog';
import { fullDate } from '../ui/format';
import { icon } from '../ui/icons';
import { errorNote, loadingNote, row, screenHeader, section } from '../ui/widgets';
import { outcomeIcon } from './history';
import { checkRow } from './rulePreview';
import { errorMessage } from '../logic/errors';

// A routing, or its replay, that ran out of its matching budget.
const cutShortText = 'Cut short: the rules’ patterns took too long to check';

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

const roleTexts: Record<WhyRole, { label: string; tone: string }> = {
  wins: { label: 'Wins', tone: 'good' },
  disabledMatch: { label: 'Matches, but off', tone: 'muted' },
  noMatch: { label: 'No match', tone: 'muted' },
  notReached: { label: 'Not reached', tone: 'muted' },
};

function whyContent(why: WhyExplanation): TemplateResult {
  return html`<p class="why-step">${why.step.text}</p>
    ${
      why.difference
        ? html`<p class="why-difference bad">${why.difference} Changed: ${why.changedChannel}.</p>`
        : nothing
    }
    ${why.cutShort ? html`<p class="bad">${cutShortText}</p>` : nothing}
    <ol class="why-channels" aria-label="Channels in priority order">
      ${why.channels.map(
        (channel) =>
          html`<li>
            <details ?open=${channel.role === 'wins' || channel.role === 'disabledMatch'}>
              <summary>
                <span class="entry-title"
                  >${channel.name}${channel.isEnabled ? nothing : html` <span class="muted">(off)</span>`}</span
                >
                <span class="verdict ${roleTexts[channel.role].tone}">${roleTexts[channel.role].label}</span>
              </summary>
              ${
                channel.checks.length
                  ? html`<ul class="checks" aria-label="Checks">
                      ${channel.checks.map(checkRow)}
                    </ul>`
                  : html`<p class="note">No conditions: every notification matches.</p>`
              }
            </details>
          </li>`,
      )}
    </ol>`;
}

function whySection(eventId: string): TemplateResult {
  const result = whyQuery(eventId);
  return section({
    id: 'why',
    title: 'Why',
    content: result.data
      ? whyContent(result.data)
      : html`${errorNote(result.error)}${result.error ? nothing : loadingNote()}`,
    footer: 'Replayed with the history before it and the channels as they are now.',
  });
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
    ${event.routingCutShort ? row('Rules', html`<span class="bad">${cutShortText}</span>`) : nothing}
    ${row('Received', fullDate(event.receivedAt))} ${row('Handled', fullDate(event.firedAt))}`,
  })}
  ${
    event.escalations?.length
      ? section({
          id: 'escalation',
          title: 'Escalation',
          content: event.escalations.map((record) =>
            row(
              `Step ${record.step}: ${record.action}`,
              html`<span class=${record.ok ? '' : 'bad'}>${record.detail} · ${fullDate(record.at)}</span>`,
            ),
          ),
        })
      : nothing
  }
  ${whySection(event.id)}
  ${section({
    content: html`<button type="button" class="row row-button" @click=${() => void createChannel(event)}>
      ${icon('plus.rectangle.on.rectangle', { className: 'row-icon accent' })}
      <span class="row-label accent">Create Channel from This</span>
    </button>`,
  })}`;
}
