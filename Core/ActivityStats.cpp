#include "Core/ActivityStats.h"

#include <algorithm>
#include <limits>
#include <map>

namespace ringwell {
namespace {

std::vector<Date> dayStarts(int days, Date today, const Calendar& calendar) {
    std::vector<Date> starts;
    for (int offset = -(days - 1); offset <= 0; ++offset) {
        // Adding calendar days to local midnight keeps local midnight across a
        // change of daylight saving time, where adding 24 hours would not.
        if (auto start = calendar.addingDays(today, offset))
            starts.push_back(*start);
    }
    return starts;
}

} // namespace

ActivityStats ActivityStats::compute(const std::vector<Event>& events, int days, Date now,
                                     const Calendar& calendar, std::int64_t top) {
    const Date today = calendar.startOfDay(now).value_or(now);
    const std::vector<Date> starts = dayStarts(std::max(days, 0), today, calendar);
    const Date periodStart = starts.empty() ? today : starts.front();

    std::vector<const Event*> period;
    for (const auto& event : events) {
        if (!event.isTest && event.date >= periodStart && event.date <= now)
            period.push_back(&event);
    }

    ActivityStats stats;
    for (Date start : starts) {
        Day day{start, 0, 0};
        for (const Event* event : period) {
            if (calendar.isSameDay(event->date, start)) {
                ++day.received;
                day.rang += event->rang ? 1 : 0;
            }
        }
        stats.days.push_back(day);
    }

    std::vector<std::string> apps;
    std::vector<std::string> channels;
    std::vector<std::string> outcomes;
    for (const Event* event : period) {
        if (event->app)
            apps.push_back(*event->app);
        if (event->rang && event->channelName)
            channels.push_back(*event->channelName);
        outcomes.push_back(event->outcome);
        ++stats.received;
        stats.rang += event->rang ? 1 : 0;
    }
    stats.topApps = counts(apps, top);
    stats.topChannels = counts(channels, top);
    stats.outcomes = counts(outcomes, std::numeric_limits<std::int64_t>::max());
    return stats;
}

std::vector<ActivityStats::Count> ActivityStats::counts(const std::vector<std::string>& names,
                                                        std::int64_t top) {
    // std::string orders its bytes as unsigned values, and UTF-8 byte order is
    // code point order, so the map already holds the names in the tie-break order.
    std::map<std::string, std::int64_t> grouped;
    for (const auto& name : names)
        ++grouped[name];

    std::vector<Count> result;
    result.reserve(grouped.size());
    for (auto& [name, count] : grouped)
        result.push_back({name, count});
    std::stable_sort(result.begin(), result.end(),
                     [](const Count& a, const Count& b) { return a.count > b.count; });
    if (top < static_cast<std::int64_t>(result.size()))
        result.resize(static_cast<std::size_t>(std::max<std::int64_t>(top, 0)));
    return result;
}

} // namespace ringwell
