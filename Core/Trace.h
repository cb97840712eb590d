#pragma once

#include "Core/Calendar.h"
#include "Core/JsonFwd.h"
#include "Core/NotificationInfo.h"
#include "Core/Router.h"
#include "Core/Uuid.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ringwell {

// A channel as a trace or an explanation shows it: what routing needs, and
// the name a person recognises.
struct NamedChannel {
    RoutableChannel routable;
    std::string name;

    bool operator==(const NamedChannel&) const = default;
};

// What routing among all channels would do with one replayed notification.
struct TraceLine {
    enum class Kind {
        rings,      // `channel` would ring
        cooledDown, // `channel` would win, but its cooldown holds the alarm back
        disabled,   // only `channel`, which is off, would match
        noMatch     // no channel would match
    };

    NotificationInfo notification;
    Kind kind = Kind::noMatch;
    std::optional<Uuid> channelID; // for every kind but noMatch
    std::string channelName;

    bool operator==(const TraceLine&) const = default;
};

// A whole trace: one line per replayed notification, newest first, and the
// rings counted per channel.
struct TraceReport {
    struct Count {
        std::string channelName;
        std::int64_t count = 0;

        bool operator==(const Count&) const = default;
    };

    std::vector<TraceLine> lines;
    std::vector<Count> ringsByChannel; // most rings first, then in channel order
    std::int64_t rings = 0;
    std::int64_t quiet = 0;

    // "7 would ring: 5 Prod incidents, 2 Calls from Mom; 43 stay quiet".
    std::string summary() const;

    bool operator==(const TraceReport&) const = default;
};

// {"summary", "rings", "quiet", "ringsByChannel": [{"channelName", "count"}],
//  "lines": [{"notification", "kind", "channelID"?, "channelName"?}]}
json::Json toJson(const TraceReport& report);
std::string_view rawValue(TraceLine::Kind kind);

// Replays notifications through routing among all channels: which channel
// would ring for each, or why none would. Pure; it changes nothing.
namespace Trace {

// Replays the newest `count` of `notificationsNewestFirst`, oldest first; the
// older ones serve only as the history of frequency conditions. Each sees the
// notifications older than itself as its history, and the cooldown of a
// channel counts only the rings of the replay itself, per sender. To judge
// every notification as if it had arrived at one weekday and time, pass a
// calendar pinned to that moment (Calendar::pinnedTo): the dates themselves
// still place notifications in frequency windows and cooldowns. Patterns are
// matched within `budget`, one for the whole replay; once it is spent, the
// remaining patterns count as not matching (see MatchBudget).
TraceReport run(const std::vector<NamedChannel>& channels,
                const std::vector<NotificationInfo>& notificationsNewestFirst, std::size_t count,
                const Calendar& calendar, MatchBudget& budget);

} // namespace Trace
} // namespace ringwell
