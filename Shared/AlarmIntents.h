#pragma once

#include "Core/JsonFwd.h"
#include "Core/Uuid.h"

#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

class AlarmService;

// The alarm's own buttons. They run wherever the alarm is presented (the web
// app, a desktop notification, `ringwell alarm ...`), outside the app's logic,
// and talk to the alarm service directly. Identities are kept as their
// canonical strings; strings that do not parse are skipped.

// "Stop Alarm": cancels the follow-ups (errors ignored), then stops the alarm.
// An error of that stop (AlarmServiceError) reaches the caller.
struct StopRingwellAlarmIntent {
    static constexpr std::string_view title = "Stop Alarm";
    std::string alarmID;
    std::vector<std::string> followUpIDs;

    static StopRingwellAlarmIntent make(const Uuid& alarm, const std::vector<Uuid>& followUps);
    void perform(AlarmService& service) const;

    bool operator==(const StopRingwellAlarmIntent&) const = default;
};

// "Pause Alarm": pauses a counting-down alarm.
struct PauseRingwellAlarmIntent {
    static constexpr std::string_view title = "Pause Alarm";
    std::string alarmID;
    void perform(AlarmService& service) const;
};

// "Resume Alarm": resumes a paused alarm.
struct ResumeRingwellAlarmIntent {
    static constexpr std::string_view title = "Resume Alarm";
    std::string alarmID;
    void perform(AlarmService& service) const;
};

// {"alarmID": "...", "followUpIDs": [...]}
json::Json toJson(const StopRingwellAlarmIntent& intent);
StopRingwellAlarmIntent stopIntentFromJson(const json::Json& value); // throws json::DecodeError

} // namespace ringwell
