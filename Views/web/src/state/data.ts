// The queries the screens share, each with the change topics it depends on.

import { api } from '../api/client';
import { query } from './store';

export const settingsQuery = () => query('settings', ['settings', 'setupWarning', 'setupTest'], api.settings);
// The sound line changes with a test of the alarm volume, which counts as a settings change.
export const statusQuery = () => query('status', ['saveError', 'settings'], api.status);
export const permissionsQuery = () => query('permissions', ['authorization'], api.permissions);
export const channelViewsQuery = () => query('channel-views', ['channels', 'events'], api.channelViews);
export const channelsQuery = () => query('channels', ['channels'], api.channels);
export const eventsQuery = () => query('events', ['events'], api.events);
export const alarmsQuery = () => query('alarms', ['alarms'], api.alarms);
export const setupTestQuery = () => query('setup-test', ['setupTest'], api.setupTest);
export const statsQuery = () => query('stats', ['events', 'day'], api.stats);
export const knownAppsQuery = () => query('known-apps', ['events'], api.knownApps);
export const appsToForwardQuery = () => query('apps-to-forward', ['channels'], api.appsToForward);
export const templatesQuery = () => query('templates', [], api.templates);
export const tonesQuery = () => query('tones', [], api.tones);
export const configQuery = () => query('config', [], api.config);

export const knownSendersQuery = (apps: string[]) =>
  query(`known-senders:${JSON.stringify(apps)}`, ['events'], () => api.knownSenders(apps));
export const previewQuery = (channelId: string, at?: string) =>
  query(`preview:${channelId}:${at ?? ''}`, ['channels', 'events'], () => api.preview(channelId, at));
export const whyQuery = (eventId: string) => query(`why:${eventId}`, ['channels', 'events'], () => api.why(eventId));
