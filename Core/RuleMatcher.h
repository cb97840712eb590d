#pragma once

#include "Core/Calendar.h"
#include "Core/ChannelRule.h"
#include "Core/JsonFwd.h"
#include "Core/MatchBudget.h"
#include "Core/NotificationInfo.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// One explained condition of an evaluation.
struct RuleCheck {
    enum class Condition { app, sender, keywords, calls, activeHours, frequency };

    Condition condition = Condition::app;
    bool passed = false;
    std::string detail;

    bool operator==(const RuleCheck&) const = default;
};

std::string_view rawValue(RuleCheck::Condition condition);

// The explained result of testing one rule against one notification: one
// check per condition the rule sets, in a fixed order.
struct RuleEvaluation {
    std::vector<RuleCheck> checks;

    // Every check passed; a rule without conditions matches everything.
    bool matches() const;

    bool operator==(const RuleEvaluation&) const = default;
};

// {"matches": bool, "checks": [{"condition", "passed", "detail"}]}
json::Json toJson(const RuleEvaluation& evaluation);

// Decides whether a notification satisfies a rule, and explains why. Pure: the
// caller passes the history of earlier notifications, the calendar and the
// budget for pattern matching; a sender, keyword or frequency check whose
// patterns were cut short by the budget says so in its detail. The cooldown is
// not judged here; it depends on when the channel last rang.
namespace RuleMatcher {

RuleEvaluation evaluate(const ChannelRule& rule, const NotificationInfo& notification,
                        const std::vector<NotificationInfo>& history, const Calendar& calendar,
                        MatchBudget& budget);
bool matches(const ChannelRule& rule, const NotificationInfo& notification,
             const std::vector<NotificationInfo>& history, const Calendar& calendar,
             MatchBudget& budget);

// The same without a deadline, for explaining one rule.
RuleEvaluation evaluate(const ChannelRule& rule, const NotificationInfo& notification,
                        const std::vector<NotificationInfo>& history, const Calendar& calendar);
bool matches(const ChannelRule& rule, const NotificationInfo& notification,
             const std::vector<NotificationInfo>& history, const Calendar& calendar);

// The checks of every condition but frequency.
std::vector<RuleCheck> contentChecks(const ChannelRule& rule, const NotificationInfo& notification,
                                     const Calendar& calendar, MatchBudget& budget);

} // namespace RuleMatcher
} // namespace ringwell
