#pragma once

#include "Core/Calendar.h"
#include "Core/ChannelRule.h"
#include "Core/Date.h"
#include "Core/JsonFwd.h"
#include "Core/Uuid.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ringwell {

// A watch on one app's forwarding: at least one notification every
// `everySeconds` of watched time, the time inside `hours` (around the clock
// when absent). A silence longer than that means forwarding may have stopped.
// An app named "device:NAME" is the LAN device NAME: any notification it
// sends counts.
struct WatchExpectation {
    static constexpr std::int64_t minimumSeconds = 60;
    static constexpr std::int64_t maximumSeconds = 7 * 24 * 3600;

    std::string app; // as typed; compared ignoring case
    std::int64_t everySeconds = 3600;
    std::optional<ActiveHours> hours;
    Date since; // when the watch began: the start of the silence before any notification
    std::optional<Uuid> ring; // the channel that rings when the silence is told

    // "every 3 h, Weekdays 09:00–17:00", "every 90 min, any time".
    std::string summary() const;

    bool operator==(const WatchExpectation&) const = default;
};

// {"app", "everySeconds", "hours"?, "since", "ring"?}
json::Json toJson(const WatchExpectation& watch);
// Throws json::DecodeError for a missing or mistyped key.
WatchExpectation watchExpectationFromJson(const json::Json& value);

// What is wrong with a watch a person asks for, in their words; none when it
// can be kept: a blank app or one with "/", an interval outside one minute to seven days, a
// weekday outside 1…7 or a minute outside 0…1439.
std::optional<std::string> problem(const WatchExpectation& watch);

// The app a LAN device's notifications count for: "device:NAME".
std::string deviceWatchName(std::string_view device);

namespace Silence {

// When a silence that began at `lastHeard` misses the expectation: the first
// moment by which `everySeconds` of watched time have passed, judged minute by
// minute in `calendar` (daylight saving included). None when the watched
// hours do not add up to that within 60 days.
std::optional<Date> dueAt(const WatchExpectation& watch, Date lastHeard, const Calendar& calendar);

// "No notifications from APP since TIME — is forwarding still working?"
std::string noticeText(std::string_view app, Date lastHeard, const Calendar& calendar);

} // namespace Silence
} // namespace ringwell
