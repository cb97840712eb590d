// The Settings tab: the alarm permission, stopping every alarm, help and
// support, and the version.

import { html, nothing, type TemplateResult } from 'lit-html';
import { api } from '../api/client';
import type { AuthorizationState } from '../api/types';
import { permissionsQuery, settingsQuery } from '../state/data';
import { invalidate } from '../state/store';
import { showToast } from '../ui/dialog';
import { icon } from '../ui/icons';
import { linkRow, row, screenHeader, section } from '../ui/widgets';
import { errorMessage } from '../logic/errors';

export function alarmPermissionLabel(state: AuthorizationState | string | undefined): string {
  switch (state) {
    case 'notDetermined':
      return 'Not requested';
    case 'denied':
      return 'Denied';
    case 'authorized':
      return 'Allowed';
    default:
      return 'Unknown';
  }
}

function noticesLabel(status: string | undefined): string {
  switch (status) {
    case 'allowed':
      return 'Allowed';
    case 'denied':
      return 'Unavailable';
    case 'notDetermined':
      return 'Not requested';
    default:
      return 'Unknown';
  }
}

export async function allowAlarms(state: 'authorized' | 'denied' = 'authorized'): Promise<void> {
  try {
    await api.answerAlarmPermission(state);
  } catch (error) {
    showToast(errorMessage(error));
  }
  invalidate('authorization');
}

async function stopAll(): Promise<void> {
  try {
    await api.stopAll();
    invalidate('alarms');
    showToast('All Ringwell alarms stopped.');
  } catch (error) {
    showToast(errorMessage(error));
  }
}

async function emailSupport(): Promise<void> {
  try {
    const { url } = await api.emailSupport();
    window.location.href = url;
  } catch (error) {
    showToast(errorMessage(error));
  }
}

function actionRow(label: string, symbol: string, onClick: () => void, className = ''): TemplateResult {
  return html`<button type="button" class="row row-button ${className}" @click=${onClick}>
    ${icon(symbol, { className: 'row-icon' })}<span class="row-label">${label}</span>
  </button>`;
}

export function settingsScreen(): TemplateResult {
  const permissions = permissionsQuery().data;
  const settings = settingsQuery().data;
  const alarms = permissions?.alarms;
  return html`${screenHeader({ title: 'Settings' })}
  ${section({
    id: 'permissions',
    title: 'Permissions',
    content: html`${row('Alarms', alarmPermissionLabel(alarms), { symbol: 'alarm.waves.left.and.right' })}
    ${
      alarms && alarms !== 'authorized'
        ? html`<button type="button" class="row row-button accent" @click=${() => void allowAlarms()}>
            <span class="row-label accent">Allow Alarms</span>
          </button>`
        : nothing
    }
    ${
      alarms === 'authorized'
        ? html`<button type="button" class="row row-button" @click=${() => void allowAlarms('denied')}>
            <span class="row-label muted">Turn Off Alarms</span>
          </button>`
        : nothing
    }
    ${row('Desktop notices', noticesLabel(permissions?.notifications), { symbol: 'bell' })}`,
    footer: 'Without alarms allowed, matching notifications fail and Ringwell posts a notice instead.',
  })}
  ${section({ content: actionRow('Stop All Alarms', 'stop.circle', () => void stopAll(), 'destructive') })}
  ${section({
    id: 'help',
    title: 'Help',
    content: html`${linkRow('/settings/setup', 'Automation Setup', { symbol: 'arrow.up.forward.app' })}
      ${actionRow('Email Support', 'envelope', () => void emailSupport())}
      <a class="row row-button" href=${api.diagnosticsDownloadPath} download="Ringwell Diagnostics.txt" data-external>
        ${icon('doc.text.magnifyingglass', { className: 'row-icon' })}<span class="row-label">Share Diagnostics</span>
      </a>`,
    footer: 'No channel names, people, keywords or notification text.',
  })}
  ${section({
    id: 'about',
    title: 'About',
    content: row('Version', settings?.appVersion ?? ''),
  })}`;
}
