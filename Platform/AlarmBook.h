#pragma once

#include "Core/Date.h"
#include "Core/Uuid.h"
#include "Shared/AlarmService.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace ringwell {

// The alarms of the local alarm service and their states, moved on by the
// time the caller passes in. It reads no clock, sets no timer and touches no
// file: LocalAlarmService wraps it with those.
//
// An alarm's life:
// - `schedule` starts a countdown of the configuration's pre-alert seconds
//   (none means it is due at once); `fireDate` is the wall-clock deadline.
// - `advance(now)` turns every countdown whose deadline is at or before `now`
//   into an alerting alarm; `fireDate` then keeps the deadline, the moment it
//   started to alert.
// - An alerting alarm stays alerting until `stop`, or `snooze` when it has a
//   post-alert duration: that silences it and counts down again.
// - `pause` (only while counting down) keeps the remaining seconds and clears
//   the deadline; `resume` sets a new deadline from them.
// - `stop` and `cancel` remove the alarm in any state.
//
// Failures throw AlarmServiceError: `notFound` for an unknown id,
// `maximumLimitReached` when the book already holds `limit` alarms, `failed`
// for an operation that does not fit the alarm's state or a bad duration.
// A failed operation changes nothing.
//
// Not thread-safe; the service keeps it on the daemon's main thread.
class AlarmBook {
public:
    // Alarms held at once, whatever their state.
    static constexpr std::size_t limit = 64;

    AlarmBook() = default;
    // The alarms as saved, in their order. Every saved alarm is kept, even
    // beyond the limit, so that a restart never drops one.
    explicit AlarmBook(std::vector<Alarm> alarms);

    // In the order they were scheduled.
    const std::vector<Alarm>& alarms() const { return alarms_; }
    const Alarm* find(const Uuid& id) const;

    void schedule(const Uuid& id, AlarmConfiguration configuration, Date now);
    void stop(const Uuid& id);
    void cancel(const Uuid& id);
    void pause(const Uuid& id, Date now);
    void resume(const Uuid& id, Date now);
    void snooze(const Uuid& id, Date now);

    // Starts every alarm that is due at `now` and returns their ids, earliest
    // deadline first.
    std::vector<Uuid> advance(Date now);

    // The earliest deadline of a counting-down alarm.
    std::optional<Date> nextDeadline() const;

private:
    Alarm& require(const Uuid& id);
    void remove(const Uuid& id);

    std::vector<Alarm> alarms_;
};

} // namespace ringwell
