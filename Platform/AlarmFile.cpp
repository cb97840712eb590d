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

namespace {

// The alarm, or why it cannot be kept.
Alarm checkedAlarm(const json::Json& item, const std::set<Uuid>& earlier) {
    Alarm alarm = alarmFromJson(item);
    const std::string name = "alarm " + alarm.id.toString();
    if (earlier.count(alarm.id))
        throw json::DecodeError(name + " appears twice");
    if (alarm.state == AlarmState::paused && !alarm.remainingSeconds)
        throw json::DecodeError(name + " is paused without remainingSeconds");
    if (alarm.state != AlarmState::paused && !alarm.fireDate)
        throw json::DecodeError(name + " has no fireDate");
    return alarm;
}

} // namespace

DecodedAlarmFile alarmFileFromJson(const json::Json& value) {
    json::requireObject(value, "alarm service file");
    DecodedAlarmFile file;
    try {
        const std::string authorization = json::requireString(value, "authorization");
        auto parsed = authorizationStateFromRaw(authorization);
        if (!parsed)
            throw json::DecodeError("\"authorization\": unknown value " + authorization);
        file.state.authorization = *parsed;
    } catch (const json::DecodeError& error) {
        file.dropped.push_back(error.what());
    }

    const json::Json* alarms = nullptr;
    try {
        alarms = &json::requireArray(value, "alarms");
    } catch (const json::DecodeError& error) {
        file.dropped.push_back(error.what());
        return file;
    }
    std::set<Uuid> ids;
    for (std::size_t index = 0; index < alarms->size(); ++index) {
        try {
            Alarm alarm = checkedAlarm((*alarms)[index], ids);
            ids.insert(alarm.id);
            file.state.alarms.push_back(std::move(alarm));
        } catch (const json::DecodeError& error) {
            file.dropped.push_back("alarm " + std::to_string(index + 1) + ": " + error.what());
        } catch (const nlohmann::json::exception& error) {
            file.dropped.push_back("alarm " + std::to_string(index + 1) + ": " + error.what());
        }
    }
    return file;
}

} // namespace ringwell
