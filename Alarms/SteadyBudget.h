#pragma once

#include "Core/MatchBudget.h"

#include <chrono>

namespace ringwell {

// The matching budget of one routing, or of one request that matches or
// compiles rule patterns (the rule preview, the rule description), timed by
// the steady clock, which a change of the wall clock cannot stretch or shrink.
inline MatchBudget steadyRoutingBudget() {
    return MatchBudget(MatchBudget::routingLimit, [] {
        return std::chrono::duration_cast<MatchBudget::Duration>(
            std::chrono::steady_clock::now().time_since_epoch());
    });
}

} // namespace ringwell
