#pragma once

#include "Core/Calendar.h"
#include "Core/ChannelRule.h"
#include "Core/MatchBudget.h"
#include "Core/NotificationInfo.h"
#include "Core/Uuid.h"

#include <optional>
#include <vector>

namespace ringwell {

// What routing needs of a channel: its identity, whether it may ring, and its rule.
// The dispatcher builds one per stored channel, in the person's list order.
struct RoutableChannel {
    Uuid id;
    bool isEnabled = true;
    ChannelRule rule;

    bool operator==(const RoutableChannel&) const = default;
};

// The router's verdict for one notification: an enabled channel that must ring,
// a disabled channel that would have rung (the event is recorded as skipped),
// or no match at all. Two verdicts are equal when they have the same kind and,
// for the kinds that name a channel, the same channel.
class RouteResult {
public:
    enum class Kind { channel, disabled, noMatch };

    static RouteResult channel(Uuid id) { return RouteResult(Kind::channel, id); }
    static RouteResult disabled(Uuid id) { return RouteResult(Kind::disabled, id); }
    static RouteResult noMatch() { return RouteResult(Kind::noMatch, std::nullopt); }

    Kind kind() const { return kind_; }
    // The channel named by `channel` and `disabled`; none for `noMatch`.
    const std::optional<Uuid>& id() const { return id_; }

    bool operator==(const RouteResult&) const = default;

private:
    RouteResult(Kind kind, std::optional<Uuid> id) : kind_(kind), id_(id) {}

    Kind kind_;
    std::optional<Uuid> id_;
};

// Decides which channel, if any, rings for one notification. Pure: it touches
// neither the store nor the alarm service, and is safe from any thread as long
// as each thread has its own calendar.
namespace Router {

// Evaluates the channels strictly in list order. The first enabled channel
// whose rule matches wins and no later rule is evaluated. A matching disabled
// channel never hides a later enabled match; when nothing enabled matches, the
// earliest matching disabled channel is reported. `history` holds the earlier
// notifications for frequency conditions; `calendar` judges active hours.
// `budget` bounds the pattern matching of the whole routing: once it is spent,
// the remaining patterns count as not matching, so a rule that needs one of
// them does not match.
RouteResult route(const NotificationInfo& notification,
                  const std::vector<RoutableChannel>& channels,
                  const std::vector<NotificationInfo>& history, const Calendar& calendar,
                  MatchBudget& budget);
// The same without a deadline.
RouteResult route(const NotificationInfo& notification,
                  const std::vector<RoutableChannel>& channels,
                  const std::vector<NotificationInfo>& history, const Calendar& calendar);

// Whether one rule matches the notification, with the same verdict as
// RuleMatcher::matches. The preview shares it so that both walk the channels
// the same way; without a budget there is no deadline.
bool ruleMatches(const ChannelRule& rule, const NotificationInfo& notification,
                 const std::vector<NotificationInfo>& history, const Calendar& calendar,
                 MatchBudget& budget);
bool ruleMatches(const ChannelRule& rule, const NotificationInfo& notification,
                 const std::vector<NotificationInfo>& history, const Calendar& calendar);

} // namespace Router
} // namespace ringwell
