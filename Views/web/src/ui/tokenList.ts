// An editable list of texts (apps, senders, keywords), kept exactly as typed:
// each entry is a chip with a remove button, and the field below adds one
// entry per Enter (or when it loses focus), with suggestions from a datalist.

import { html, nothing, type TemplateResult } from 'lit-html';
import { icon } from './icons';

export function tokenList(options: {
  id: string;
  label: string; // "Apps", "People", "Words"
  placeholder: string;
  values: string[];
  suggestions?: string[];
  invalid?: Set<string>;
  error?: string; // why the daemon refused the list, shown under it
  onChange: (values: string[]) => void;
}): TemplateResult {
  const listId = `${options.id}-suggestions`;
  const errorId = `${options.id}-error`;
  const add = (input: HTMLInputElement) => {
    const value = input.value;
    if (value.trim() === '') {
      input.value = '';
      return;
    }
    input.value = '';
    options.onChange([...options.values, value]);
  };
  const remove = (index: number) => {
    const next = options.values.slice();
    next.splice(index, 1);
    options.onChange(next);
    // Keep the keyboard in the list: the field takes focus after the chip goes.
    queueMicrotask(() => document.getElementById(`${options.id}-input`)?.focus());
  };
  const onKey = (event: KeyboardEvent) => {
    const input = event.target as HTMLInputElement;
    if (event.key === 'Enter') {
      event.preventDefault();
      add(input);
    } else if (event.key === 'Backspace' && input.value === '' && options.values.length > 0) {
      remove(options.values.length - 1);
    }
  };
  const suggestions = (options.suggestions ?? []).filter(
    (suggestion) => !options.values.some((value) => value.trim().toLowerCase() === suggestion.toLowerCase()),
  );
  return html`<div class="token-list" role="group" aria-label=${options.label}>
    <ul class="tokens" aria-label=${options.label}>
      ${options.values.map((value, index) => {
        const isInvalid = options.invalid?.has(value) ?? false;
        const shown = value.trim() === '' ? '(blank)' : value;
        return html`<li class="token ${isInvalid ? 'invalid' : ''}">
          <span class="token-text">${shown}</span>
          <button type="button" class="token-remove" aria-label=${`Remove ${shown}`} @click=${() => remove(index)}>
            ${icon('xmark.circle.fill')}
          </button>
        </li>`;
      })}
    </ul>
    <input
      id=${`${options.id}-input`}
      class="token-input"
      type="text"
      autocomplete="off"
      spellcheck="false"
      list=${suggestions.length ? listId : nothing}
      placeholder=${options.placeholder}
      aria-label=${options.placeholder}
      aria-invalid=${options.error ? 'true' : 'false'}
      aria-describedby=${options.error ? errorId : nothing}
      @keydown=${onKey}
      @change=${(event: Event) => add(event.target as HTMLInputElement)}
    />
    ${
      suggestions.length
        ? html`<datalist id=${listId}>
            ${suggestions.map((suggestion) => html`<option value=${suggestion}></option>`)}
          </datalist>`
        : nothing
    }
    ${options.error ? html`<p id=${errorId} class="error-note field-error" role="alert">${options.error}</p>` : nothing}
  </div>`;
}
