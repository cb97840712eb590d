// Text on a channel's colour: the alarm presentation is tinted with whatever
// colour the channel has, from dark blue to bright yellow, and its text must
// stay readable on every one of them.

function channel(value: number): number {
  const c = value / 255;
  return c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4;
}

// The relative luminance of "#RRGGBB" (WCAG 2), or undefined for other texts.
export function luminance(hex: string): number | undefined {
  const match = /^#([0-9a-f]{2})([0-9a-f]{2})([0-9a-f]{2})$/i.exec(hex.trim());
  if (!match) return undefined;
  const [r, g, b] = [match[1], match[2], match[3]].map((part) => channel(parseInt(part!, 16)));
  return 0.2126 * r! + 0.7152 * g! + 0.0722 * b!;
}

export function contrast(a: number, b: number): number {
  const [light, dark] = a > b ? [a, b] : [b, a];
  return (light + 0.05) / (dark + 0.05);
}

// White where it reads well enough on the colour (a contrast of 3:1, enough
// for the alarm's large, bold texts), else black.
export function readableTextOn(hex: string): '#000000' | '#ffffff' {
  const background = luminance(hex);
  if (background === undefined) return '#ffffff';
  return contrast(background, 1) >= 3 ? '#ffffff' : '#000000';
}
