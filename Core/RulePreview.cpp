#include "Core/RulePreview.h"

#include "Core/Cooldown.h"

#include <algorithm>

namespace ringwell::RulePreview {
namespace {

// The first enabled channel whose rule matches, as routing would pick it. The
// winner's own cooldown is deliberately not considered: an earlier channel
// shadows the previewed one even while it would itself be cooling down.
const RoutableChannel* routingWinner(const std::vector<RoutableChannel>& channels,
                                     const NotificationInfo& notification,
                                     const std::vector<NotificationInfo>& history,
                                     const Calendar& calendar, const RoutableChannel& previewed,
                                     MatchBudget& budget) {
    for (const auto& candidate : channels) {
        if (!candidate.isEnabled)
            continue;
        // The previewed channel's rule has just matched; no need to ask again.
        if (&candidate == &previewed ||
            Router::ruleMatches(candidate.rule, notification, history, calendar, budget))
            return &candidate;
    }
    return nullptr;
}

// The verdict for one notification. A ring is appended to `ringLog`, so that
// later notifications from the same sender can be held back by the cooldown.
PreviewVerdict verdictFor(const std::vector<RoutableChannel>& channels,
                          const RoutableChannel& previewed, const NotificationInfo& notification,
                          const std::vector<NotificationInfo>& history, const Calendar& calendar,
                          std::vector<Cooldown::Firing>& ringLog, MatchBudget& budget) {
    if (!Router::ruleMatches(previewed.rule, notification, history, calendar, budget))
        return PreviewVerdict::noMatch();
    if (!previewed.isEnabled)
        return PreviewVerdict::disabled();
    const RoutableChannel* winner =
        routingWinner(channels, notification, history, calendar, previewed, budget);
    // Routing reaches the previewed channel at the latest, so a missing winner
    // cannot happen; should it, the channel is reported as not ringing.
    if (!winner)
        return PreviewVerdict::disabled();
    if (winner != &previewed)
        return PreviewVerdict::shadowed(winner->id);
    if (Cooldown::isActive(previewed.rule.cooldownSeconds, notification.from(), notification.date,
                           ringLog))
        return PreviewVerdict::cooledDown();
    ringLog.push_back({notification.from(), notification.date});
    return PreviewVerdict::rings();
}

} // namespace

std::vector<PreviewEntry> run(const Uuid& channel, const std::vector<RoutableChannel>& channels,
                              const std::vector<NotificationInfo>& notificationsNewestFirst,
                              const Calendar& calendar, MatchBudget& budget) {
    auto previewed = std::find_if(channels.begin(), channels.end(),
                                  [&](const RoutableChannel& c) { return c.id == channel; });
    if (previewed == channels.end())
        return {};

    std::vector<PreviewEntry> entries;
    entries.reserve(notificationsNewestFirst.size());
    std::vector<NotificationInfo> history;
    history.reserve(notificationsNewestFirst.size());
    std::vector<Cooldown::Firing> ringLog;

    std::int64_t position = 0;
    // Oldest first. Not a reversed range: clang 14 cannot read libstdc++ 12's views.
    // NOLINTNEXTLINE(modernize-loop-convert)
    for (auto it = notificationsNewestFirst.rbegin(); it != notificationsNewestFirst.rend(); ++it) {
        const NotificationInfo& notification = *it;
        PreviewVerdict verdict =
            verdictFor(channels, *previewed, notification, history, calendar, ringLog, budget);
        entries.push_back({position, notification, verdict, history});
        history.push_back(notification);
        ++position;
    }
    std::reverse(entries.begin(), entries.end());
    return entries;
}

std::vector<PreviewEntry> run(const Uuid& channel, const std::vector<RoutableChannel>& channels,
                              const std::vector<NotificationInfo>& notificationsNewestFirst,
                              const Calendar& calendar) {
    MatchBudget unlimited = MatchBudget::unlimited();
    return run(channel, channels, notificationsNewestFirst, calendar, unlimited);
}

std::int64_t ringCount(const std::vector<PreviewEntry>& entries) {
    return std::count_if(entries.begin(), entries.end(), [](const PreviewEntry& entry) {
        return entry.verdict.kind() == PreviewVerdict::Kind::rings;
    });
}

} // namespace ringwell::RulePreview
