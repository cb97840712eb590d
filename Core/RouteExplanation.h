#pragma once

#include "Core/Calendar.h"
#include "Core/JsonFwd.h"
#include "Core/NotificationInfo.h"
#include "Core/RuleMatcher.h"
#include "Core/Trace.h"
#include "Core/Uuid.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// One recorded event of the history, as the explanation of its routing needs
// it. The caller maps its own outcome and failure onto these.
struct RecordedRoute {
    enum class Outcome {
        fired,
        coalesced,
        cooledDown,
        skipped,
        noMatch,
        notAuthorized, // failed: alarms are not allowed
        limit,         // failed: too many alarms were scheduled
        failed,        // failed for another reason
        setupTest,
        ignored,
        silent // the watchdog's record of a silence, never a notification
    };

    std::string eventID;
    NotificationInfo notification;
    Outcome outcome = Outcome::noMatch;
    std::optional<Uuid> channelID;
    std::optional<std::string> channelName; // the name at the time
    std::optional<std::string> errorMessage;
    bool isTest = false;

    bool operator==(const RecordedRoute&) const = default;
};

// Why one recorded notification ended as it did: every channel in priority
// order with its explained rule, the step that decided the outcome, and
// whether today's channels would decide differently.
struct RouteExplanation {
    struct ChannelCheck {
        enum class Role {
            wins,          // the first enabled channel whose rule matches
            disabledMatch, // matches, but is switched off
            noMatch,       // its rule does not match
            notReached     // after the winner: routing stops there
        };

        Uuid id;
        std::string name;
        bool isEnabled = true;
        RuleEvaluation evaluation;
        Role role = Role::noMatch;

        bool operator==(const ChannelCheck&) const = default;
    };

    // The step that decided the recorded outcome.
    struct Step {
        enum class Kind {
            rang,
            disabled,
            cooldown,
            alreadyActive,
            notAuthorized,
            limit,
            failed,
            noMatch,
            notRouted
        };

        Kind kind = Kind::noMatch;
        std::string text;
        // The earlier event that rang: the one whose cooldown held this back,
        // or whose alarm was still active.
        std::optional<std::string> earlierEventID;
        std::optional<Date> earlierDate;

        bool operator==(const Step&) const = default;
    };

    std::vector<ChannelCheck> channels;
    std::optional<Uuid> winner; // today's first enabled match
    Step step;
    // Set when today's channels would not decide as the record says, with the
    // channel that made the difference (by name; it may be deleted).
    std::optional<std::string> difference;
    std::optional<std::string> changedChannel;

    bool operator==(const RouteExplanation&) const = default;
};

std::string_view rawValue(RouteExplanation::ChannelCheck::Role role);
std::string_view rawValue(RouteExplanation::Step::Kind kind);

// {"channels": [{"id", "name", "isEnabled", "role", "matches", "checks"}],
//  "winner"?, "step": {"kind", "text", "earlierEventID"?, "earlierDate"?},
//  "difference"?, "changedChannel"?}
json::Json toJson(const RouteExplanation& explanation);

namespace RouteExplainer {

// Replays the routing of `event` with what was known then: the notification,
// `history` (the notifications recorded before it), `earlier` (the events
// recorded before it, newest first, for the cooldown and the active alarm)
// and today's `channels` in priority order, in `calendar` at the event's own
// date, matching patterns within `budget` (a check cut short says so). Pure.
RouteExplanation explain(const RecordedRoute& event, const std::vector<RecordedRoute>& earlier,
                         const std::vector<NotificationInfo>& history,
                         const std::vector<NamedChannel>& channels, const Calendar& calendar,
                         MatchBudget& budget);

} // namespace RouteExplainer
} // namespace ringwell
