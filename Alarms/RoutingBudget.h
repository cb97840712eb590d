#pragma once

#include "Core/MatchBudget.h"

#include <chrono>
#include <ctime>
#include <utility>

namespace ringwell {

// This thread's CPU clock: the clock of every matching budget in the daemon.
// The budget bounds the work the loop does, so a busy machine that keeps the
// daemon waiting for a processor never cuts a routing short (a wall clock
// would, and a notification would then miss its channel).
inline MatchBudget::Duration threadCpuTime() {
    timespec spent{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &spent);
    return std::chrono::duration_cast<MatchBudget::Duration>(
        std::chrono::seconds(spent.tv_sec) + std::chrono::nanoseconds(spent.tv_nsec));
}

// The matching budget of one routing, or of one request that matches or
// compiles rule patterns (the rule preview, the rule description), timed by
// `clock`: the app's (AppContext::matchingClock), which tests replace.
inline MatchBudget routingBudget(MatchBudget::MonotonicSource clock = threadCpuTime) {
    return MatchBudget(MatchBudget::routingLimit, std::move(clock));
}

} // namespace ringwell
