// Confirmations and short notices. A confirmation is a modal <dialog>: the
// browser keeps focus inside it, Escape cancels, and focus returns to the
// control that opened it.

import { html, render } from 'lit-html';
import { requestRender } from '../state/store';

export function confirmDialog(options: {
  title: string;
  message?: string;
  confirmLabel: string;
  destructive?: boolean;
  cancelLabel?: string;
}): Promise<boolean> {
  return new Promise((resolve) => {
    const opener = document.activeElement as HTMLElement | null;
    const dialog = document.createElement('dialog');
    dialog.className = 'confirm-dialog';
    dialog.setAttribute('aria-labelledby', 'confirm-title');
    document.body.append(dialog);
    let answer = false;
    const close = (value: boolean) => {
      answer = value;
      dialog.close();
    };
    render(
      html`<form method="dialog" class="confirm-body" @submit=${(event: Event) => event.preventDefault()}>
        <h2 id="confirm-title">${options.title}</h2>
        ${options.message ? html`<p>${options.message}</p>` : ''}
        <div class="confirm-actions">
          <button type="button" class="button" @click=${() => close(false)}>${options.cancelLabel ?? 'Cancel'}</button>
          <button
            type="button"
            class=${options.destructive ? 'button destructive' : 'button primary'}
            @click=${() => close(true)}
          >
            ${options.confirmLabel}
          </button>
        </div>
      </form>`,
      dialog,
    );
    dialog.addEventListener('close', () => {
      dialog.remove();
      opener?.focus();
      resolve(answer);
    });
    dialog.showModal();
    // Start on the harmless choice.
    dialog.querySelector<HTMLButtonElement>('button')?.focus();
  });
}

// A notice that reads itself to screen readers and goes away by itself.
let toastText: string | null = null;
let toastTimer: number | undefined;

export function showToast(text: string): void {
  toastText = text;
  window.clearTimeout(toastTimer);
  toastTimer = window.setTimeout(() => {
    toastText = null;
    requestRender();
  }, 4000);
  requestRender();
}

export function toastView() {
  return html`<div class="toast-region" role="status" aria-live="polite">
    ${toastText ? html`<div class="toast">${toastText}</div>` : ''}
  </div>`;
}
