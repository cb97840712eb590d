#include "Core/Router.h"

#include "Core/RuleMatcher.h"

#include <algorithm>

namespace ringwell::Router {

bool ruleMatches(const ChannelRule& rule, const NotificationInfo& notification,
                 const std::vector<NotificationInfo>& history, const Calendar& calendar,
                 MatchBudget& budget) {
    // A frequency condition scans the whole history, which is wasted work when
    // the notification itself already fails a content condition. The verdict
    // is the same either way: a rule matches only when every check passes.
    if (rule.frequency) {
        auto content = RuleMatcher::contentChecks(rule, notification, calendar, budget);
        if (!std::all_of(content.begin(), content.end(),
                         [](const RuleCheck& check) { return check.passed; }))
            return false;
    }
    return RuleMatcher::matches(rule, notification, history, calendar, budget);
}

bool ruleMatches(const ChannelRule& rule, const NotificationInfo& notification,
                 const std::vector<NotificationInfo>& history, const Calendar& calendar) {
    MatchBudget unlimited = MatchBudget::unlimited();
    return ruleMatches(rule, notification, history, calendar, unlimited);
}

RouteResult route(const NotificationInfo& notification,
                  const std::vector<RoutableChannel>& channels,
                  const std::vector<NotificationInfo>& history, const Calendar& calendar,
                  MatchBudget& budget) {
    std::optional<Uuid> firstDisabledMatch;
    for (const auto& channel : channels) {
        if (!ruleMatches(channel.rule, notification, history, calendar, budget))
            continue;
        if (channel.isEnabled)
            return RouteResult::channel(channel.id);
        if (!firstDisabledMatch)
            firstDisabledMatch = channel.id;
    }
    return firstDisabledMatch ? RouteResult::disabled(*firstDisabledMatch) : RouteResult::noMatch();
}

RouteResult route(const NotificationInfo& notification,
                  const std::vector<RoutableChannel>& channels,
                  const std::vector<NotificationInfo>& history, const Calendar& calendar) {
    MatchBudget unlimited = MatchBudget::unlimited();
    return route(notification, channels, history, calendar, unlimited);
}

} // namespace ringwell::Router
