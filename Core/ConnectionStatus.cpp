#include "Core/ConnectionStatus.h"

#include "Core/Iso8601.h"
#include "Core/TextFolding.h"

#include <unicode/reldatefmt.h>

#include <algorithm>
#include <cmath>

namespace ringwell {
namespace {

struct UnitSize {
    URelativeDateTimeUnit unit;
    double seconds;
};

constexpr double minute = 60;
constexpr double hour = 60 * minute;
constexpr double day = 24 * hour;

// Largest first. Months and years are measured as 30 and 365 days: the label
// is a rough indication, and no calendar is at hand here.
constexpr UnitSize unitSizes[] = {
    {UDAT_REL_UNIT_YEAR, 365 * day}, {UDAT_REL_UNIT_MONTH, 30 * day},
    {UDAT_REL_UNIT_WEEK, 7 * day},   {UDAT_REL_UNIT_DAY, day},
    {UDAT_REL_UNIT_HOUR, hour},      {UDAT_REL_UNIT_MINUTE, minute},
};

} // namespace

ConnectionStatus ConnectionStatus::of(const Uuid& channel,
                                      const std::vector<Trigger>& eventsNewestFirst) {
    ConnectionStatus status;
    for (const auto& event : eventsNewestFirst) {
        if (event.channelID != channel)
            continue;
        if (!status.lastTriggered)
            status.lastTriggered = event.receivedAt;
        ++status.count;
    }
    return status;
}

std::string ConnectionStatus::label(Date now) const {
    if (!lastTriggered)
        return "Never triggered";
    return "Last triggered " + relativeDescription(*lastTriggered, now);
}

bool ConnectionStatus::isReaching(std::string_view app, const std::vector<std::string>& knownApps) {
    const std::string wanted = text::lowercased(app);
    return std::any_of(knownApps.begin(), knownApps.end(),
                       [&](const std::string& known) { return text::lowercased(known) == wanted; });
}

std::string relativeDescription(Date date, Date now) {
    const double interval = date.secondsSince(now); // negative in the past
    URelativeDateTimeUnit unit = UDAT_REL_UNIT_SECOND;
    double offset = std::trunc(interval);
    for (const auto& size : unitSizes) {
        if (std::fabs(interval) >= size.seconds) {
            unit = size.unit;
            offset = std::trunc(interval / size.seconds);
            break;
        }
    }

    // Less than a second either way is "now", never "0 seconds ago" from a negative zero.
    if (offset == 0)
        offset = 0;

    UErrorCode status = U_ZERO_ERROR;
    icu::RelativeDateTimeFormatter formatter(icu::Locale::getEnglish(), nullptr, UDAT_STYLE_LONG,
                                             UDISPCTX_CAPITALIZATION_NONE, status);
    icu::UnicodeString formatted;
    // `format` uses a named form ("yesterday", "now", "last week") where the
    // locale has one and a number ("2 hours ago") otherwise.
    formatter.format(offset, unit, formatted, status);
    if (U_FAILURE(status))
        return formatIso8601(date);
    std::string out;
    formatted.toUTF8String(out);
    return out;
}

} // namespace ringwell
