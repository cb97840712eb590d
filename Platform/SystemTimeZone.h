#pragma once

#include "Core/Calendar.h"

#include <filesystem>
#include <optional>
#include <string>

namespace ringwell {

// The time zone the system is in now, looked up afresh on every call so that a
// change (`timedatectl set-timezone`, a new `TZ`) takes effect without a
// restart. ICU's own default zone is fixed at its first use and is therefore
// only the last resort.
//
// Blocking but cheap (an environment variable and a symbolic link); any thread.
namespace SystemTimeZone {

// Where the zone is named. `tz` is the value of the TZ variable, null when unset.
struct Sources {
    const char* tz = nullptr;
    std::filesystem::path localtime = "/etc/localtime";
    std::filesystem::path timezoneFile = "/etc/timezone";
};

// The zone id the sources name, in this order: TZ (":" prefix allowed; empty
// means UTC; an absolute path names a zone file), the zone file that
// `localtime` links to, the first line of `timezoneFile`. None when none of
// them names one; the caller then checks the id with ICU.
std::optional<std::string> zoneId(const Sources& sources);

// The calendar of the system's zone now: the zone `zoneId` names for the real
// TZ and files when ICU knows it, else ICU's detection of the host's zone.
Calendar currentCalendar();

} // namespace SystemTimeZone
} // namespace ringwell
