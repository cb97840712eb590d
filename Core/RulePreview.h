#pragma once

#include "Core/Calendar.h"
#include "Core/NotificationInfo.h"
#include "Core/Router.h"
#include "Core/Uuid.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace ringwell {

// What one channel would have done with one replayed notification. Two
// verdicts are equal when they have the same kind and, for `shadowed`, name
// the same winning channel.
class PreviewVerdict {
public:
    enum class Kind { shadowed, rings, cooledDown, disabled, noMatch };

    // The rule matches and the channel is on, but an earlier channel wins.
    static PreviewVerdict shadowed(Uuid by) { return PreviewVerdict(Kind::shadowed, by); }
    static PreviewVerdict rings() { return PreviewVerdict(Kind::rings, std::nullopt); }
    // The channel would have won, but its cooldown holds the alarm back.
    static PreviewVerdict cooledDown() { return PreviewVerdict(Kind::cooledDown, std::nullopt); }
    static PreviewVerdict disabled() { return PreviewVerdict(Kind::disabled, std::nullopt); }
    static PreviewVerdict noMatch() { return PreviewVerdict(Kind::noMatch, std::nullopt); }

    Kind kind() const { return kind_; }
    // The channel that wins instead, for `shadowed`.
    const std::optional<Uuid>& shadowedBy() const { return by_; }
    // Every verdict but `noMatch` means the rule itself matched.
    bool matchesRule() const { return kind_ != Kind::noMatch; }

    bool operator==(const PreviewVerdict&) const = default;

private:
    PreviewVerdict(Kind kind, std::optional<Uuid> by) : kind_(kind), by_(by) {}

    Kind kind_;
    std::optional<Uuid> by_;
};

// One replayed notification with its verdict. `id` is the position in
// oldest-first order from 0; `history` holds the older notifications, oldest
// first, exactly as the evaluation saw them, so a detail screen can re-run
// RuleMatcher::evaluate and show the same checks.
struct PreviewEntry {
    std::int64_t id = 0;
    NotificationInfo notification;
    PreviewVerdict verdict = PreviewVerdict::noMatch();
    std::vector<NotificationInfo> history;

    bool operator==(const PreviewEntry&) const = default;
};

// Replays recent notifications through one channel's rule and through routing
// among all channels, to show what the channel would have done. Pure; it
// changes nothing.
namespace RulePreview {

// `channels` are all channels in the person's order, the previewed one with
// its rule as currently edited; `notificationsNewestFirst` are the recent
// notifications. Entries come back newest first. Only rings produced by the
// replay itself start a cooldown, per sender within the previewed channel.
// An unknown channel gives no entries. `budget` bounds the pattern matching of
// the whole replay as it bounds one routing: once it is spent, the remaining
// patterns count as not matching.
std::vector<PreviewEntry> run(const Uuid& channel, const std::vector<RoutableChannel>& channels,
                              const std::vector<NotificationInfo>& notificationsNewestFirst,
                              const Calendar& calendar, MatchBudget& budget);
// The same without a deadline.
std::vector<PreviewEntry> run(const Uuid& channel, const std::vector<RoutableChannel>& channels,
                              const std::vector<NotificationInfo>& notificationsNewestFirst,
                              const Calendar& calendar);

// How many entries would have rung (cooled-down and shadowed ones do not count).
std::int64_t ringCount(const std::vector<PreviewEntry>& entries);

} // namespace RulePreview
} // namespace ringwell
