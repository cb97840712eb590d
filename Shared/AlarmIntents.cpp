#include "Shared/AlarmIntents.h"

#include "Core/Json.h"
#include "Shared/AlarmService.h"

namespace ringwell {

StopRingwellAlarmIntent StopRingwellAlarmIntent::make(const Uuid& alarm,
                                                      const std::vector<Uuid>& followUps) {
    StopRingwellAlarmIntent intent{alarm.toString(), {}};
    for (const auto& id : followUps)
        intent.followUpIDs.push_back(id.toString());
    return intent;
}

void StopRingwellAlarmIntent::perform(AlarmService& service) const {
    // Reminders go first, so none of them can start ringing after the stop.
    for (const auto& text : followUpIDs) {
        auto id = Uuid::parse(text);
        if (!id)
            continue;
        try {
            service.cancel(*id);
        } catch (const AlarmServiceError&) {
            // A reminder that already ended or was stopped on its own.
        }
    }
    if (auto id = Uuid::parse(alarmID))
        service.stop(*id);
}

void PauseRingwellAlarmIntent::perform(AlarmService& service) const {
    if (auto id = Uuid::parse(alarmID))
        service.pause(*id);
}

void ResumeRingwellAlarmIntent::perform(AlarmService& service) const {
    if (auto id = Uuid::parse(alarmID))
        service.resume(*id);
}

json::Json toJson(const StopRingwellAlarmIntent& intent) {
    return json::Json{{"alarmID", intent.alarmID}, {"followUpIDs", intent.followUpIDs}};
}

StopRingwellAlarmIntent stopIntentFromJson(const json::Json& value) {
    json::requireObject(value, "stopIntent");
    return {json::requireString(value, "alarmID"),
            json::stringList(json::requireArray(value, "followUpIDs"), "followUpIDs")};
}

} // namespace ringwell
