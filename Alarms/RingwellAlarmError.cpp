#include "Alarms/RingwellAlarmError.h"

namespace ringwell {

RingwellAlarmError RingwellAlarmError::schedulingFailed(std::string_view reason) {
    return {Kind::schedulingFailed, "Ringwell couldn't schedule the alarm: " + std::string(reason)};
}

RingwellAlarmError RingwellAlarmError::notAuthorized() {
    return {Kind::notAuthorized, "Ringwell isn't allowed to schedule alarms. Open Ringwell and "
                                 "allow Alarms in Settings."};
}

RingwellAlarmError RingwellAlarmError::channelNotFound() {
    return {Kind::channelNotFound,
            "Channel no longer exists. Pick a different channel in this automation."};
}

RingwellAlarmError RingwellAlarmError::tooManyAlarms() {
    return {Kind::tooManyAlarms, "Too many alarms are already scheduled. Open Ringwell and use "
                                 "Stop All Alarms, then try again."};
}

std::string_view rawValue(RingwellAlarmError::Kind kind) {
    switch (kind) {
    case RingwellAlarmError::Kind::schedulingFailed:
        return "schedulingFailed";
    case RingwellAlarmError::Kind::notAuthorized:
        return "notAuthorized";
    case RingwellAlarmError::Kind::channelNotFound:
        return "channelNotFound";
    case RingwellAlarmError::Kind::tooManyAlarms:
        return "tooManyAlarms";
    }
    return "schedulingFailed";
}

} // namespace ringwell
