// The channel editor's escalation: the steps that run while the alarm rings
// unanswered (add, remove, reorder; action, delay, URL, headers, body). The
// steps being edited are kept here until the daemon accepts them, so a step
// it refuses (a webhook without its URL yet) stays on screen with the
// daemon's reason under it instead of vanishing with the refused save.

import { html, nothing, type TemplateResult } from 'lit-html';
import type { Channel, EscalationAction, EscalationStep } from '../api/types';
import { escalationProblems, type EscalationProblems } from '../logic/escalationProblems';
import { requestRender } from '../state/store';
import { section } from '../ui/widgets';

interface EditableStep {
  afterSeconds: number;
  action: EscalationAction;
  url: string;
  headers: [string, string][];
  body: string;
}

let editing: { channelId: string; steps: EditableStep[] | null; problems: EscalationProblems | null } = {
  channelId: '',
  steps: null,
  problems: null,
};

const actions: { value: EscalationAction; label: string }[] = [
  { value: 'louder', label: 'Louder' },
  { value: 'notice', label: 'Notice' },
  { value: 'webhook', label: 'Webhook' },
];

// A save that carried the steps on screen ends their editing; an older one
// (the steps changed again while it was on its way) does not.
export function escalationSaved(channelId: string, sent: EscalationStep[]): void {
  if (editing.channelId !== channelId) return;
  if (editing.steps && JSON.stringify(editing.steps.map(toStep)) !== JSON.stringify(sent)) return;
  editing = { channelId, steps: null, problems: null };
}

// Keeps the daemon's reasons when it refused the escalation; other refusals
// leave the steps as they are.
export function escalationRefused(channelId: string, message: string): void {
  const problems = escalationProblems(message);
  if (problems && editing.channelId === channelId) editing.problems = problems;
}

function editable(step: EscalationStep): EditableStep {
  return {
    afterSeconds: step.afterSeconds,
    action: step.action,
    url: step.url ?? '',
    headers: Object.entries(step.headers ?? {}),
    body: step.body ?? '',
  };
}

function toStep(step: EditableStep): EscalationStep {
  if (step.action !== 'webhook') return { afterSeconds: step.afterSeconds, action: step.action };
  const result: EscalationStep = {
    afterSeconds: step.afterSeconds,
    action: 'webhook',
    url: step.url,
    headers: Object.fromEntries(step.headers),
  };
  if (step.body.trim()) result.body = step.body;
  return result;
}

export function escalationSection(
  channel: Channel,
  save: (steps: EscalationStep[], delay: number) => void,
): TemplateResult {
  if (editing.channelId !== channel.id) editing = { channelId: channel.id, steps: null, problems: null };
  const steps = editing.steps ?? (channel.escalation ?? []).map(editable);
  const change = (next: EditableStep[], delay = 0) => {
    editing.steps = next;
    save(next.map(toStep), delay);
    requestRender();
  };
  const replace = (index: number, step: Partial<EditableStep>, delay = 0) =>
    change(
      steps.map((old, i) => (i === index ? { ...old, ...step } : old)),
      delay,
    );
  const move = (index: number, by: number) => {
    const next = [...steps];
    const [moved] = next.splice(index, 1);
    next.splice(index + by, 0, moved!);
    change(next);
  };
  const last = steps[steps.length - 1];
  const add = () =>
    change([
      ...steps,
      { afterSeconds: last ? last.afterSeconds + 60 : 60, action: 'notice', url: '', headers: [], body: '' },
    ]);
  const problems = editing.problems;
  return section({
    id: 'escalation',
    title: 'Escalation',
    content: html`${
        problems?.general
          ? html`<p class="row bad" role="alert" id="escalation-problem">${problems.general}</p>`
          : nothing
      }
      ${steps.map((step, index) => stepView(step, index, steps.length, problems?.byStep[index + 1], replace, move, change, steps))}
      <button type="button" class="row row-button" @click=${add}>
        <span class="row-label accent">Add Step</span>
      </button>`,
    footer: html`While the alarm rings unanswered, each step runs once at its time; Stop cancels the rest. A webhook's
    body and headers may use {{title}}, {{channel}}, {{time}} and {{stopLink}}; header values are kept secret and shown
    as ••••.`,
  });
}

function stepView(
  step: EditableStep,
  index: number,
  count: number,
  problem: string | undefined,
  replace: (index: number, step: Partial<EditableStep>, delay?: number) => void,
  move: (index: number, by: number) => void,
  change: (steps: EditableStep[], delay?: number) => void,
  steps: EditableStep[],
): TemplateResult {
  const n = index + 1;
  const id = `escalation-${n}`;
  const setHeader = (at: number, header: [string, string]) =>
    replace(index, { headers: step.headers.map((old, i) => (i === at ? header : old)) }, 600);
  return html`<div class="escalation-step" role="group" aria-label="Step ${n}" data-step=${n}>
    <div class="row wrap">
      <span class="row-label">Step ${n}</span>
      <label
        >After
        <input
          type="number"
          min="0"
          max="86400"
          class="number"
          aria-label="Step ${n} after seconds"
          .value=${String(step.afterSeconds)}
          @input=${(event: Event) =>
            replace(index, { afterSeconds: Number((event.target as HTMLInputElement).value) || 0 }, 600)}
        />
        s</label
      >
      <select
        id="${id}-action"
        class="select"
        aria-label="Step ${n} action"
        .value=${step.action}
        @change=${(event: Event) =>
          replace(index, { action: (event.target as HTMLSelectElement).value as EscalationAction })}
      >
        ${actions.map(
          (action) =>
            html`<option value=${action.value} ?selected=${action.value === step.action}>${action.label}</option>`,
        )}
      </select>
      <button
        type="button"
        class="icon-button"
        aria-label="Move step ${n} up"
        ?disabled=${index === 0}
        @click=${() => move(index, -1)}
      >
        ↑
      </button>
      <button
        type="button"
        class="icon-button"
        aria-label="Move step ${n} down"
        ?disabled=${index === count - 1}
        @click=${() => move(index, 1)}
      >
        ↓
      </button>
      <button
        type="button"
        class="icon-button destructive"
        aria-label="Remove step ${n}"
        @click=${() => change(steps.filter((_, i) => i !== index))}
      >
        ✕
      </button>
    </div>
    ${
      step.action === 'webhook'
        ? html`<div class="row wrap">
              <input
                type="url"
                class="text"
                placeholder="https://ntfy.example.org/topic"
                aria-label="Step ${n} URL"
                .value=${step.url}
                @input=${(event: Event) => replace(index, { url: (event.target as HTMLInputElement).value }, 600)}
              />
            </div>
            ${step.headers.map(
              ([name, value], at) =>
                html`<div class="row wrap">
                  <input
                    class="text"
                    placeholder="Header"
                    aria-label="Step ${n} header ${at + 1} name"
                    .value=${name}
                    @input=${(event: Event) => setHeader(at, [(event.target as HTMLInputElement).value, value])}
                  />
                  <input
                    class="text"
                    type="password"
                    placeholder="Value"
                    aria-label="Step ${n} header ${at + 1} value"
                    .value=${value}
                    @input=${(event: Event) => setHeader(at, [name, (event.target as HTMLInputElement).value])}
                  />
                  <button
                    type="button"
                    class="icon-button destructive"
                    aria-label="Remove step ${n} header ${at + 1}"
                    @click=${() => replace(index, { headers: step.headers.filter((_, i) => i !== at) })}
                  >
                    ✕
                  </button>
                </div>`,
            )}
            <button
              type="button"
              class="row row-button"
              @click=${() => replace(index, { headers: [...step.headers, ['', '']] }, 600)}
            >
              <span class="row-label accent">Add Header</span>
            </button>
            <div class="row wrap">
              <textarea
                class="text"
                rows="3"
                placeholder="Body (empty: the alarm's title, channel, time and stop link as JSON)"
                aria-label="Step ${n} body"
                .value=${step.body}
                @input=${(event: Event) => replace(index, { body: (event.target as HTMLTextAreaElement).value }, 600)}
              ></textarea>
            </div>`
        : nothing
    }
    ${problem ? html`<p class="row bad" role="alert" id="${id}-problem">${problem}</p>` : nothing}
  </div>`;
}
