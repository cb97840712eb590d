// "Automation Setup": the instructions of the onboarding at any time, with
// the apps that the channels name.

import { html, type TemplateResult } from 'lit-html';
import { appsToForwardQuery } from '../state/data';
import { icon } from '../ui/icons';
import {
  copyableCommand,
  errorNote,
  linkRow,
  loadingNote,
  numberedSteps,
  screenHeader,
  section,
  switchRow,
} from '../ui/widgets';
import { captureAppsCommand, sendCommand } from '../logic/shell';
import { captureSteps, mappingStep } from './automation';
import { setupWarningNote } from './setupTest';
import { lanDevicesSection } from './lanDevices';
import { watchesSection } from './watches';
import { bridgeRows, seenAppRows } from './captureSightings';
import { api } from '../api/client';
import { forget, query, requestRender } from '../state/store';

function captureSection(): TemplateResult {
  const result = query('capture', ['capture', 'minute'], api.capture);
  const capture = result.data;
  const change = async (enabled: boolean): Promise<void> => {
    try {
      await api.setCapture(enabled);
    } finally {
      forget('capture');
      requestRender();
    }
  };
  const state = !capture
    ? ''
    : !capture.enabled
      ? 'Off'
      : capture.active
        ? `On, ${capture.seen} seen since start${capture.server ? ` (${capture.server})` : ''}`
        : `On, not active: ${capture.problem}`;
  return section({
    id: 'capture',
    title: 'Capture this computer’s notifications',
    content: html`${errorNote(result.error)}
    ${
      capture
        ? switchRow({
            label: 'Capture this computer’s notifications',
            detail: state,
            checked: capture.enabled,
            onChange: (enabled) => void change(enabled),
          })
        : loadingNote()
    }
    ${capture ? html`${seenAppRows(capture)} ${bridgeRows(capture)}` : ''}`,
    footer: 'Ringwell reads the notifications shown on this desktop, and those a phone bridge mirrors.',
  });
}

function appsToSelect(apps: string[] | null | undefined, loading: boolean): TemplateResult {
  if (loading) return loadingNote();
  if (apps === null || apps === undefined)
    return html`<p class="row">A channel accepts any app. Select every app that might ring.</p>`;
  if (apps.length === 0) return html`<p class="row">No channel names an app yet.</p>`;
  return html`<ul class="app-rows">
    ${apps.map((app) => html`<li class="row">${icon('app.badge', { className: 'row-icon' })}<span class="row-label">${app}</span></li>`)}
  </ul>`;
}

export function setupGuideScreen(): TemplateResult {
  const result = appsToForwardQuery();
  const apps = result.data?.apps;
  return html`${screenHeader({
    title: 'Automation Setup',
    back: { href: '/settings', label: 'Settings' },
    subtitle: 'One automation forwards notifications. Your channels decide what rings.',
  })}
  ${setupWarningNote()} ${captureSection()} ${errorNote(result.error)}
  ${section({
    id: 'apps-to-select',
    title: 'Apps to select',
    content: appsToSelect(apps, !result.data && !result.error),
    footer: 'Only selected apps reach Ringwell.',
  })}
  ${watchesSection(apps)}
  ${section({
    id: 'ready-made',
    title: 'Ready-made automation',
    content: html`<div class="padded">
      ${numberedSteps(captureSteps)} ${copyableCommand(captureAppsCommand(apps))}
      <p class="note">Notifications from elsewhere: see the steps below.</p>
    </div>`,
  })}
  ${section({
    id: 'build-it-yourself',
    title: 'Build it yourself',
    content: html`<div class="padded">
      ${numberedSteps([
        'For notifications from elsewhere (a script, another machine), keep those of the apps above.',
        mappingStep,
      ])}
      ${copyableCommand(sendCommand)}
    </div>`,
    footer: 'Forwarded notifications appear in History and in each channel’s preview.',
  })}
  ${lanDevicesSection()}
  ${section({ content: linkRow('/settings/setup-test', 'Test your setup', { symbol: 'checkmark.seal' }) })}`;
}
