#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace ringwell {

// Why Ringwell could not ring, with the message a person reads in the failure
// notice, in the failed event and as the error of the ring intent.
//
// It is an exception because it travels out of awaitables: `AlarmScheduler::fire`
// and the intents throw it, and the edges (the dispatcher, the local API)
// catch it and show `what()`. Callers that prefer a value use
// `AlarmScheduler::attempt`, which returns it instead of throwing.
class RingwellAlarmError : public std::runtime_error {
public:
    enum class Kind { schedulingFailed, notAuthorized, channelNotFound, tooManyAlarms };

    // "Ringwell couldn't schedule the alarm: " followed by the reason.
    static RingwellAlarmError schedulingFailed(std::string_view reason);
    static RingwellAlarmError notAuthorized();
    // The ring intent's channel was deleted.
    static RingwellAlarmError channelNotFound();
    // The alarm service holds as many alarms as it allows.
    static RingwellAlarmError tooManyAlarms();

    Kind kind() const { return kind_; }

    bool operator==(const RingwellAlarmError& other) const {
        return kind_ == other.kind_ && std::string_view(what()) == other.what();
    }

private:
    RingwellAlarmError(Kind kind, const std::string& message)
        : std::runtime_error(message), kind_(kind) {}

    Kind kind_;
};

// "schedulingFailed", "notAuthorized", "channelNotFound", "tooManyAlarms".
std::string_view rawValue(RingwellAlarmError::Kind kind);

} // namespace ringwell
