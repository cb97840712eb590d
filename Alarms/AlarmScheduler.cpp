#include "Alarms/AlarmScheduler.h"

#include "Alarms/AlarmPlan.h"
#include "Alarms/EventRecord.h"

#include <algorithm>
#include <exception>

namespace ringwell {
namespace {

// Keeps a channel in the in-flight set for the life of one ring, whichever way
// the ring ends.
class InFlight {
public:
    InFlight(std::set<Uuid>& set, const Uuid& id) : set_(set), id_(id) { set_.insert(id_); }
    ~InFlight() { set_.erase(id_); }
    InFlight(const InFlight&) = delete;
    InFlight& operator=(const InFlight&) = delete;

private:
    std::set<Uuid>& set_;
    Uuid id_;
};

// The person sees the service's limit as Ringwell's own advice; any other
// refusal keeps the service's description.
RingwellAlarmError mapped(const AlarmServiceError& error) {
    if (error.kind() == AlarmServiceError::Kind::maximumLimitReached)
        return RingwellAlarmError::tooManyAlarms();
    return RingwellAlarmError::schedulingFailed(error.what());
}

} // namespace

AlarmScheduler::AlarmScheduler(AlarmService& service, RingwellStore& store, const Clock& clock)
    : service_(service), store_(store), clock_(clock) {}

Awaitable<FireEvent> AlarmScheduler::fire(Channel channel, NotificationInfo payload,
                                          RingKind kind) {
    FireAttempt result = co_await attempt(std::move(channel), std::move(payload), kind);
    if (result.error)
        throw *result.error;
    co_return std::move(result.event);
}

Awaitable<FireAttempt> AlarmScheduler::attempt(Channel channel, NotificationInfo payload,
                                               RingKind kind, bool routingCutShort) {
    const Recording recording{kind, routingCutShort};
    if (!channel.isEnabled && kind == RingKind::live)
        co_return FireAttempt{record(channel, payload, FireOutcome::skipped, recording),
                              std::nullopt};

    if (co_await requestAuthorization() != AlarmAuthorizationState::authorized)
        co_return failure(channel, payload, recording, RingwellAlarmError::notAuthorized());

    // Nothing suspends between this check and the insertion below, so a
    // second ring of the channel sees either the first one in flight or its
    // alarms in the service.
    if (isInFlight(channel.id) || isActive(channel.id))
        co_return FireAttempt{record(channel, payload, FireOutcome::coalesced, recording),
                              std::nullopt};

    const Uuid alarmID = Uuid::random();
    std::vector<Uuid> followUpIDs;
    if (kind == RingKind::live) {
        for (std::int64_t i = 0; i < AlarmPlan::followUpCount(channel); ++i)
            followUpIDs.push_back(Uuid::random());
    }
    const InFlight inFlight(inFlight_, channel.id);

    std::optional<RingwellAlarmError> error;
    try {
        co_await service_.schedule(alarmID,
                                   AlarmPlan::firstAlarm(channel, payload, alarmID, followUpIDs));
    } catch (const RingwellAlarmError& thrown) {
        error = thrown;
    } catch (const AlarmServiceError& thrown) {
        error = mapped(thrown);
    } catch (const std::exception& thrown) {
        error = RingwellAlarmError::schedulingFailed(thrown.what());
    }
    if (error)
        co_return failure(channel, payload, recording, *error);

    // All reminders are scheduled at once, each counting down from now; one
    // that fails does not keep the others from ringing.
    for (std::size_t index = 0; index < followUpIDs.size(); ++index) {
        try {
            co_await service_.schedule(followUpIDs[index],
                                       AlarmPlan::followUp(channel, payload, index, followUpIDs));
        } catch (const std::exception&) {
        }
    }

    FireEvent event = EventRecord::make(payload, FireOutcome::fired, clock_.now(), channel);
    event.alarmID = alarmID;
    event.followUpAlarmIDs = followUpIDs;
    log(event, recording);
    co_return FireAttempt{std::move(event), std::nullopt};
}

Awaitable<AlarmAuthorizationState> AlarmScheduler::requestAuthorization() {
    const AlarmAuthorizationState state = service_.authorizationState();
    if (state != AlarmAuthorizationState::notDetermined)
        co_return state;
    try {
        co_return co_await service_.requestAuthorization();
    } catch (const std::exception&) {
        co_return AlarmAuthorizationState::denied;
    }
}

void AlarmScheduler::stopAll() {
    std::vector<Alarm> alarms;
    try {
        alarms = service_.alarms();
    } catch (const std::exception&) {
        return;
    }
    for (const Alarm& alarm : alarms) {
        try {
            service_.cancel(alarm.id);
        } catch (const std::exception&) {
            // An alarm that ended meanwhile; the others are still cancelled.
        }
    }
}

bool AlarmScheduler::isActive(const Uuid& channelID) const {
    // Every alarm carries the channel it rang for, so the service alone knows;
    // the capped, clearable event log would forget a channel still ringing.
    try {
        const std::vector<Alarm> alarms = service_.alarms();
        return std::any_of(alarms.begin(), alarms.end(), [&](const Alarm& alarm) {
            return alarm.configuration.attributes.metadata.channelID == channelID;
        });
    } catch (const std::exception&) {
        return false;
    }
}

FireEvent AlarmScheduler::record(const Channel& channel, const NotificationInfo& payload,
                                 FireOutcome outcome, Recording recording) {
    FireEvent event = EventRecord::make(payload, outcome, clock_.now(), channel);
    log(event, recording);
    return event;
}

FireAttempt AlarmScheduler::failure(const Channel& channel, const NotificationInfo& payload,
                                    Recording recording, RingwellAlarmError error) {
    FireEvent event = EventRecord::make(payload, FireOutcome::failed, clock_.now(), channel);
    event.errorMessage = error.what();
    log(event, recording);
    return FireAttempt{std::move(event), std::move(error)};
}

void AlarmScheduler::log(FireEvent& event, Recording recording) {
    event.isTest = recording.kind == RingKind::test;
    event.routingCutShort = recording.routingCutShort;
    store_.log(event);
}

} // namespace ringwell
