#pragma once

#include "Core/Date.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// Whether a sender has already rung a channel recently. The cooldown is per
// channel and per sender: the caller passes only the channel's own firings,
// and another sender rings the same channel at once.
namespace Cooldown {

// One earlier ring of the channel: who it was for (the notification's `from`)
// and when it happened.
struct Firing {
    std::string sender;
    Date date;

    bool operator==(const Firing&) const = default;
};

// True when some firing has a sender equal to `from` ignoring case and lies
// less than `seconds` before `at`. Firings dated after `at` never count, and a
// cooldown below one second is off.
bool isActive(std::int64_t seconds, std::string_view from, Date at,
              const std::vector<Firing>& previousFirings);

} // namespace Cooldown
} // namespace ringwell
