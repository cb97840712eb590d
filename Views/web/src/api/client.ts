// The typed client of the daemon's API. Every call goes to the same origin,
// so the browser sends the `ringwell_token` cookie that the daemon set when the
// app was opened with its token; the daemon checks Origin on every change.

import type {
  Alarm,
  CaptureState,
  LanDevices,
  NewLanDevice,
  NewWatch,
  Watch,
  Watches,
  AppConfig,
  Channel,
  ChannelRule,
  ChannelView,
  DaemonStatus,
  FireEvent,
  Permissions,
  Preview,
  RuleConditionId,
  RuleDescription,
  RuleTemplate,
  Settings,
  SoundStatus,
  SetupTestState,
  Stats,
  Tone,
  WhyExplanation,
} from './types';

export class ApiError extends Error {
  constructor(
    readonly status: number,
    message: string,
  ) {
    super(message);
    this.name = 'ApiError';
  }
}

// Called once when the daemon answers 401: the cookie is missing or stale and
// only the address that `ringwell open` prints can fix it.
let onUnauthorized: () => void = () => {};
export function setUnauthorizedHandler(handler: () => void): void {
  onUnauthorized = handler;
}

async function request<T>(method: string, path: string, body?: unknown): Promise<T> {
  const init: RequestInit = { method, headers: { Accept: 'application/json' } };
  if (body !== undefined) {
    init.body = JSON.stringify(body);
    init.headers = { ...init.headers, 'Content-Type': 'application/json' };
  }
  let response: Response;
  try {
    response = await fetch(path, init);
  } catch {
    throw new ApiError(0, "Ringwell isn't running. Start it with `ringwell serve`.");
  }
  if (response.status === 401) onUnauthorized();
  if (!response.ok) {
    let message = `${response.status} ${response.statusText}`;
    try {
      const answer = (await response.json()) as { error?: string };
      if (answer.error) message = answer.error;
    } catch {
      // The body was not JSON; the status line says enough.
    }
    throw new ApiError(response.status, message);
  }
  if (response.status === 204) return undefined as T;
  return (await response.json()) as T;
}

const get = <T>(path: string) => request<T>('GET', path);
const post = <T>(path: string, body?: unknown) => request<T>('POST', path, body ?? {});
const put = <T>(path: string, body: unknown) => request<T>('PUT', path, body);
const del = (path: string) => request<void>('DELETE', path);
const id = encodeURIComponent;

export const api = {
  settings: () => get<Settings>('/v1/settings'),
  status: () => get<DaemonStatus>('/v1/status'),
  completeOnboarding: () => put<Settings>('/v1/settings', { hasCompletedOnboarding: true }),
  updateSoundSettings: (change: Partial<Pick<Settings, 'ringThroughMute' | 'alarmVolume'>>) =>
    put<Settings>('/v1/settings', change),
  testAlarmSound: () => post<{ playing: boolean; sound: SoundStatus | null }>('/v1/sound-test'),

  permissions: () => get<Permissions>('/v1/permissions'),
  answerAlarmPermission: (state: 'authorized' | 'denied') => put<Permissions>('/v1/permissions/alarms', { state }),

  channels: () => get<Channel[]>('/v1/channels'),
  channelViews: () => get<ChannelView[]>('/v1/channel-views'),
  channel: (channelId: string) => get<Channel>(`/v1/channels/${id(channelId)}`),
  addChannel: (body: { template?: string; rule?: Partial<ChannelRule>; likeEvent?: string; name?: string }) =>
    post<Channel>('/v1/channels', body),
  updateChannel: (channel: Channel) => put<Channel>(`/v1/channels/${id(channel.id)}`, channel),
  deleteChannel: (channelId: string) => del(`/v1/channels/${id(channelId)}`),
  moveChannel: (channelId: string, position: number) =>
    post<Channel[]>(`/v1/channels/${id(channelId)}/move`, { position }),
  testChannel: (channelId: string) => post<FireEvent>(`/v1/channels/${id(channelId)}/test`),
  preview: (channelId: string, at?: string) =>
    get<Preview>(`/v1/preview?channel=${id(channelId)}${at ? `&at=${id(at)}` : ''}`),

  templates: () => get<RuleTemplate[]>('/v1/templates'),
  describeRule: (rule: ChannelRule) => post<RuleDescription>('/v1/rules/describe', { rule }),
  changeCondition: (rule: ChannelRule, condition: RuleConditionId, action: 'seed' | 'clear') =>
    post<{ rule: ChannelRule }>('/v1/rules/condition', { rule, condition, action }),

  knownApps: () => get<string[]>('/v1/known-apps'),
  knownSenders: (apps: string[]) => get<string[]>(`/v1/known-senders?${apps.map((app) => `app=${id(app)}`).join('&')}`),
  appsToForward: () => get<{ apps: string[] | null }>('/v1/apps-to-forward'),

  tones: () => get<Tone[]>('/v1/tones'),
  previewTone: (toneId: string) => post<void>(`/v1/tones/${id(toneId)}/preview`),
  config: () => get<AppConfig>('/v1/config'),

  events: () => get<FireEvent[]>('/v1/events'),
  clearEvents: () => del('/v1/events'),
  why: (eventId: string) => get<WhyExplanation>(`/v1/events/${id(eventId)}/why`),
  stats: () => get<Stats>('/v1/stats'),

  alarms: () => get<Alarm[]>('/v1/alarms'),
  alarmAction: (alarmId: string, action: 'stop' | 'pause' | 'resume' | 'snooze') =>
    request<void>('POST', `/v1/alarms/${id(alarmId)}/${action}`),
  stopAll: () => post<void>('/v1/stop-all'),

  setupTest: () => get<SetupTestState>('/v1/setup-test'),
  startSetupTest: () => post<SetupTestState>('/v1/setup-test/start'),
  cancelSetupTest: () => post<SetupTestState>('/v1/setup-test/cancel'),

  capture: () => get<CaptureState>('/v1/capture'),
  setCapture: (enabled: boolean) => put<CaptureState>('/v1/capture', { enabled }),
  devices: () => get<LanDevices>('/v1/devices'),
  addDevice: (name: string) => post<NewLanDevice>('/v1/devices', { name }),
  removeDevice: (name: string) => del(`/v1/devices/${id(name)}`),
  watches: () => get<Watches>('/v1/watches'),
  addWatch: (watch: NewWatch) => post<Watch>('/v1/watches', watch),
  removeWatch: (app: string) => del(`/v1/watches/${id(app)}`),

  emailSupport: () => get<{ url: string }>('/v1/diagnostics/email'),
  diagnosticsDownloadPath: '/v1/diagnostics?download=1',
};
