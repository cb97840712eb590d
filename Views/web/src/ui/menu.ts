// A menu button (the add-channel menu, the history filter): a button that
// opens a list of choices, operated by pointer or keyboard (arrows, Home, End,
// Escape) as the ARIA menu-button pattern describes.

import { html, nothing, type TemplateResult } from 'lit-html';
import { requestRender } from '../state/store';
import { icon } from './icons';

export interface MenuItem {
  label: string;
  detail?: string;
  symbol?: string;
  // Set for a choice list: the item is a radio choice, checked or not.
  checked?: boolean;
  onSelect: () => void;
}

export interface MenuGroup {
  title?: string;
  items: MenuItem[];
}

let openMenu: string | null = null;

function closeMenu(id: string, returnFocus: boolean): void {
  if (openMenu !== id) return;
  openMenu = null;
  requestRender();
  if (returnFocus) queueMicrotask(() => document.getElementById(`${id}-button`)?.focus());
}

document.addEventListener('pointerdown', (event) => {
  if (!openMenu) return;
  const root = document.getElementById(openMenu);
  if (root && !root.contains(event.target as Node)) closeMenu(openMenu, false);
});

function items(list: HTMLElement): HTMLElement[] {
  return Array.from(list.querySelectorAll<HTMLElement>('[role^="menuitem"]'));
}

function onListKey(id: string, event: KeyboardEvent): void {
  const list = event.currentTarget as HTMLElement;
  const all = items(list);
  const index = all.indexOf(document.activeElement as HTMLElement);
  const focusAt = (i: number) => all[(i + all.length) % all.length]?.focus();
  switch (event.key) {
    case 'ArrowDown':
      focusAt(index + 1);
      break;
    case 'ArrowUp':
      focusAt(index - 1);
      break;
    case 'Home':
      focusAt(0);
      break;
    case 'End':
      focusAt(all.length - 1);
      break;
    case 'Escape':
      closeMenu(id, true);
      break;
    case 'Tab':
      closeMenu(id, false);
      return;
    default:
      return;
  }
  event.preventDefault();
}

export function menuButton(options: {
  id: string;
  label: string;
  symbol: string;
  showLabel?: boolean;
  groups: MenuGroup[];
  align?: 'start' | 'end';
}): TemplateResult {
  const { id } = options;
  const isOpen = openMenu === id;
  const toggle = () => {
    openMenu = isOpen ? null : id;
    requestRender();
    if (!isOpen) {
      queueMicrotask(() => {
        const list = document.getElementById(`${id}-list`);
        const first = list && (list.querySelector<HTMLElement>('[aria-checked="true"]') ?? items(list)[0]);
        first?.focus();
      });
    }
  };
  const onButtonKey = (event: KeyboardEvent) => {
    if (event.key === 'ArrowDown' && !isOpen) {
      event.preventDefault();
      toggle();
    }
  };
  const choose = (item: MenuItem) => {
    closeMenu(id, true);
    item.onSelect();
  };
  return html`<div class="menu" id=${id}>
    <button
      id=${`${id}-button`}
      class=${options.showLabel ? 'toolbar-button with-label' : 'toolbar-button'}
      aria-haspopup="menu"
      aria-expanded=${isOpen ? 'true' : 'false'}
      aria-controls=${`${id}-list`}
      aria-label=${options.label}
      title=${options.label}
      @click=${toggle}
      @keydown=${onButtonKey}
    >
      ${icon(options.symbol)}${options.showLabel ? html`<span>${options.label}</span>` : nothing}
    </button>
    ${
      isOpen
        ? html`<div
            class="menu-list ${options.align === 'start' ? 'align-start' : 'align-end'}"
            id=${`${id}-list`}
            role="menu"
            aria-label=${options.label}
            @keydown=${(event: KeyboardEvent) => onListKey(id, event)}
          >
            ${options.groups.map(
              (group) =>
                html`<div role="group" aria-label=${group.title ?? nothing} class="menu-group">
                  ${group.title ? html`<div class="menu-group-title" aria-hidden="true">${group.title}</div>` : nothing}
                  ${group.items.map(
                    (item) =>
                      html`<button
                        class="menu-item"
                        role=${item.checked === undefined ? 'menuitem' : 'menuitemradio'}
                        aria-checked=${item.checked === undefined ? nothing : item.checked ? 'true' : 'false'}
                        tabindex="-1"
                        @click=${() => choose(item)}
                      >
                        ${
                          item.checked !== undefined
                            ? html`<span class="menu-check">${item.checked ? icon('checkmark') : nothing}</span>`
                            : nothing
                        }
                        ${item.symbol ? icon(item.symbol, { className: 'menu-icon' }) : nothing}
                        <span class="menu-text">
                          <span class="menu-label">${item.label}</span>
                          ${item.detail ? html`<span class="menu-detail">${item.detail}</span>` : nothing}
                        </span>
                      </button>`,
                  )}
                </div>`,
            )}
          </div>`
        : nothing
    }
  </div>`;
}
