#include "Core/Cooldown.h"

#include "Core/TextFolding.h"

#include <algorithm>

namespace ringwell::Cooldown {

bool isActive(std::int64_t seconds, std::string_view from, Date at,
              const std::vector<Firing>& previousFirings) {
    if (seconds < 1)
        return false;
    const auto period = static_cast<double>(seconds);
    return std::any_of(previousFirings.begin(), previousFirings.end(), [&](const Firing& firing) {
        return firing.date <= at && at.secondsSince(firing.date) < period &&
               text::equalsIgnoringCase(firing.sender, from);
    });
}

} // namespace ringwell::Cooldown
