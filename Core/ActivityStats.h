#pragma once

#include "Core/Calendar.h"
#include "Core/Date.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ringwell {

// The figures of the statistics screen, condensed from the activity log over
// the last few calendar days: notifications received and rung per day, the
// busiest apps and channels, and how notifications ended. Setup-test
// notifications count nowhere. Pure: the caller passes now and the calendar.
struct ActivityStats {
    // One logged notification, as the statistics need it.
    struct Event {
        Date date; // when it was received
        std::optional<std::string> app;
        std::optional<std::string> channelName;
        std::string outcome; // the outcome's display label
        bool rang = false;
        bool isTest = false;

        bool operator==(const Event&) const = default;
    };

    // One calendar day of the period, starting at local midnight.
    struct Day {
        Date start;
        std::int64_t received = 0;
        std::int64_t rang = 0;

        bool operator==(const Day&) const = default;
    };

    struct Count {
        std::string name;
        std::int64_t count = 0;

        bool operator==(const Count&) const = default;
    };

    std::vector<Day> days; // oldest first
    std::vector<Count> topApps;
    std::vector<Count> topChannels; // channels that rang, not those that only matched
    std::vector<Count> outcomes;    // every outcome of the period, not truncated
    std::int64_t received = 0;
    std::int64_t rang = 0;

    // The statistics of the `days` calendar days up to and including the day of
    // `now`, in `calendar`. Events after `now` are left out. The tops keep at
    // most `top` entries. A negative number of days counts as none.
    static ActivityStats compute(const std::vector<Event>& events, int days, Date now,
                                 const Calendar& calendar, std::int64_t top);

    // Equal names counted, ordered by count descending and then by name in
    // code point order (upper case before lower case), at most `top` of them.
    static std::vector<Count> counts(const std::vector<std::string>& names, std::int64_t top);

    bool operator==(const ActivityStats&) const = default;
};

} // namespace ringwell
