#pragma once

#include <chrono>
#include <cstddef>
#include <functional>

namespace ringwell {

// How long one routing of a notification may spend matching patterns. Each
// search is already cut off after a few steps, but hundreds of slow patterns
// (or thousands of quick ones) would still hold the daemon's only thread for
// seconds; once the budget is spent, every remaining pattern counts as not
// matching and the evaluation says it was cut short.
//
// The core reads no clock: the caller passes a monotonic time source (the
// daemon's per-thread CPU clock; a fake one in tests). One budget belongs to one
// routing on one thread.
class MatchBudget {
public:
    using Duration = std::chrono::nanoseconds;
    // Time since any fixed point; it must never go back.
    using MonotonicSource = std::function<Duration()>;

    // What one routing may spend.
    static constexpr Duration routingLimit = std::chrono::milliseconds(50);

    // `limit` of matching from now, as `now` tells time.
    MatchBudget(Duration limit, MonotonicSource now);

    // A budget that never runs out, for callers without a deadline.
    static MatchBudget unlimited();
    // A budget with nothing left: every pattern counts as not matching.
    static MatchBudget spent();

    // Whether there is time left. Once out, it stays out.
    bool hasTimeLeft();
    // Records that a pattern was skipped or stopped for want of time.
    void noteCutShort() { ++cutShort_; }
    // How many patterns were skipped or stopped so far.
    std::size_t cutShortCount() const { return cutShort_; }
    // Whether any pattern was skipped or stopped for want of time.
    bool wasCutShort() const { return cutShort_ > 0; }

private:
    MatchBudget() = default;

    MonotonicSource now_;
    Duration deadline_{};
    bool spent_ = false;
    std::size_t cutShort_ = 0;
};

} // namespace ringwell
