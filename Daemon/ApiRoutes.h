#pragma once

#include "Daemon/ApiRoute.h"

#include <optional>
#include <string>

// The handlers of the local API's routes, by area. Each is named in one row of
// the table in RouteTable.cpp; docs/api.md documents what it answers.
namespace ringwell::routes {

// AlarmRoutes.cpp: forwarding, ringing, the alarms and their permission.
Awaitable<ApiResult> send(const RouteRequest&, ApiState&);
// The same Send, also taken by the LAN listener, which names the device.
Awaitable<ApiResult> sendFrom(const ApiRequest&, ApiState&, std::optional<std::string> device);
Awaitable<ApiResult> ring(const RouteRequest&, ApiState&);
ApiResult stopAll(const RouteRequest&, ApiState&);
ApiResult listAlarms(const RouteRequest&, ApiState&);
ApiResult stopAlarm(const RouteRequest&, ApiState&);
ApiResult pauseAlarm(const RouteRequest&, ApiState&);
ApiResult resumeAlarm(const RouteRequest&, ApiState&);
ApiResult snoozeAlarm(const RouteRequest&, ApiState&);
ApiResult permissions(const RouteRequest&, ApiState&);
ApiResult setAlarmPermission(const RouteRequest&, ApiState&);

// ChannelRoutes.cpp: the channels, their order, preview and test ring.
ApiResult listChannels(const RouteRequest&, ApiState&);
ApiResult getChannel(const RouteRequest&, ApiState&);
ApiResult addChannel(const RouteRequest&, ApiState&);
ApiResult updateChannel(const RouteRequest&, ApiState&);
ApiResult deleteChannel(const RouteRequest&, ApiState&);
ApiResult moveChannel(const RouteRequest&, ApiState&);
Awaitable<ApiResult> testChannel(const RouteRequest&, ApiState&);
ApiResult channelEntities(const RouteRequest&, ApiState&);
ApiResult preview(const RouteRequest&, ApiState&);

// AppRoutes.cpp: status, settings, live feed, history, figures, setup test.
ApiResult status(const RouteRequest&, ApiState&);
ApiResult stream(const RouteRequest&, ApiState&);
ApiResult settings(const RouteRequest&, ApiState&);
ApiResult updateSettings(const RouteRequest&, ApiState&);
ApiResult setting(const RouteRequest&, ApiState&);
ApiResult updateSetting(const RouteRequest&, ApiState&);
ApiResult testAlarmSound(const RouteRequest&, ApiState&);
ApiResult events(const RouteRequest&, ApiState&);
ApiResult clearEvents(const RouteRequest&, ApiState&);
ApiResult stats(const RouteRequest&, ApiState&);
ApiResult diagnostics(const RouteRequest&, ApiState&);
ApiResult diagnosticsEmail(const RouteRequest&, ApiState&);
ApiResult setupTest(const RouteRequest&, ApiState&);
ApiResult startSetupTest(const RouteRequest&, ApiState&);
ApiResult cancelSetupTest(const RouteRequest&, ApiState&);

// ReplayRoutes.cpp: why an event ended as it did, and a trace of the recent
// notifications through today's channels.
ApiResult why(const RouteRequest&, ApiState&);
ApiResult trace(const RouteRequest&, ApiState&);

// CaptureRoutes.cpp: the capture of the desktop's notifications.
ApiResult captureState(const RouteRequest&, ApiState&);
ApiResult updateCapture(const RouteRequest&, ApiState&);

// DeviceRoutes.cpp: the devices that may send over the LAN.
ApiResult listDevices(const RouteRequest&, ApiState&);
ApiResult addDevice(const RouteRequest&, ApiState&);
ApiResult removeDevice(const RouteRequest&, ApiState&);

// WatchRoutes.cpp: the watches on apps' and devices' forwarding.
ApiResult listWatches(const RouteRequest&, ApiState&);
ApiResult addWatch(const RouteRequest&, ApiState&);
ApiResult removeWatch(const RouteRequest&, ApiState&);

// EditorRoutes.cpp: what the channel and rule editors and the web app need
// beyond the records: templates, tones, limits, the app's configuration, rule
// descriptions, list badges and suggestions.
ApiResult config(const RouteRequest&, ApiState&);
ApiResult templates(const RouteRequest&, ApiState&);
ApiResult tones(const RouteRequest&, ApiState&);
ApiResult previewTone(const RouteRequest&, ApiState&);
ApiResult limits(const RouteRequest&, ApiState&);
ApiResult channelViews(const RouteRequest&, ApiState&);
ApiResult knownApps(const RouteRequest&, ApiState&);
ApiResult knownSenders(const RouteRequest&, ApiState&);
ApiResult appsToForward(const RouteRequest&, ApiState&);
ApiResult describeRule(const RouteRequest&, ApiState&);
ApiResult editRuleCondition(const RouteRequest&, ApiState&);

} // namespace ringwell::routes
