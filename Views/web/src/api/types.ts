// The JSON forms of the daemon's records, as docs/api.md describes them.
// Dates inside records are seconds since 2001-01-01T00:00:00Z (see `toDate`).

export type CallFilter = 'any' | 'incoming' | 'missed';

export interface ActiveHours {
  weekdays: number[]; // 1 = Sunday … 7 = Saturday
  startMinute: number;
  endMinute: number;
}

export interface FrequencyCondition {
  count: number;
  windowSeconds: number;
}

export interface ChannelRule {
  apps: string[];
  senders: string[];
  keywords: string[];
  usesRegex: boolean;
  calls: CallFilter;
  cooldownSeconds: number;
  activeHours?: ActiveHours;
  frequency?: FrequencyCondition;
}

export type FiringMode = 'immediate' | 'countdown';

export interface Channel {
  id: string;
  name: string;
  usesAutomaticName: boolean;
  tintHex: string;
  isEnabled: boolean;
  mode: FiringMode;
  countdownSeconds: number;
  snoozeEnabled: boolean;
  snoozeSeconds: number;
  showNotificationText: boolean;
  repeatEnabled: boolean;
  repeatIntervalSeconds: number;
  repeatCount: number;
  sound: string;
  reminderSound?: string;
  rule: ChannelRule;
  createdAt: number;
  escalation?: EscalationStep[];
}

export type EscalationAction = 'louder' | 'webhook' | 'notice';

// One step of a channel's escalation; header values come back as "••••".
export interface EscalationStep {
  afterSeconds: number;
  action: EscalationAction;
  url?: string;
  headers?: Record<string, string>;
  body?: string;
}

// What one step did, recorded on the alarm's event.
export interface EscalationRecord {
  step: number;
  action: EscalationAction;
  at: number;
  ok: boolean;
  detail: string;
}

export interface ChannelView {
  channel: Channel;
  modeBadge: string;
  ruleSummary: string;
  connection: { count: number; lastTriggered?: number; label: string };
}

export type FireOutcome =
  'fired' | 'coalesced' | 'cooledDown' | 'skipped' | 'noMatch' | 'failed' | 'setupTest' | 'ignored' | 'silent';

export interface ReceivedField {
  name: string;
  value: string;
}

export interface FireEvent {
  id: string;
  channelID?: string;
  channelName?: string;
  alarmID?: string;
  followUpAlarmIDs?: string[];
  app?: string;
  sender?: string;
  title?: string;
  subtitle?: string;
  body?: string;
  isTimeSensitive?: boolean;
  received?: ReceivedField[];
  receivedAt: number;
  firedAt: number;
  outcome: FireOutcome;
  errorMessage?: string;
  isTest: boolean;
  // The routing ran out of time: patterns left unchecked counted as not matching.
  routingCutShort?: boolean;
  escalations?: EscalationRecord[];
  label: string;
  icon: string;
}

export interface NotificationInfo {
  app: string;
  sender: string;
  title: string;
  subtitle: string;
  body: string;
  date: number;
  isTimeSensitive: boolean;
  received?: ReceivedField[];
}

export type RuleConditionId = 'app' | 'sender' | 'keywords' | 'calls' | 'hours' | 'repeated' | 'cooldown';

export interface AvailableCondition {
  id: RuleConditionId;
  title: string;
  symbolName: string;
  isList: boolean;
  isSet: boolean;
}

export interface RuleDescription {
  summary: string;
  suggestedName: string;
  invalidPatterns: string[];
  available: AvailableCondition[];
}

export interface RuleTemplate {
  id: string;
  title: string;
  subtitle: string;
  systemImage: string;
  rule: ChannelRule;
  blank?: 'sender' | 'app';
}

export interface RuleCheck {
  condition: string;
  passed: boolean;
  detail: string;
}

export type PreviewVerdictKind = 'shadowed' | 'rings' | 'cooledDown' | 'disabled' | 'noMatch';

export interface PreviewEntry {
  id: number;
  notification: NotificationInfo;
  verdict: { kind: PreviewVerdictKind; by?: string; byName?: string };
  matchesRule: boolean;
  checks: RuleCheck[];
}

export interface Preview {
  channelID: string;
  channelName: string;
  ringCount: number;
  entries: PreviewEntry[];
}

export type WhyRole = 'wins' | 'disabledMatch' | 'noMatch' | 'notReached';

// Why one event ended as it did, replayed through today's channels.
export interface WhyExplanation {
  eventID: string;
  outcome: string;
  channels: { id: string; name: string; isEnabled: boolean; role: WhyRole; matches: boolean; checks: RuleCheck[] }[];
  winner?: string;
  step: { kind: string; text: string; earlierEventID?: string; earlierDate?: number };
  difference?: string;
  changedChannel?: string;
  // The replay ran out of its matching budget.
  cutShort?: boolean;
}

export interface CountRow {
  name: string;
  count: number;
}

export interface Stats {
  received: number;
  rang: number;
  days: { start: number; received: number; rang: number }[];
  topApps: CountRow[];
  topChannels: CountRow[];
  outcomes: CountRow[];
}

export type AuthorizationState = 'notDetermined' | 'denied' | 'authorized';

export interface Permissions {
  alarms: AuthorizationState;
  notifications: string;
}

export interface Settings {
  hasCompletedOnboarding: boolean;
  lastSetupTestResult: string | null;
  setupWarning: string | null;
  appVersion: string;
  // While an alarm rings, unmute its output and raise it to `alarmVolume`.
  ringThroughMute: boolean;
  // Percent, 10 to 100.
  alarmVolume: number;
}

// Whether alarms can be heard, and if not why.
export interface SoundStatus {
  reachable: boolean;
  server: string;
  problem: string;
}

export type SetupCheckStatus = 'passed' | 'failed' | 'unverifiable';

export interface SetupCheck {
  field: string;
  label: string;
  status: SetupCheckStatus;
  received: string;
  hint?: string;
}

export type SetupTestState =
  | { state: 'idle' }
  | { state: 'waiting'; startedAt: number }
  | {
      state: 'received';
      startedAt: number;
      app: string;
      allPassed: boolean;
      checks: SetupCheck[];
    };

export interface AlarmButton {
  text: string;
  textColor: string;
  systemImageName: string;
}

export type AlarmState = 'countdown' | 'alerting' | 'paused';

export interface Alarm {
  id: string;
  state: AlarmState;
  fireDate?: number;
  remainingSeconds?: number;
  configuration: {
    countdownDuration: { preAlert?: number; postAlert?: number };
    presentation: {
      alert: {
        title: string;
        stopButton?: AlarmButton;
        secondaryButton?: AlarmButton;
        secondaryButtonBehavior?: 'countdown' | 'custom';
      };
      countdown: { title: string; pauseButton?: AlarmButton };
      paused: { title: string; resumeButton?: AlarmButton };
    };
    metadata: {
      channelID: string;
      channelName: string;
      app: string;
      title: string;
      subtitle: string;
      body: string;
    };
    tintHex: string;
    stopIntent: { alarmID: string; followUpIDs: string[] };
    sound: { named?: string };
  };
}

export interface Tone {
  id: string;
  label: string;
  fileName?: string;
}

export interface Limits {
  nameLimit: number;
  countdownRange: [number, number];
  snoozeRange: [number, number];
  countdownPresets: number[];
  snoozePresets: number[];
  cooldownPresets: number[];
  frequencyWindowPresets: number[];
  frequencyCountRange: [number, number];
}

// GET /v1/status, the part the web app shows.
export interface DaemonStatus {
  // "Ringwell can't save its history: …", or null while saves succeed.
  saveProblem: string | null;
  sound?: SoundStatus;
}

// GET /v1/capture: the capture of this computer's notifications.
export interface CaptureState {
  enabled: boolean;
  active: boolean;
  server: string;
  serverVersion: string;
  seen: number;
  forwarded: number;
  apps: string[] | null;
  // Since the daemon started, most recent first; times in reference seconds.
  seenApps: { name: string; count: number; lastSeen: number }[];
  bridges: { kind: string; device: string; lastSeen: number }[];
  problem: string;
}

// GET /v1/devices: the phones that send over the network.
export interface LanDevices {
  listening: boolean;
  url: string;
  tls: boolean;
  problem: string;
  devices: { name: string; addedAt: number }[];
}

// GET /v1/watches: the watches that an app's notifications keep arriving.
export interface Watch {
  app: string;
  everySeconds: number;
  hours?: ActiveHours;
  since: number;
  ring?: string;
  summary: string;
  lastHeard?: number;
  dueAt?: number;
  isSilent: boolean;
  silentSince?: number;
}

export interface Watches {
  watches: Watch[];
  captureSilentSince?: number;
}

// POST /v1/watches
export interface NewWatch {
  app: string;
  everySeconds: number;
  hours?: ActiveHours;
}

// POST /v1/devices: a device just added; its token is shown this once.
export interface NewLanDevice {
  name: string;
  token: string;
  url: string;
  problem: string;
}

export interface PaletteColour {
  hex: string;
  name: string;
}

// GET /v1/config: the palette and every limit, asked for once.
export interface AppConfig extends Limits {
  palette: PaletteColour[];
}

// What one server-sent `change` event names; the client refetches it.
export type Topic =
  | 'channels'
  | 'events'
  | 'setupWarning'
  | 'saveError'
  | 'alarms'
  | 'authorization'
  | 'setupTest'
  | 'settings'
  | 'capture';

export const allTopics: readonly Topic[] = [
  'channels',
  'events',
  'setupWarning',
  'saveError',
  'alarms',
  'authorization',
  'setupTest',
  'settings',
  'capture',
];

// Seconds between 1970-01-01 and 2001-01-01, the daemon's reference date.
const referenceOffsetSeconds = 978_307_200;

export function toDate(seconds: number): Date {
  return new Date((seconds + referenceOffsetSeconds) * 1000);
}
