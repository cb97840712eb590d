// The alarm's own presentation: while an alarm counts down, rings or is
// paused, a panel over every screen shows it with its title, what it is
// about and its buttons ("Stop", "Snooze", "Pause", "Resume"), which act
// through the daemon's alarm endpoints. A countdown ticks every second here;
// the daemon's change events bring every change of state.

import { html, nothing, type TemplateResult } from 'lit-html';
import { styleMap } from 'lit-html/directives/style-map.js';
import { api } from '../api/client';
import { toDate, type Alarm } from '../api/types';
import { alarmsQuery } from '../state/data';
import { invalidate, requestRender } from '../state/store';
import { showToast } from '../ui/dialog';
import { readableTextOn } from '../logic/colour';
import { clock, fullDate } from '../ui/format';
import { icon } from '../ui/icons';
import { errorMessage } from '../logic/errors';

let ticker: number | undefined;

function keepTicking(active: boolean): void {
  if (active && ticker === undefined) ticker = window.setInterval(requestRender, 1000);
  if (!active && ticker !== undefined) {
    window.clearInterval(ticker);
    ticker = undefined;
  }
}

async function act(alarm: Alarm, action: 'stop' | 'pause' | 'resume' | 'snooze'): Promise<void> {
  try {
    await api.alarmAction(alarm.id, action);
  } catch (error) {
    showToast(errorMessage(error));
  }
  invalidate('alarms');
}

async function stopAll(): Promise<void> {
  try {
    await api.stopAll();
  } catch (error) {
    showToast(errorMessage(error));
  }
  invalidate('alarms');
}

function secondsLeft(alarm: Alarm): number {
  if (alarm.state === 'paused') return alarm.remainingSeconds ?? 0;
  if (alarm.fireDate === undefined) return 0;
  return (toDate(alarm.fireDate).getTime() - Date.now()) / 1000;
}

function stateText(alarm: Alarm): string {
  switch (alarm.state) {
    case 'countdown':
      return 'Counting down';
    case 'paused':
      return 'Paused';
    case 'alerting':
      return 'Ringing';
  }
}

function alarmCard(alarm: Alarm): TemplateResult {
  const { presentation, metadata, tintHex } = alarm.configuration;
  const title =
    alarm.state === 'alerting'
      ? presentation.alert.title
      : alarm.state === 'paused'
        ? presentation.paused.title
        : presentation.countdown.title;
  const text = [metadata.title, metadata.subtitle, metadata.body].filter((part) => part !== '').join(' · ');
  const headingId = `alarm-${alarm.id}-title`;
  const stopButton = presentation.alert.stopButton;
  const snooze = presentation.alert.secondaryButton;
  const pause = presentation.countdown.pauseButton;
  const resume = presentation.paused.resumeButton;
  return html`<section
    class="alarm-card ${alarm.state}"
    role=${alarm.state === 'alerting' ? 'alertdialog' : 'region'}
    aria-labelledby=${headingId}
    id="alarm-${alarm.id}"
    data-alarm=${alarm.id}
    style=${styleMap({ '--tint': tintHex, '--on-tint': readableTextOn(tintHex) })}
  >
    <div class="alarm-head">
      ${icon('alarm.waves.left.and.right.fill', { className: 'alarm-icon' })}
      <span class="alarm-state">${stateText(alarm)}</span>
      <span class="alarm-channel">${metadata.channelName}${metadata.app ? html` · ${metadata.app}` : nothing}</span>
    </div>
    <h2 class="alarm-title" id=${headingId}>${title}</h2>
    ${text && alarm.state !== 'alerting' ? html`<p class="alarm-text">${text}</p>` : nothing}
    ${
      alarm.state === 'alerting'
        ? alarm.fireDate !== undefined
          ? html`<p class="alarm-clock" aria-label="Ringing since">Ringing since ${fullDate(alarm.fireDate)}</p>`
          : nothing
        : html`<p class="alarm-clock" role="timer" aria-label="Time left">${clock(secondsLeft(alarm))}</p>`
    }
    <div class="alarm-actions">
      ${
        alarm.state === 'alerting' && snooze
          ? html`<button type="button" class="alarm-button secondary" @click=${() => void act(alarm, 'snooze')}>
              ${icon(snooze.systemImageName)}<span>${snooze.text}</span>
            </button>`
          : nothing
      }
      ${
        alarm.state === 'countdown' && pause
          ? html`<button type="button" class="alarm-button secondary" @click=${() => void act(alarm, 'pause')}>
              ${icon(pause.systemImageName)}<span>${pause.text}</span>
            </button>`
          : nothing
      }
      ${
        alarm.state === 'paused' && resume
          ? html`<button type="button" class="alarm-button secondary" @click=${() => void act(alarm, 'resume')}>
              ${icon(resume.systemImageName)}<span>${resume.text}</span>
            </button>`
          : nothing
      }
      <button type="button" class="alarm-button stop" @click=${() => void act(alarm, 'stop')}>
        ${icon(stopButton?.systemImageName ?? 'stop.circle')}<span>${stopButton?.text ?? 'Stop'}</span>
      </button>
    </div>
  </section>`;
}

export function alarmPanel(): TemplateResult | typeof nothing {
  const alarms = alarmsQuery().data ?? [];
  // A countdown that has run out turns into a ringing alarm; the daemon says
  // so, but ticking on keeps the clock honest until it does.
  keepTicking(alarms.some((alarm) => alarm.state === 'countdown'));
  if (alarms.length === 0) return nothing;
  const ringing = alarms.some((alarm) => alarm.state === 'alerting');
  return html`<div class="alarm-layer ${ringing ? 'ringing' : ''}">
    <div class="alarm-stack" aria-label="Alarms" role="group">
      ${alarms.map(alarmCard)}
      ${
        alarms.length > 1
          ? html`<button type="button" class="alarm-button stop-all" @click=${() => void stopAll()}>
              ${icon('stop.circle')}<span>Stop All Alarms</span>
            </button>`
          : nothing
      }
    </div>
  </div>`;
}
