#pragma once

#include "Core/JsonFwd.h"
#include "Shared/AlarmService.h"

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

// Both keys are required. Besides the alarms' own form, every alarm must be
// consistent with its state (a countdown or alerting alarm has a fireDate, a
// paused one its remainingSeconds) and ids must be unique: a file that breaks
// that would make the service misbehave later, so it fails here instead.
// Throws json::DecodeError.
AlarmServiceState alarmServiceStateFromJson(const json::Json& value);

} // namespace ringwell
