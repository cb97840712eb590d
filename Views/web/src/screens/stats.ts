// "Stats": the last seven days from the daemon's statistics: the totals, the
// daily stacked bar chart ("Rang" and "Stayed quiet") and the top lists.

import { html, nothing, type TemplateResult } from 'lit-html';
import { ref } from 'lit-html/directives/ref.js';
import type { CountRow } from '../api/types';
import { statsQuery } from '../state/data';
import { longDayOf } from '../ui/format';
import { errorNote, loadingNote, row, screenHeader, section } from '../ui/widgets';

// The fixed capacity of the daemon's history, not the number of events.
const historyCapacity = 200;

function countRows(rows: CountRow[], empty: string): TemplateResult | TemplateResult[] {
  if (rows.length === 0) return html`<p class="row muted">${empty}</p>`;
  return rows.map((entry) => row(entry.name, String(entry.count)));
}

export function statsScreen(): TemplateResult {
  const result = statsQuery();
  const stats = result.data;
  const header = screenHeader({ title: 'Stats', back: { href: '/history', label: 'History' } });
  if (!stats) {
    return html`${header}${errorNote(result.error)}${result.error ? nothing : loadingNote()}`;
  }
  const attach = (element?: Element) => {
    if (element instanceof HTMLCanvasElement) {
      void import('./statsChart').then(({ drawChart }) => drawChart(element, stats));
    }
  };
  return html`${header}
  ${section({
    id: 'last-7-days',
    title: 'Last 7 days',
    content: html`<div class="tiles">
        <div class="tile">
          <span class="tile-value">${stats.received}</span>
          <span class="tile-label">Received</span>
        </div>
        <div class="tile">
          <span class="tile-value accent">${stats.rang}</span>
          <span class="tile-label">Rang</span>
        </div>
      </div>
      <figure class="chart">
        <div class="chart-box">
          <canvas role="img" aria-label="Notifications per day for the last 7 days" ${ref(attach)}></canvas>
        </div>
        <div class="visually-hidden">
          <table>
            <caption>
              Notifications per day for the last 7 days
            </caption>
            <thead>
              <tr>
                <th scope="col">Day</th>
                <th scope="col">Rang</th>
                <th scope="col">Stayed quiet</th>
              </tr>
            </thead>
            <tbody>
              ${stats.days.map(
                (day) =>
                  html`<tr>
                    <th scope="row">${longDayOf(day.start)}</th>
                    <td>${day.rang}</td>
                    <td>${day.received - day.rang}</td>
                  </tr>`,
              )}
            </tbody>
          </table>
        </div>
      </figure>`,
    footer: `Last ${historyCapacity} notifications, not counting tests.`,
  })}
  ${section({ id: 'top-apps', title: 'Top apps', content: countRows(stats.topApps, 'No notifications yet.') })}
  ${section({
    id: 'top-channels',
    title: 'Channels that rang',
    content: countRows(stats.topChannels, 'No channel has rung this week.'),
  })}
  ${section({ id: 'outcomes', title: 'Outcomes', content: countRows(stats.outcomes, 'Nothing to show yet.') })}`;
}
