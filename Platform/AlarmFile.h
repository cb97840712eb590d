#pragma once

#include "Core/JsonFwd.h"
#include "Shared/AlarmService.h"

#include <string>
#include <vector>

namespace ringwell {

// What the local alarm service keeps across restarts: the person's answer to
// the alarm permission and every alarm it holds, with its state and deadline
// in wall-clock time.
struct AlarmServiceState {
    AlarmAuthorizationState authorization = AlarmAuthorizationState::notDetermined;
    std::vector<Alarm> alarms;
    bool operator==(const AlarmServiceState&) const = default;
};

// {"authorization": "authorized", "alarms": [<Alarm>...]}, the alarms in
// their JSON form from Shared/AlarmService.h.
json::Json toJson(const AlarmServiceState& state);

// What an alarm file held, and a line for every part of it that had to be left
// out.
struct DecodedAlarmFile {
    AlarmServiceState state;
    std::vector<std::string> dropped;
};

// Decodes the permission and each alarm on its own, so that one bad entry
// costs only itself: an unknown or missing permission reads as
// `notDetermined`, and an alarm is left out when it does not decode, when it
// contradicts its state (a countdown or alerting alarm needs a fireDate, a
// paused one its remainingSeconds: the service would misbehave later) or when
// an earlier alarm has its id. Throws json::DecodeError only when the value is
// not an object at all.
DecodedAlarmFile alarmFileFromJson(const json::Json& value);

} // namespace ringwell
