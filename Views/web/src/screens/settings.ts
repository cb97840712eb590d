// The Settings tab: the alarm permission, the alarms' sound, stopping every
// alarm, help and support, and the version.

import { html, nothing, type TemplateResult } from 'lit-html';
import { api } from '../api/client';
import type { AuthorizationState, Settings, SoundStatus } from '../api/types';
import { permissionsQuery, settingsQuery, statusQuery } from '../state/data';
import { invalidate } from '../state/store';
import { showToast } from '../ui/dialog';
import { icon } from '../ui/icons';
import { linkRow, row, screenHeader, section, selectRow, switchRow } from '../ui/widgets';
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
    case 'unreachable':
      return 'No notification server';
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

async function changeSound(change: Partial<Pick<Settings, 'ringThroughMute' | 'alarmVolume'>>): Promise<void> {
  try {
    await api.updateSoundSettings(change);
  } catch (error) {
    showToast(errorMessage(error));
  }
  invalidate('settings');
}

async function testAlarmVolume(): Promise<void> {
  try {
    const { sound } = await api.testAlarmSound();
    showToast(
      sound && !sound.reachable ? 'No sound: ' + (sound.problem || 'no audio server') : 'Playing the alarm tone…',
    );
  } catch (error) {
    showToast(errorMessage(error));
  }
  invalidate('settings');
}

export function soundLabel(sound: SoundStatus | undefined): string {
  if (!sound) return 'Unknown';
  if (sound.reachable) return sound.server || 'Audio server reachable';
  return 'No audio server';
}

// 10% to 100% in tens, with a value set elsewhere (the command line) kept.
function volumeChoices(current: number): { value: number; label: string }[] {
  const values = new Set([10, 20, 30, 40, 50, 60, 70, 80, 90, 100, current]);
  return [...values].sort((a, b) => a - b).map((value) => ({ value, label: `${value}%` }));
}

function soundSection(settings: Settings | undefined, sound: SoundStatus | undefined): TemplateResult {
  const ringThroughMute = settings?.ringThroughMute ?? true;
  const alarmVolume = settings?.alarmVolume ?? 70;
  return section({
    id: 'sound',
    title: 'Sound',
    content: html`${switchRow({
      label: 'Ring through mute',
      checked: ringThroughMute,
      onChange: (checked) => void changeSound({ ringThroughMute: checked }),
    })}
    ${selectRow({
      label: 'Alarm volume',
      id: 'alarm-volume',
      value: alarmVolume,
      choices: volumeChoices(alarmVolume),
      onChange: (value) => void changeSound({ alarmVolume: value }),
    })}
    ${actionRow('Test Alarm Volume', 'play.fill', () => void testAlarmVolume())}
    ${row('Audio', soundLabel(sound), { symbol: 'speaker.wave.2' })}`,
    footer:
      sound && !sound.reachable && sound.problem
        ? `${sound.problem}: alarms still alert on screen, without sound.`
        : 'While an alarm rings, its output is unmuted and faded up to the alarm volume (at most 50% on headphones), then put back as it was unless you changed it.',
  });
}

function actionRow(label: string, symbol: string, onClick: () => void, className = ''): TemplateResult {
  return html`<button type="button" class="row row-button ${className}" @click=${onClick}>
    ${icon(symbol, { className: 'row-icon' })}<span class="row-label">${label}</span>
  </button>`;
}

export function settingsScreen(): TemplateResult {
  const permissions = permissionsQuery().data;
  const settings = settingsQuery().data;
  const sound = statusQuery().data?.sound;
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
  ${soundSection(settings, sound)}
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
