// The stacked bar chart of the statistics screen, drawn by Chart.js. It is
// loaded on first use so that the other screens start without it. The chart
// is created once per canvas and updated in place when the figures change.

import {
  BarController,
  BarElement,
  CategoryScale,
  Chart,
  Legend,
  LinearScale,
  Title,
  Tooltip,
  type ChartConfiguration,
} from 'chart.js';
import type { Stats } from '../api/types';
import { longDayOf, narrowWeekdayOf } from '../ui/format';

Chart.register(BarController, BarElement, CategoryScale, LinearScale, Legend, Title, Tooltip);

let chart: Chart<'bar'> | null = null;
let chartKey = '';
let lastStats: Stats | null = null;

function cssColour(name: string, fallback: string): string {
  const value = getComputedStyle(document.documentElement).getPropertyValue(name).trim();
  return value || fallback;
}

function chartConfig(stats: Stats): ChartConfiguration<'bar'> {
  const text = cssColour('--text-secondary', '#6b6b70');
  const grid = cssColour('--separator', '#d8d8dc');
  return {
    type: 'bar',
    data: {
      labels: stats.days.map((day) => narrowWeekdayOf(day.start)),
      datasets: [
        {
          label: 'Rang',
          data: stats.days.map((day) => day.rang),
          backgroundColor: cssColour('--accent', '#ff3b30'),
          borderRadius: 4,
          stack: 'result',
        },
        {
          label: 'Stayed quiet',
          data: stats.days.map((day) => day.received - day.rang),
          backgroundColor: cssColour('--quiet', '#8e8e93'),
          borderRadius: 4,
          stack: 'result',
        },
      ],
    },
    options: {
      responsive: true,
      maintainAspectRatio: false,
      animation: false,
      plugins: {
        legend: {
          position: 'top',
          align: 'end',
          title: { display: true, text: 'Result', color: text },
          labels: { color: text, boxWidth: 12, boxHeight: 12 },
        },
        tooltip: {
          callbacks: {
            title: (items) => {
              const day = stats.days[items[0]?.dataIndex ?? 0];
              return day ? longDayOf(day.start) : '';
            },
          },
        },
      },
      scales: {
        x: { stacked: true, ticks: { color: text }, grid: { display: false } },
        y: {
          stacked: true,
          beginAtZero: true,
          ticks: { color: text, precision: 0 },
          grid: { color: grid },
          title: { display: true, text: 'Notifications', color: text },
          suggestedMax: 4,
        },
      },
    },
  };
}

export function drawChart(canvas: HTMLCanvasElement, stats: Stats): void {
  lastStats = stats;
  const scheme = matchMedia('(prefers-color-scheme: dark)').matches ? 'dark' : 'light';
  const key = JSON.stringify(stats.days) + scheme;
  if (chart && chart.canvas === canvas) {
    if (key === chartKey) return;
    const config = chartConfig(stats);
    chart.data = config.data;
    chart.options = config.options ?? {};
    chart.update();
  } else {
    chart?.destroy();
    chart = new Chart(canvas, chartConfig(stats));
  }
  chartKey = key;
}

// The chart follows the colour scheme when it changes.
matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => {
  chartKey = '';
  if (chart && lastStats) drawChart(chart.canvas as HTMLCanvasElement, lastStats);
});
