// Ringwell's icons, keyed by the symbol names that the daemon's records carry
// (outcome icons, condition symbols, template images) and that the screens
// use. Each is a 24×24 line drawing in the current text colour; an unknown
// key draws a plain circle so a new symbol never breaks a screen.

import { html, svg, type SVGTemplateResult, type TemplateResult } from 'lit-html';

const shapes: Record<string, SVGTemplateResult> = {
  'alarm.waves.left.and.right': svg`<circle cx="12" cy="13" r="6"/><path d="M12 10v3l2 1.5M3.5 9a9 9 0 0 0 0 8M20.5 9a9 9 0 0 1 0 8M9 5.5h6"/>`,
  'alarm.waves.left.and.right.fill': svg`<circle cx="12" cy="13" r="6" fill="currentColor"/><path d="M12 10v3l2 1.5" stroke="var(--icon-cutout, #fff)"/><path d="M3.5 9a9 9 0 0 0 0 8M20.5 9a9 9 0 0 1 0 8M9 5.5h6"/>`,
  'clock.arrow.circlepath': svg`<path d="M4 12a8 8 0 1 0 2.3-5.6"/><path d="M4 4v4h4"/><path d="M12 8v4l3 2"/>`,
  gearshape: svg`<circle cx="12" cy="12" r="3"/><path d="M12 2.5v3M12 18.5v3M2.5 12h3M18.5 12h3M5.3 5.3l2.1 2.1M16.6 16.6l2.1 2.1M5.3 18.7l2.1-2.1M16.6 7.4l2.1-2.1"/><circle cx="12" cy="12" r="6.5"/>`,
  plus: svg`<path d="M12 5v14M5 12h14"/>`,
  checkmark: svg`<path d="M5 12.5l4.5 4.5L19 7.5"/>`,
  'line.3.horizontal.decrease.circle': svg`<circle cx="12" cy="12" r="9.5"/><path d="M7 9h10M8.5 12.5h7M10.5 16h3"/>`,
  'line.3.horizontal.decrease.circle.fill': svg`<circle cx="12" cy="12" r="9.5" fill="currentColor"/><path d="M7 9h10M8.5 12.5h7M10.5 16h3" stroke="var(--icon-cutout, #fff)"/>`,
  'line.3.horizontal.decrease': svg`<path d="M4 7h16M7 12h10M10 17h4"/>`,
  'chart.bar.xaxis': svg`<path d="M3 20h18M6 16v-5M11 16V6M16 16v-8"/>`,
  trash: svg`<path d="M4 7h16M9 7V4h6v3M6 7l1 13h10l1-13M10 11v6M14 11v6"/>`,
  'checkmark.seal.fill': svg`<path fill="currentColor" d="M12 2l2.4 1.8 3-.2.9 2.8 2.5 1.7-1 2.9 1 2.9-2.5 1.7-.9 2.8-3-.2L12 22l-2.4-1.8-3 .2-.9-2.8-2.5-1.7 1-2.9-1-2.9 2.5-1.7.9-2.8 3 .2z"/><path d="M8.5 12.2l2.4 2.4 4.6-4.8" stroke="var(--icon-cutout, #fff)"/>`,
  'checkmark.seal': svg`<path d="M12 2l2.4 1.8 3-.2.9 2.8 2.5 1.7-1 2.9 1 2.9-2.5 1.7-.9 2.8-3-.2L12 22l-2.4-1.8-3 .2-.9-2.8-2.5-1.7 1-2.9-1-2.9 2.5-1.7.9-2.8 3 .2z"/><path d="M8.5 12.2l2.4 2.4 4.6-4.8"/>`,
  'checkmark.circle.fill': svg`<circle cx="12" cy="12" r="9.5" fill="currentColor"/><path d="M8 12.3l2.7 2.7 5.3-5.5" stroke="var(--icon-cutout, #fff)"/>`,
  'xmark.circle.fill': svg`<circle cx="12" cy="12" r="9.5" fill="currentColor"/><path d="M9 9l6 6M15 9l-6 6" stroke="var(--icon-cutout, #fff)"/>`,
  'questionmark.circle': svg`<circle cx="12" cy="12" r="9.5"/><path d="M9.5 9.5a2.5 2.5 0 1 1 3.5 2.3c-.7.3-1 .9-1 1.6v.6"/><circle cx="12" cy="17" r=".6" fill="currentColor"/>`,
  'exclamationmark.triangle': svg`<path d="M12 3.5l9.5 16.5h-19z"/><path d="M12 10v4.5"/><circle cx="12" cy="17.2" r=".6" fill="currentColor"/>`,
  'exclamationmark.triangle.fill': svg`<path d="M12 3.5l9.5 16.5h-19z" fill="currentColor"/><path d="M12 10v4.5M12 17.2v.2" stroke="var(--icon-cutout, #fff)"/>`,
  'square.stack': svg`<rect x="4" y="8" width="13" height="12" rx="2"/><path d="M8 5h10a2 2 0 0 1 2 2v9"/>`,
  hourglass: svg`<path d="M6 3h12M6 21h12M7 3c0 5 5 6 5 9s-5 4-5 9M17 3c0 5-5 6-5 9s5 4 5 9"/>`,
  'bell.slash': svg`<path d="M6 16V11a6 6 0 0 1 9.5-4.9M18 11v5l1.5 2H8M10 20.5a2 2 0 0 0 4 0M3 3l18 18"/>`,
  'arrow.uturn.backward': svg`<path d="M9 14L4 9l5-5"/><path d="M4 9h10a6 6 0 0 1 0 12h-3"/>`,
  'app.badge': svg`<rect x="3.5" y="5.5" width="15" height="15" rx="4"/><circle cx="18.5" cy="5.5" r="3" fill="currentColor"/>`,
  person: svg`<circle cx="12" cy="8" r="4"/><path d="M4 21a8 8 0 0 1 16 0"/>`,
  'text.magnifyingglass': svg`<path d="M3 6h12M3 11h7M3 16h5"/><circle cx="16" cy="15" r="4"/><path d="M19 18l2.5 2.5"/>`,
  phone: svg`<path d="M5 3.5h3.5l2 5-2.5 1.5a11 11 0 0 0 6 6l1.5-2.5 5 2V19a2 2 0 0 1-2 2A17 17 0 0 1 3 5.5a2 2 0 0 1 2-2z"/>`,
  'phone.fill': svg`<path fill="currentColor" d="M5 3.5h3.5l2 5-2.5 1.5a11 11 0 0 0 6 6l1.5-2.5 5 2V19a2 2 0 0 1-2 2A17 17 0 0 1 3 5.5a2 2 0 0 1 2-2z"/>`,
  'phone.arrow.down.left': svg`<path d="M5 3.5h3.5l2 5-2.5 1.5a11 11 0 0 0 6 6l1.5-2.5 5 2V19a2 2 0 0 1-2 2A17 17 0 0 1 3 5.5a2 2 0 0 1 2-2z"/><path d="M21 3l-6 6M15 4.5V9h4.5"/>`,
  clock: svg`<circle cx="12" cy="12" r="9.5"/><path d="M12 7v5l3.5 2"/>`,
  repeat: svg`<path d="M17 2l3 3-3 3"/><path d="M4 11V9a4 4 0 0 1 4-4h12"/><path d="M7 22l-3-3 3-3"/><path d="M20 13v2a4 4 0 0 1-4 4H4"/>`,
  'stop.circle': svg`<circle cx="12" cy="12" r="9.5"/><rect x="8.5" y="8.5" width="7" height="7" rx="1" fill="currentColor"/>`,
  envelope: svg`<rect x="3" y="5" width="18" height="14" rx="2"/><path d="M3.5 6l8.5 7 8.5-7"/>`,
  'doc.text.magnifyingglass': svg`<path d="M14 3H6a2 2 0 0 0-2 2v14a2 2 0 0 0 2 2h5M14 3l5 5h-5zM19 8v3"/><path d="M8 9h3M8 13h2"/><circle cx="16" cy="16" r="3"/><path d="M18.2 18.2l2.3 2.3"/>`,
  'play.fill': svg`<path fill="currentColor" d="M7 4.5v15l12.5-7.5z"/>`,
  'pause.fill': svg`<rect x="6" y="4.5" width="4" height="15" rx="1" fill="currentColor"/><rect x="14" y="4.5" width="4" height="15" rx="1" fill="currentColor"/>`,
  zzz: svg`<path d="M4 8h6l-6 7h6M13 5h5l-5 6h5M15 15h4l-4 5h4"/>`,
  'chevron.right': svg`<path d="M9 5l7 7-7 7"/>`,
  'chevron.left': svg`<path d="M15 5l-7 7 7 7"/>`,
  'chevron.down': svg`<path d="M5 9l7 7 7-7"/>`,
  grip: svg`<path d="M5 8h14M5 12h14M5 16h14"/>`,
  'speaker.wave.2': svg`<path d="M4 9.5h3.5L12 5.5v13l-4.5-4H4z"/><path d="M15.5 9a4 4 0 0 1 0 6M18 6.5a7.5 7.5 0 0 1 0 11"/>`,
  'message.fill': svg`<path fill="currentColor" d="M12 4c5 0 9 3.2 9 7.2s-4 7.2-9 7.2c-1 0-2-.1-2.9-.4L4.5 20l1.2-3.6C4 15 3 13.2 3 11.2 3 7.2 7 4 12 4z"/>`,
  'exclamationmark.bubble.fill': svg`<path fill="currentColor" d="M12 3.5c5 0 9 3.2 9 7.2s-4 7.2-9 7.2c-1 0-2-.1-2.9-.4L4.5 19.5l1.2-3.6C4 14.5 3 12.7 3 10.7c0-4 4-7.2 9-7.2z"/><path d="M12 7v4.5M12 14v.2" stroke="var(--icon-cutout, #fff)"/>`,
  'door.left.hand.closed': svg`<path d="M5 21V4a1 1 0 0 1 1-1h10a1 1 0 0 1 1 1v17M3 21h18"/><circle cx="14" cy="12" r="1" fill="currentColor"/>`,
  'waveform.path.ecg': svg`<path d="M2 12h4l2-5 3 10 3-13 2.5 8H22"/>`,
  'moon.fill': svg`<path fill="currentColor" d="M20 14.5A8.5 8.5 0 1 1 9.5 4a7 7 0 0 0 10.5 10.5z"/>`,
  'list.bullet.rectangle': svg`<rect x="3" y="4" width="18" height="16" rx="2.5"/><path d="M10 9h7M10 12h7M10 15h7"/><circle cx="7" cy="9" r=".6" fill="currentColor"/><circle cx="7" cy="12" r=".6" fill="currentColor"/><circle cx="7" cy="15" r=".6" fill="currentColor"/>`,
  'arrow.up.forward.app': svg`<rect x="3.5" y="3.5" width="17" height="17" rx="4"/><path d="M9.5 14.5l5-5M10 9.5h4.5V14"/>`,
  'square.and.arrow.down': svg`<path d="M8 9H6a2 2 0 0 0-2 2v8a2 2 0 0 0 2 2h12a2 2 0 0 0 2-2v-8a2 2 0 0 0-2-2h-2M12 3v12M8 11l4 4 4-4"/>`,
  'plus.rectangle.on.rectangle': svg`<rect x="7" y="7" width="14" height="12" rx="2"/><path d="M4 15V6a2 2 0 0 1 2-2h10M14 10v6M11 13h6"/>`,
  'doc.on.doc': svg`<rect x="8" y="8" width="12" height="13" rx="2"/><path d="M16 8V5a2 2 0 0 0-2-2H6a2 2 0 0 0-2 2v11a2 2 0 0 0 2 2h2"/>`,
  bell: svg`<path d="M6 16v-5a6 6 0 0 1 12 0v5l1.5 2h-15zM10 20.5a2 2 0 0 0 4 0"/>`,
  'wifi.exclamationmark': svg`<path d="M2 8.5a15 15 0 0 1 20 0M5.5 12a10 10 0 0 1 13 0M12 14v4M12 20.5v.2"/>`,
};

export function icon(name: string, options: { label?: string; className?: string } = {}): TemplateResult {
  const shape = shapes[name] ?? svg`<circle cx="12" cy="12" r="8"/>`;
  const className = `icon ${options.className ?? ''}`.trim();
  if (options.label) {
    return html`<svg class=${className} viewBox="0 0 24 24" role="img" aria-label=${options.label}>${shape}</svg>`;
  }
  return html`<svg class=${className} viewBox="0 0 24 24" aria-hidden="true" focusable="false">${shape}</svg>`;
}
