#pragma once

#include "Core/Date.h"

#include <unicode/calendar.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ringwell {

// A Gregorian calendar in one time zone. It is always passed in, never read
// from a global, so tests can pin a zone and the daemon can use the user's.
// An instance is not safe to use from two threads at once (ICU calendars keep
// their working time); copy it instead.
class Calendar {
public:
    // The user's calendar: the zone of `TZ`, else the system's zone.
    static Calendar userDefault();
    // A calendar in the named IANA zone ("Europe/Berlin"); none when the zone is unknown.
    static std::optional<Calendar> inTimeZone(std::string_view zoneId);

    Calendar(const Calendar& other);
    Calendar& operator=(const Calendar& other);
    Calendar(Calendar&&) noexcept;
    Calendar& operator=(Calendar&&) noexcept;
    ~Calendar();

    struct Components {
        int weekday = 0; // 1 = Sunday ... 7 = Saturday
        int hour = 0;
        int minute = 0;

        bool operator==(const Components&) const = default;
    };
    std::optional<Components> components(Date date) const;

    // This calendar, but reading every moment as the weekday, hour and minute
    // of `face`: rules judge their active hours as if the notification had
    // arrived then, while its date still places it in frequency windows. The
    // day arithmetic below is unaffected.
    Calendar pinnedTo(Components face) const;

    // Local midnight of the day that holds `date`.
    std::optional<Date> startOfDay(Date date) const;
    // The same local time `days` calendar days later (or earlier when negative).
    std::optional<Date> addingDays(Date date, int days) const;
    bool isSameDay(Date a, Date b) const;

    std::string timeZoneId() const;

    // "2025-06-02 12:00" in this calendar's zone, for texts that name a moment.
    std::string localText(Date date) const;

private:
    explicit Calendar(std::unique_ptr<icu::Calendar> calendar);
    std::unique_ptr<icu::Calendar> calendar_;
    std::optional<Components> pinned_;
};

} // namespace ringwell
