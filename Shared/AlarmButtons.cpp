#include "Shared/AlarmButtons.h"

#include "Shared/AlarmIntents.h"
#include "Shared/AlarmService.h"

namespace ringwell {

std::string_view rawValue(AlarmButtonKey button) {
    switch (button) {
    case AlarmButtonKey::stop:
        return "stop";
    case AlarmButtonKey::snooze:
        return "snooze";
    case AlarmButtonKey::pause:
        return "pause";
    case AlarmButtonKey::resume:
        return "resume";
    }
    return "stop";
}

std::optional<AlarmButtonKey> alarmButtonFromRaw(std::string_view raw) {
    for (auto button : {AlarmButtonKey::stop, AlarmButtonKey::snooze, AlarmButtonKey::pause,
                        AlarmButtonKey::resume}) {
        if (rawValue(button) == raw)
            return button;
    }
    return std::nullopt;
}

void press(AlarmService& service, const Uuid& alarm, AlarmButtonKey button) {
    switch (button) {
    case AlarmButtonKey::stop: {
        StopRingwellAlarmIntent intent{alarm.toString(), {}};
        for (const auto& held : service.alarms()) {
            if (held.id == alarm)
                intent.followUpIDs = held.configuration.stopIntent.followUpIDs;
        }
        intent.perform(service);
        return;
    }
    case AlarmButtonKey::snooze:
        service.snooze(alarm);
        return;
    case AlarmButtonKey::pause:
        PauseRingwellAlarmIntent{alarm.toString()}.perform(service);
        return;
    case AlarmButtonKey::resume:
        ResumeRingwellAlarmIntent{alarm.toString()}.perform(service);
        return;
    }
}

} // namespace ringwell
