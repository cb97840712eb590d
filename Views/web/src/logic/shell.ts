// The commands the app shows for copying into a terminal. Names come from
// notifications and channels, so they are quoted for the shell.

// One word for sh: plain when it is only safe characters, else in single
// quotes, with each single quote written as '\''.
export function shellQuote(word: string): string {
  if (/^[A-Za-z0-9_.+:@%/-]+$/.test(word)) return word;
  return `'${word.replace(/'/g, `'\\''`)}'`;
}

// A desktop notification to test the setup with. When the channels name
// apps, the automation forwards only those, so the test borrows the first.
export function testNotificationCommand(apps: readonly string[] | null | undefined): string {
  const app = apps?.map((name) => name.trim()).find((name) => name !== '');
  const appOption = app ? ` --app-name=${shellQuote(app)}` : '';
  return `notify-send${appOption} "Ringwell test" "It works"`;
}

// Limits the daemon's capture to these apps (every app when none).
export function captureAppsCommand(apps: readonly string[] | null | undefined): string {
  if (!apps || apps.length === 0) return 'ringwell capture apps --all';
  return ['ringwell', 'capture', 'apps', ...apps.map(shellQuote)].join(' ');
}

// How a hand-made automation hands one notification to Ringwell.
export const sendCommand =
  'ringwell send --app "$APP" --title "$TITLE" --body "$BODY" --notification "$TITLE\n$BODY" --time-sensitive no';
