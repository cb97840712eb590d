// The first-run cover: welcome (with the alarm permission), the automation,
// and the live setup test. "Finish" and "Skip" both store that onboarding is
// complete, which removes the cover for good; nothing else can close it.

import { html, nothing, type TemplateResult } from 'lit-html';
import { ref } from 'lit-html/directives/ref.js';
import { api } from '../api/client';
import { navigate } from '../router';
import { appsToForwardQuery, permissionsQuery, setupTestQuery } from '../state/data';
import { invalidate, requestRender } from '../state/store';
import { showToast } from '../ui/dialog';
import { icon } from '../ui/icons';
import { automationSections } from './automation';
import { allowAlarms } from './settings';
import { setupTestPanel } from './setupTest';
import { errorMessage } from '../logic/errors';

const steps = ['welcome', 'automation', 'test'] as const;
type Step = (typeof steps)[number];

let step: Step = 'welcome';
let focusStep = true;

function goTo(next: Step): void {
  step = next;
  focusStep = true;
  window.scrollTo(0, 0);
  requestRender();
}

async function finish(): Promise<void> {
  try {
    await api.completeOnboarding();
    invalidate('settings');
    navigate('/channels', { replace: true });
  } catch (error) {
    showToast(errorMessage(error));
  }
}

function welcome(): TemplateResult {
  const alarms = permissionsQuery().data?.alarms;
  const points: [string, string][] = [
    ['arrow.up.forward.app', 'Set up one automation that sends notifications from the apps you pick.'],
    [
      'line.3.horizontal.decrease.circle',
      'Channels decide what rings: an app, a person, a keyword, or a call that’s ringing right now.',
    ],
    ['bell', 'Matching notifications ring a real alarm, even when muted and in do-not-disturb.'],
  ];
  return html`<div class="hero">${icon('alarm.waves.left.and.right.fill', { className: 'hero-icon' })}</div>
    <h1 tabindex="-1" class="onboarding-title">Never miss the ones that matter</h1>
    <p class="lead">Turn notifications into alarms that ring through silence and do-not-disturb.</p>
    <ul class="points">
      ${points.map(([symbol, text]) => html`<li>${icon(symbol, { className: 'point-icon' })}<span>${text}</span></li>`)}
    </ul>
    <div class="onboarding-actions">
      ${
        alarms === 'notDetermined' || alarms === undefined
          ? html`<button type="button" class="button primary large" @click=${() => void allowAlarms()}>
              Allow Alarms
            </button>`
          : html`<p class="permission-state" role="status">
                ${
                  alarms === 'authorized'
                    ? html`${icon('checkmark.seal.fill', { className: 'good' })} Alarms allowed`
                    : html`${icon('exclamationmark.triangle.fill', { className: 'bad' })} Alarms denied. You can allow
                      them in Settings.`
                }
              </p>
              <button type="button" class="button primary large" @click=${() => goTo('automation')}>Continue</button>`
      }
    </div>`;
}

function automation(): TemplateResult {
  return html`<h1 tabindex="-1" class="onboarding-title">Connect your notifications</h1>
    <p class="lead">One automation, built once. About a minute.</p>
    ${automationSections(appsToForwardQuery().data?.apps)}
    <div class="onboarding-actions">
      <button type="button" class="button primary large" @click=${() => goTo('test')}>It's On. Test It</button>
    </div>`;
}

function test(): TemplateResult {
  const result = setupTestQuery().data;
  const passed = result?.state === 'received' && result.allPassed;
  return html`<h1 tabindex="-1" class="onboarding-title">Check your setup</h1>
    <p class="lead">Finish unlocks once every field passes. You can also skip and run the test later from Settings.</p>
    <section class="group"><div class="group-body padded">${setupTestPanel()}</div></section>
    <div class="onboarding-actions">
      ${passed ? html`<p class="all-set" role="status">${icon('checkmark.seal.fill', { className: 'good' })} You're all set.</p>` : nothing}
      <button type="button" class="button primary large" ?disabled=${!passed} @click=${() => void finish()}>
        Finish
      </button>
    </div>`;
}

export function onboardingCover(): TemplateResult {
  const index = steps.indexOf(step);
  const focusHeading = (element?: Element) => {
    if (element && focusStep) {
      focusStep = false;
      queueMicrotask(() => element.querySelector<HTMLElement>('h1')?.focus());
    }
  };
  return html`<div class="onboarding" role="dialog" aria-modal="true" aria-label="Welcome to Ringwell">
    <div class="onboarding-bar">
      ${
        index > 0
          ? html`<button
              type="button"
              class="toolbar-button with-label"
              @click=${() => goTo(steps[index - 1] ?? 'welcome')}
            >
              ${icon('chevron.left')}<span>Back</span>
            </button>`
          : html`<span></span>`
      }
      <span class="step-dots" aria-label=${`Step ${index + 1} of ${steps.length}`} role="img">
        ${steps.map((candidate) => html`<span class="dot ${candidate === step ? 'current' : ''}"></span>`)}
      </span>
      <button type="button" class="toolbar-button with-label" @click=${() => void finish()}><span>Skip</span></button>
    </div>
    <div class="onboarding-content" ${ref(focusHeading)}>
      ${step === 'welcome' ? welcome() : step === 'automation' ? automation() : test()}
    </div>
  </div>`;
}
