// The Channels tab: the channels in priority order, each with its colour,
// name, rule summary, mode badge, last-triggered status and enable switch;
// drag (or the arrow keys on a row's handle) to reorder; the add menu with a
// blank channel and the eight templates.

import { html, nothing, type TemplateResult } from 'lit-html';
import { repeat } from 'lit-html/directives/repeat.js';
import { styleMap } from 'lit-html/directives/style-map.js';
import { api } from '../api/client';
import type { ChannelView, RuleTemplate } from '../api/types';
import { navigate } from '../router';
import { channelViewsQuery, templatesQuery } from '../state/data';
import { invalidate, requestRender } from '../state/store';
import { showToast } from '../ui/dialog';
import { icon } from '../ui/icons';
import { menuButton } from '../ui/menu';
import { errorNote, loadingNote, screenHeader, switchControl } from '../ui/widgets';
import { lastTriggeredLabel } from '../logic/relativeTime';
import { errorMessage } from '../logic/errors';

// The order shown from the moment a channel is moved until the daemon's list
// shows it too, so that rows do not jump back while the move is on its way.
let pendingOrder: string[] | null = null;
let announcement = '';
let focusHandleOf: string | null = null;

function ordered(views: ChannelView[]): ChannelView[] {
  if (!pendingOrder) return views;
  const order = pendingOrder;
  const byId = new Map(views.map((view) => [view.channel.id, view]));
  if (order.length !== views.length || order.some((id) => !byId.has(id))) {
    pendingOrder = null;
    return views;
  }
  if (views.every((view, index) => view.channel.id === order[index])) pendingOrder = null;
  return order.map((id) => byId.get(id)!);
}

async function move(views: ChannelView[], from: number, to: number): Promise<void> {
  if (from === to || to < 0 || to >= views.length) return;
  const order = views.map((view) => view.channel.id);
  const [moved] = order.splice(from, 1);
  if (!moved) return;
  order.splice(to, 0, moved);
  pendingOrder = order;
  const name = views[from]?.channel.name ?? '';
  announcement = `Moved ${name} to position ${to + 1} of ${views.length}.`;
  requestRender();
  try {
    await api.moveChannel(moved, to + 1);
  } catch (error) {
    pendingOrder = null;
    showToast(errorMessage(error));
  }
  invalidate('channels');
}

async function setEnabled(view: ChannelView, isEnabled: boolean): Promise<void> {
  try {
    await api.updateChannel({ ...view.channel, isEnabled });
  } catch (error) {
    showToast(errorMessage(error));
  }
  invalidate('channels');
}

// Pointer dragging by the handle: the row follows the pointer and the others
// make room; the move is sent when the pointer is released.
function startDrag(event: PointerEvent, views: ChannelView[], index: number): void {
  if (event.button !== 0) return;
  const handle = event.currentTarget as HTMLElement;
  const rowElement = handle.closest<HTMLElement>('.channel-row');
  const list = rowElement?.parentElement;
  if (!rowElement || !list) return;
  event.preventDefault();
  handle.setPointerCapture(event.pointerId);
  const rows = Array.from(list.children) as HTMLElement[];
  const rects = rows.map((element) => element.getBoundingClientRect());
  const startY = event.clientY;
  const height = rects[index]?.height ?? 0;
  let target = index;
  rowElement.classList.add('dragging');

  const onMove = (moveEvent: PointerEvent) => {
    const dy = moveEvent.clientY - startY;
    const center = (rects[index]?.top ?? 0) + height / 2 + dy;
    target = index;
    rects.forEach((rect, i) => {
      const middle = rect.top + rect.height / 2;
      if (i > index && center > middle) target = Math.max(target, i);
      if (i < index && center < middle) target = Math.min(target, i);
    });
    rows.forEach((element, i) => {
      if (i === index) element.style.transform = `translateY(${dy}px)`;
      else if (i > index && i <= target) element.style.transform = `translateY(${-height}px)`;
      else if (i < index && i >= target) element.style.transform = `translateY(${height}px)`;
      else element.style.transform = '';
    });
  };
  const onUp = () => {
    handle.removeEventListener('pointermove', onMove);
    handle.removeEventListener('pointerup', onUp);
    handle.removeEventListener('pointercancel', onUp);
    rows.forEach((element) => (element.style.transform = ''));
    rowElement.classList.remove('dragging');
    void move(views, index, target);
  };
  handle.addEventListener('pointermove', onMove);
  handle.addEventListener('pointerup', onUp);
  handle.addEventListener('pointercancel', onUp);
}

function onHandleKey(event: KeyboardEvent, views: ChannelView[], index: number): void {
  const last = views.length - 1;
  const target =
    event.key === 'ArrowUp'
      ? index - 1
      : event.key === 'ArrowDown'
        ? index + 1
        : event.key === 'Home'
          ? 0
          : event.key === 'End'
            ? last
            : null;
  if (target === null) return;
  event.preventDefault();
  const id = views[index]?.channel.id;
  if (id) focusHandleOf = id;
  void move(views, index, Math.min(Math.max(target, 0), last));
}

export async function addChannel(body: { template?: string }, blank?: RuleTemplate['blank']): Promise<void> {
  try {
    const channel = await api.addChannel(body);
    invalidate('channels');
    navigate(`/channels/${channel.id}${blank ? `?blank=${blank}` : ''}`);
  } catch (error) {
    showToast(errorMessage(error));
  }
}

function addMenu(): TemplateResult {
  const templates = templatesQuery().data ?? [];
  return menuButton({
    id: 'add-channel',
    label: 'Add Channel',
    symbol: 'plus',
    groups: [
      { items: [{ label: 'New Channel', symbol: 'plus', onSelect: () => void addChannel({}) }] },
      {
        title: 'Templates',
        items: templates.map((template) => ({
          label: template.title,
          detail: template.subtitle,
          symbol: template.systemImage,
          onSelect: () => void addChannel({ template: template.id }, template.blank),
        })),
      },
    ],
  });
}

function channelRow(view: ChannelView, index: number, views: ChannelView[]): TemplateResult {
  const { channel } = view;
  const neverTriggered = view.connection.count === 0;
  return html`<li class="channel-row ${channel.isEnabled ? '' : 'disabled'}" data-id=${channel.id}>
    <button
      type="button"
      class="drag-handle"
      data-handle=${channel.id}
      aria-label=${`Reorder ${channel.name}, position ${index + 1} of ${views.length}`}
      aria-describedby="reorder-help"
      @pointerdown=${(event: PointerEvent) => startDrag(event, views, index)}
      @keydown=${(event: KeyboardEvent) => onHandleKey(event, views, index)}
    >
      ${icon('grip')}
    </button>
    <a class="channel-link" href=${`/channels/${channel.id}`}>
      <span class="tint-dot" style=${styleMap({ background: channel.tintHex })} aria-hidden="true"></span>
      <span class="channel-text">
        <span class="channel-name">${channel.name}</span>
        <span class="channel-summary">${view.ruleSummary}</span>
        <span class="channel-meta">
          <span class="badge">${view.modeBadge}</span>
          <span class=${neverTriggered ? 'status muted' : 'status'}
            >${lastTriggeredLabel(view.connection.lastTriggered, new Date())}</span
          >
          ${channel.isEnabled ? nothing : html`<span class="status muted">Off</span>`}
        </span>
      </span>
    </a>
    ${switchControl({
      label: `${channel.name} enabled`,
      checked: channel.isEnabled,
      onChange: (checked) => void setEnabled(view, checked),
    })}
  </li>`;
}

export function channelListScreen(): TemplateResult {
  const result = channelViewsQuery();
  const views = result.data ? ordered(result.data) : undefined;
  // A channel moved from the keyboard keeps the focus on its handle until
  // the list has settled in its new order.
  if (focusHandleOf) {
    const id = focusHandleOf;
    if (!pendingOrder) focusHandleOf = null;
    queueMicrotask(() => document.querySelector<HTMLElement>(`[data-handle="${id}"]`)?.focus());
  }
  return html`${screenHeader({ title: 'Channels', actions: addMenu() })} ${errorNote(result.error)}
    ${
      !views
        ? result.error
          ? nothing
          : loadingNote()
        : views.length === 0
          ? html`<div class="empty-state">
              ${icon('alarm.waves.left.and.right', { className: 'empty-icon' })}
              <h2>No Channels</h2>
              <p>Add a channel to decide which notifications ring.</p>
              <button class="button primary" @click=${() => void addChannel({})}>New Channel</button>
            </div>`
          : html`<section class="group" aria-label="Channels in priority order">
              <ul class="group-body channel-list">
                ${repeat(
                  views,
                  (view) => view.channel.id,
                  (view, index) => channelRow(view, index, views),
                )}
              </ul>
              <div class="group-footer">The first matching channel rings. Drag to reorder.</div>
            </section>`
    }
    <p id="reorder-help" class="visually-hidden">Use the up and down arrow keys to move the channel.</p>
    <p class="visually-hidden" role="status" aria-live="polite">${announcement}</p>`;
}
