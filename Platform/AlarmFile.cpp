#include "Platform/AlarmFile.h"
#include "Core/Json.h"

#include <set>

namespace ringwell {

json::Json toJson(const AlarmServiceState& state) {
    json::Json alarms = json::Json::array();
    for (const auto& alarm : state.alarms)
        alarms.push_back(toJson(alarm));
    return json::Json{{"authorization", rawValue(state.authorization)},
                      {"alarms", std::move(alarms)}};
}

AlarmServiceState alarmServiceStateFromJson(const json::Json& value) {
    json::requireObject(value, "alarm service file");
    AlarmServiceState state;
    const std::string authorization = json::requireString(value, "authorization");
    auto parsed = authorizationStateFromRaw(authorization);
    if (!parsed)
        throw json::DecodeError("\"authorization\": unknown value " + authorization);
    state.authorization = *parsed;

    std::set<Uuid> ids;
    for (const auto& item : json::requireArray(value, "alarms")) {
        Alarm alarm = alarmFromJson(item);
        const std::string name = "alarm " + alarm.id.toString();
        if (!ids.insert(alarm.id).second)
            throw json::DecodeError(name + " appears twice");
        if (alarm.state == AlarmState::paused && !alarm.remainingSeconds)
            throw json::DecodeError(name + " is paused without remainingSeconds");
        if (alarm.state != AlarmState::paused && !alarm.fireDate)
            throw json::DecodeError(name + " has no fireDate");
        state.alarms.push_back(std::move(alarm));
    }
    return state;
}

} // namespace ringwell
