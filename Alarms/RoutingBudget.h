#pragma once

#include "Core/MatchBudget.h"

#include <chrono>
#include <ctime>

namespace ringwell {

// The matching budget of one routing, or of one request that matches or
// compiles rule patterns (the rule preview, the rule description), timed by
// this thread's CPU clock: the budget bounds the work the loop does, so a busy
// machine that keeps the daemon waiting for a processor never cuts a routing
// short (a wall clock would, and a notification would then miss its channel).
inline MatchBudget routingBudget() {
    return MatchBudget(MatchBudget::routingLimit, [] {
        timespec spent{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &spent);
        return std::chrono::duration_cast<MatchBudget::Duration>(
            std::chrono::seconds(spent.tv_sec) + std::chrono::nanoseconds(spent.tv_nsec));
    });
}

} // namespace ringwell
