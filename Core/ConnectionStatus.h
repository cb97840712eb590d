#pragma once

#include "Core/Date.h"
#include "Core/Uuid.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// Whether notifications reach a channel: how often the activity log
// attributes an event to it and when it last did. Every attributed event
// counts, whatever happened to it afterwards.
struct ConnectionStatus {
    // What the status needs of one activity-log event.
    struct Trigger {
        std::optional<Uuid> channelID;
        Date receivedAt;

        bool operator==(const Trigger&) const = default;
    };

    std::optional<Date> lastTriggered;
    std::int64_t count = 0;

    // The status of one channel from the log's events, newest first.
    static ConnectionStatus of(const Uuid& channel, const std::vector<Trigger>& eventsNewestFirst);

    // "Last triggered yesterday", "Last triggered 2 hours ago", or "Never
    // triggered". The relative date is measured from `now` in the largest unit
    // that the interval fills at least once.
    std::string label(Date now) const;

    // Whether an app named in a rule has ever sent a forwarded notification.
    // Names are compared lower-cased and otherwise exactly, so "Mail " with a
    // trailing space does not reach when only "Mail" is known.
    static bool isReaching(std::string_view app, const std::vector<std::string>& knownApps);

    bool operator==(const ConnectionStatus&) const = default;
};

// "yesterday", "2 hours ago", "in 5 minutes", "now": the English relative
// description of `date` seen from `now`, with ICU's named forms where it has them.
std::string relativeDescription(Date date, Date now);

} // namespace ringwell
