// The live setup test: start it, get one notification forwarded, and see
// field by field whether the automation maps it right. Used on its own screen
// (from Settings and the setup guide) and inside the onboarding's last step.

import { html, nothing, type TemplateResult } from 'lit-html';
import { api } from '../api/client';
import type { SetupCheck, SetupTestState } from '../api/types';
import { appsToForwardQuery, settingsQuery, setupTestQuery } from '../state/data';
import { invalidate } from '../state/store';
import { showToast } from '../ui/dialog';
import { testNotificationCommand } from '../logic/shell';
import { icon } from '../ui/icons';
import { copyableCommand, errorNote, loadingNote, screenHeader } from '../ui/widgets';
import { errorMessage } from '../logic/errors';

async function run(action: () => Promise<SetupTestState>): Promise<void> {
  try {
    await action();
  } catch (error) {
    showToast(errorMessage(error));
  }
  invalidate('setupTest');
}

const statusSymbols: Record<SetupCheck['status'], { symbol: string; label: string; tone: string }> = {
  passed: { symbol: 'checkmark.circle.fill', label: 'Passed', tone: 'good' },
  failed: { symbol: 'xmark.circle.fill', label: 'Failed', tone: 'bad' },
  unverifiable: { symbol: 'questionmark.circle', label: 'Not verifiable', tone: 'muted' },
};

function checkRow(check: SetupCheck): TemplateResult {
  const status = statusSymbols[check.status];
  return html`<li class="check-row ${check.status}" data-field=${check.field}>
    ${icon(status.symbol, { label: status.label, className: `check-icon ${status.tone}` })}
    <div class="check-text">
      <div class="check-line">
        <span class="check-label">${check.label}</span>
        <span class="check-received"
          >${check.received === '' ? html`<span class="muted">Nothing received</span>` : check.received}</span
        >
      </div>
      ${check.hint ? html`<p class="check-hint">${check.hint}</p>` : nothing}
    </div>
  </li>`;
}

export function setupTestPanel(): TemplateResult {
  const result = setupTestQuery();
  const test = result.data;
  if (!test) return html`${errorNote(result.error)}${result.error ? nothing : loadingNote()}`;
  switch (test.state) {
    case 'idle':
      return html`<div class="setup-test state-idle">
        <p>Checks your automation with the next notification it sends to Ringwell.</p>
        <button type="button" class="button primary" @click=${() => void run(api.startSetupTest)}>Start Test</button>
      </div>`;
    case 'waiting':
      return html`<div class="setup-test state-waiting">
        <p class="waiting" role="status">
          <span class="spinner" aria-hidden="true"></span> Waiting for a notification…
        </p>
        <p>
          Get a notification from an app selected in your automation. The quickest is to post one yourself with the
          command below. The test uses that notification, so it won't ring.
        </p>
        ${copyableCommand(testNotificationCommand(appsToForwardQuery().data?.apps))}
        <p class="note">Nothing after a minute? Check that the automation is on and that the app is selected in it.</p>
        <button type="button" class="button" @click=${() => void run(api.cancelSetupTest)}>Cancel</button>
      </div>`;
    case 'received':
      return html`<div class="setup-test state-received">
        <p class="muted">Checked a notification from ${test.app || 'an app without a name'}</p>
        <p class="verdict-line ${test.allPassed ? 'good' : 'bad'}" role="status">
          ${
            test.allPassed
              ? html`${icon('checkmark.seal.fill', { className: 'good' })} Your automation is set up correctly.`
              : html`${icon('exclamationmark.triangle.fill', { className: 'bad' })} Some fields need fixing in your
                automation.`
          }
        </p>
        <ul class="check-rows" aria-label="Fields">
          ${test.checks.map(checkRow)}
        </ul>
        <button
          type="button"
          class="button ${test.allPassed ? '' : 'primary'}"
          @click=${() => void run(api.startSetupTest)}
        >
          ${test.allPassed ? 'Test Again' : 'Test Again After Fixing'}
        </button>
      </div>`;
  }
}

export function setupWarningNote(): TemplateResult | typeof nothing {
  const warning = settingsQuery().data?.setupWarning;
  if (!warning) return nothing;
  return html`<p class="warning-note" role="note">${icon('exclamationmark.triangle.fill')} ${warning}</p>`;
}

export function setupTestScreen(): TemplateResult {
  return html`${screenHeader({ title: 'Test Your Setup', back: { href: '/settings', label: 'Settings' } })}
    ${setupWarningNote()}
    <section class="group"><div class="group-body padded">${setupTestPanel()}</div></section>`;
}
