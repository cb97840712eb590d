#include "Core/MatchBudget.h"

#include <utility>

namespace ringwell {

MatchBudget::MatchBudget(Duration limit, MonotonicSource now) : now_(std::move(now)) {
    deadline_ = now_() + limit;
}

MatchBudget MatchBudget::unlimited() {
    return MatchBudget();
}

MatchBudget MatchBudget::spent() {
    MatchBudget budget;
    budget.spent_ = true;
    return budget;
}

bool MatchBudget::hasTimeLeft() {
    if (!spent_ && now_ && now_() >= deadline_)
        spent_ = true;
    return !spent_;
}

} // namespace ringwell
