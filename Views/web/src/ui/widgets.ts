// Small building blocks shared by the screens: headers, grouped sections,
// rows, switches, pickers and the bold-marked step texts of the guides.

import { html, nothing, type TemplateResult } from 'lit-html';
import { icon } from './icons';

type Content = TemplateResult | TemplateResult[] | string | typeof nothing;

export function screenHeader(options: {
  title: string;
  back?: { href: string; label: string };
  actions?: Content;
  subtitle?: string;
}): TemplateResult {
  return html`<header class="screen-header">
    <div class="screen-header-bar">
      ${
        options.back
          ? html`<a class="back-link" href=${options.back.href}
              >${icon('chevron.left')}<span>${options.back.label}</span></a
            >`
          : html`<span></span>`
      }
      <div class="screen-actions">${options.actions ?? nothing}</div>
    </div>
    <h1 tabindex="-1" class="screen-title">${options.title}</h1>
    ${options.subtitle ? html`<p class="screen-subtitle">${options.subtitle}</p>` : nothing}
  </header>`;
}

export function section(options: {
  title?: string;
  footer?: Content;
  content: Content;
  id?: string;
  className?: string;
}): TemplateResult {
  const headingId = options.id ? `${options.id}-title` : undefined;
  return html`<section
    class="group ${options.className ?? ''}"
    id=${options.id ?? nothing}
    aria-labelledby=${options.title && headingId ? headingId : nothing}
  >
    ${options.title ? html`<h2 class="group-title" id=${headingId ?? nothing}>${options.title}</h2>` : nothing}
    <div class="group-body">${options.content}</div>
    ${options.footer ? html`<div class="group-footer">${options.footer}</div>` : nothing}
  </section>`;
}

export function row(label: Content, value?: Content, options: { symbol?: string } = {}): TemplateResult {
  return html`<div class="row">
    ${options.symbol ? icon(options.symbol, { className: 'row-icon' }) : nothing}
    <span class="row-label">${label}</span>
    ${value !== undefined ? html`<span class="row-value">${value}</span>` : nothing}
  </div>`;
}

export function linkRow(
  href: string,
  label: string,
  options: { symbol?: string; detail?: string } = {},
): TemplateResult {
  return html`<a class="row row-link" href=${href}>
    ${options.symbol ? icon(options.symbol, { className: 'row-icon' }) : nothing}
    <span class="row-label">
      ${label} ${options.detail ? html`<span class="row-detail">${options.detail}</span>` : nothing}
    </span>
    ${icon('chevron.right', { className: 'row-chevron' })}
  </a>`;
}

export function switchControl(options: {
  label: string;
  checked: boolean;
  onChange: (checked: boolean) => void;
  disabled?: boolean;
  id?: string;
}): TemplateResult {
  return html`<button
    type="button"
    role="switch"
    class="switch"
    id=${options.id ?? nothing}
    aria-checked=${options.checked ? 'true' : 'false'}
    aria-label=${options.label}
    ?disabled=${options.disabled ?? false}
    @click=${() => options.onChange(!options.checked)}
  >
    <span class="switch-thumb" aria-hidden="true"></span>
  </button>`;
}

export function switchRow(options: {
  label: string;
  checked: boolean;
  onChange: (checked: boolean) => void;
  detail?: string;
  id?: string;
}): TemplateResult {
  return html`<div class="row">
    <span class="row-label">
      ${options.label} ${options.detail ? html`<span class="row-detail">${options.detail}</span>` : nothing}
    </span>
    ${switchControl(options)}
  </div>`;
}

export function selectRow<T extends string | number>(options: {
  label: string;
  value: T;
  choices: readonly { value: T; label: string }[];
  onChange: (value: T) => void;
  id: string;
}): TemplateResult {
  const onChange = (event: Event) => {
    const raw = (event.target as HTMLSelectElement).value;
    const chosen = options.choices.find((choice) => String(choice.value) === raw);
    if (chosen) options.onChange(chosen.value);
  };
  return html`<div class="row">
    <label class="row-label" for=${options.id}>${options.label}</label>
    <select id=${options.id} class="select" .value=${String(options.value)} @change=${onChange}>
      ${options.choices.map(
        (choice) =>
          html`<option value=${String(choice.value)} ?selected=${choice.value === options.value}>
            ${choice.label}
          </option>`,
      )}
    </select>
  </div>`;
}

// A segmented choice: a radio group drawn as joined buttons.
export function segmented<T extends string>(options: {
  label: string;
  value: T;
  choices: readonly { value: T; label: string }[];
  onChange: (value: T) => void;
}): TemplateResult {
  const onKey = (event: KeyboardEvent) => {
    const index = options.choices.findIndex((choice) => choice.value === options.value);
    const step =
      event.key === 'ArrowRight' || event.key === 'ArrowDown'
        ? 1
        : event.key === 'ArrowLeft' || event.key === 'ArrowUp'
          ? -1
          : 0;
    if (!step) return;
    const next = index + step;
    event.preventDefault();
    const chosen = options.choices[(next + options.choices.length) % options.choices.length];
    if (chosen) {
      options.onChange(chosen.value);
      const group = event.currentTarget as HTMLElement;
      queueMicrotask(() => group.querySelector<HTMLElement>('[aria-checked="true"]')?.focus());
    }
  };
  return html`<div class="segmented" role="radiogroup" aria-label=${options.label} @keydown=${onKey}>
    ${options.choices.map(
      (choice) =>
        html`<button
          type="button"
          role="radio"
          aria-checked=${choice.value === options.value ? 'true' : 'false'}
          tabindex=${choice.value === options.value ? '0' : '-1'}
          @click=${() => options.onChange(choice.value)}
        >
          ${choice.label}
        </button>`,
    )}
  </div>`;
}

// A sentence whose **marked** parts are bold, as the setup steps are written.
// Bold parts that are command-line options ("--time-sensitive") never
// break inside, not even at their hyphens.
export function marked(text: string): TemplateResult[] {
  return text
    .split('**')
    .map((part, index) =>
      index % 2 === 1 ? html`<strong class=${part.startsWith('-') ? 'token' : ''}>${part}</strong>` : html`${part}`,
    );
}

export function numberedSteps(steps: string[]): TemplateResult {
  return html`<ol class="steps">
    ${steps.map(
      (step, index) =>
        html`<li class="step">
          <span class="step-number" aria-hidden="true">${index + 1}</span>
          <span class="step-text">${marked(step)}</span>
        </li>`,
    )}
  </ol>`;
}

export function copyableCommand(command: string, label = 'Copy'): TemplateResult {
  const copy = async (event: Event) => {
    const button = event.currentTarget as HTMLButtonElement;
    try {
      await navigator.clipboard.writeText(command);
      button.textContent = 'Copied';
    } catch {
      // Without clipboard access the command is still there to select by hand.
      const code = button.previousElementSibling;
      if (code) getSelection()?.selectAllChildren(code);
    }
  };
  // Lines break between the command's words only, never inside an option.
  const words = command.split(' ');
  return html`<div class="command">
    <code>${words.map((word, index) => html`${index ? ' ' : ''}<span class="token">${word}</span>`)}</code>
    <button type="button" class="button small" aria-label=${`${label}: ${command}`} @click=${copy}>${label}</button>
  </div>`;
}

export function errorNote(error: { message: string } | undefined): TemplateResult | typeof nothing {
  if (!error) return nothing;
  return html`<p class="error-note" role="alert">${icon('exclamationmark.triangle')} ${error.message}</p>`;
}

export function loadingNote(): TemplateResult {
  return html`<p class="loading" aria-busy="true">Loading…</p>`;
}
