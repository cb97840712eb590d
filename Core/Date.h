#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace ringwell {

// A point in time, the one date type of the project. Its JSON form is a number
// of seconds since the reference date 2001-01-01 00:00:00 UTC.
struct Date {
    double secondsSinceReferenceDate = 0;

    // Seconds between the Unix epoch and the reference date.
    static constexpr double referenceDateUnixSeconds = 978307200.0;

    static Date fromUnixSeconds(double seconds) { return {seconds - referenceDateUnixSeconds}; }
    double unixSeconds() const { return secondsSinceReferenceDate + referenceDateUnixSeconds; }
    // Milliseconds since the Unix epoch, ICU's UDate.
    double unixMilliseconds() const { return unixSeconds() * 1000.0; }
    static Date fromUnixMilliseconds(double ms) { return fromUnixSeconds(ms / 1000.0); }

    Date addingSeconds(double seconds) const { return {secondsSinceReferenceDate + seconds}; }
    // Seconds from `earlier` to this date (negative when this date is earlier).
    double secondsSince(Date earlier) const {
        return secondsSinceReferenceDate - earlier.secondsSinceReferenceDate;
    }

    auto operator<=>(const Date&) const = default;
    bool operator==(const Date&) const = default;
};

// ISO 8601 internet date-time, e.g. "2025-01-02T03:04:05Z" or
// "2025-01-02T03:04:05.123+01:00": full date and time with a zone designator.
// A bare date, a missing zone, trailing text, a field out of range or a
// fraction of more than nine digits give no value; the text is checked before
// ICU reads it, so any text is safe to pass.
std::optional<Date> parseIso8601(std::string_view text);

// "2025-01-02T03:04:05Z": UTC, whole seconds (truncated), trailing "Z".
std::string formatIso8601(Date date);

} // namespace ringwell
