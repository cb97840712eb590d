#pragma once

#include <compare>

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

} // namespace ringwell
