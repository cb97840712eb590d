#pragma once

#include "Alarms/RingwellAlarmError.h"
#include "Core/NotificationInfo.h"
#include "Core/Uuid.h"
#include "Model/Channel.h"
#include "Model/Clock.h"
#include "Model/FireEvent.h"
#include "Model/RingwellStore.h"
#include "Shared/AlarmService.h"
#include "Shared/Asio.h"

#include <optional>
#include <set>

namespace ringwell {

// Whether a ring answers a forwarded notification or is a test started by the
// person (a channel's test button). A test rings even a disabled channel and
// never schedules reminders.
enum class RingKind { live, test };

// The event a ring recorded, and the error that ended it when it failed.
struct FireAttempt {
    FireEvent event;
    std::optional<RingwellAlarmError> error;
};

// Rings channels through the alarm service: one first alarm and its follow-up
// reminders per ring, never a second alarm for a channel that is already
// being scheduled or still ringing. Every ring leaves exactly one fire event
// in the store (fired, coalesced, skipped or failed).
//
// Main thread only. `fire` suspends while the service schedules and resumes on
// the main thread, so the set of channels in flight, the store and the log are
// only touched there. That set is what turns two near-simultaneous rings of
// one channel into one alarm and one `coalesced` event. The service, the store
// and the clock must outlive the scheduler, and the scheduler must outlive
// every ring it started.
class AlarmScheduler {
public:
    AlarmScheduler(AlarmService& service, RingwellStore& store, const Clock& clock);
    AlarmScheduler(const AlarmScheduler&) = delete;
    AlarmScheduler& operator=(const AlarmScheduler&) = delete;

    // Rings `channel` for `payload` and returns the recorded event. A disabled
    // channel (outside tests) gives `skipped` and a channel already ringing
    // gives `coalesced`; neither is an error. Throws RingwellAlarmError after
    // recording a `failed` event when alarms are not allowed or the service
    // refuses the first alarm. Reminders that fail are left out silently.
    Awaitable<FireEvent> fire(Channel channel, NotificationInfo payload, RingKind kind);
    // The same ring, with the error returned instead of thrown. The recorded
    // event carries `routingCutShort`: the routing that chose the channel ran
    // out of its matching budget, so an earlier channel may have been meant.
    Awaitable<FireAttempt> attempt(Channel channel, NotificationInfo payload, RingKind kind,
                                   bool routingCutShort = false);

    // The service's state; asks the person first when nobody has answered
    // yet. A request that fails counts as `denied`.
    Awaitable<AlarmAuthorizationState> requestAuthorization();

    // Cancels every alarm the service holds, ignoring every error. The log is
    // left alone.
    void stopAll();

    // Whether an alarm that rang for this channel (its first alarm or one of
    // its reminders) is still held by the service. A service that cannot list
    // its alarms counts as holding none.
    bool isActive(const Uuid& channelID) const;
    // Whether a ring of this channel is being scheduled right now.
    bool isInFlight(const Uuid& channelID) const { return inFlight_.count(channelID) > 0; }

private:
    // What a ring records: the event, marked as the ring's kind and routing.
    struct Recording {
        RingKind kind;
        bool routingCutShort;
    };
    FireEvent record(const Channel& channel, const NotificationInfo& payload, FireOutcome outcome,
                     Recording recording);
    FireAttempt failure(const Channel& channel, const NotificationInfo& payload,
                        Recording recording, RingwellAlarmError error);
    void log(FireEvent& event, Recording recording);

    AlarmService& service_;
    RingwellStore& store_;
    const Clock& clock_;
    std::set<Uuid> inFlight_;
};

} // namespace ringwell
