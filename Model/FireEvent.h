#pragma once

#include "Core/Date.h"
#include "Core/Escalation.h"
#include "Core/JsonFwd.h"
#include "Core/NotificationInfo.h"
#include "Core/Uuid.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// How one activity-log entry ended. Decoding an unknown raw value is an error.
enum class FireOutcome {
    fired,
    coalesced,
    cooledDown,
    skipped,
    noMatch,
    failed,
    setupTest,
    ignored,
    silent // a watched app sent nothing for longer than expected
};

// The colour of an outcome's row icon.
enum class OutcomeIconTint { secondary, red };

namespace FireOutcomes {
inline constexpr FireOutcome allCases[] = {
    FireOutcome::fired,     FireOutcome::coalesced, FireOutcome::cooledDown,
    FireOutcome::skipped,   FireOutcome::noMatch,   FireOutcome::failed,
    FireOutcome::setupTest, FireOutcome::ignored,   FireOutcome::silent};
}

std::string_view rawValue(FireOutcome outcome);
std::optional<FireOutcome> fireOutcomeFromRaw(std::string_view raw);

// The one label and icon mapping shared by the log, the detail view, the
// statistics and the diagnostics report: "Fired", "Alarm already active", ...
std::string_view label(FireOutcome outcome);
// A symbol name: "alarm.waves.left.and.right.fill", "square.stack", ...
std::string_view icon(FireOutcome outcome);
// Red for `failed`, the secondary colour otherwise.
OutcomeIconTint iconTint(FireOutcome outcome);

// One entry of the activity log: what arrived, which channel took it, which
// alarms were scheduled and how it ended. A plain value compared over all fields.
struct FireEvent {
    Uuid id;
    std::optional<Uuid> channelID;
    std::optional<std::string> channelName; // the name at the time, kept after a rename or delete
    std::optional<Uuid> alarmID;
    std::optional<std::vector<Uuid>> followUpAlarmIDs; // an empty list stays present
    std::optional<std::string> app;
    std::optional<std::string> sender;
    std::optional<std::string> title;
    std::optional<std::string> subtitle;
    std::optional<std::string> body;
    std::optional<bool> isTimeSensitive;
    std::optional<std::vector<ReceivedField>> received;
    Date receivedAt;
    Date firedAt;
    FireOutcome outcome = FireOutcome::noMatch;
    std::optional<std::string> errorMessage; // the reason of a `failed` event
    bool isTest = false;
    // The routing ran out of its matching budget: patterns left unchecked
    // counted as not matching, so a channel that needed one did not take it.
    bool routingCutShort = false;
    // What the channel's escalation did while this event's alarm rang, in order.
    std::vector<EscalationRecord> escalations;

    // The notification again: absent texts as empty ones, dated `receivedAt`,
    // not time-sensitive unless recorded so, `received` as recorded.
    NotificationInfo notification() const;

    bool operator==(const FireEvent&) const = default;
};

// Whether the event's notification was really forwarded: not a test, from an
// app, and not one of Ringwell's own notices. Only those make the history
// that rules, previews and traces replay.
bool isForwardedNotification(const FireEvent& event);

// The keys in declaration order; absent optionals, a false `routingCutShort` and
// empty `escalations` are left out.
json::Json toJson(const FireEvent& event);
// `id`, `receivedAt`, `firedAt`, `outcome` and `isTest` are required; a missing
// or mistyped key (null included) or an unknown outcome throws json::DecodeError.
FireEvent fireEventFromJson(const json::Json& value);

} // namespace ringwell

// Consistent with equality: equal events share their id.
template <> struct std::hash<ringwell::FireEvent> {
    std::size_t operator()(const ringwell::FireEvent& event) const noexcept {
        return std::hash<ringwell::Uuid>()(event.id);
    }
};
