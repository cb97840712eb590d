#include "Core/ChannelLimits.h"

#include "Core/Utf8.h"
#include "Core/Whitespace.h"

#include <algorithm>

namespace ringwell::ChannelLimits {

std::string clampName(std::string_view name) {
    return text::prefixCharacters(name, nameLimit);
}

std::string finalizedName(std::string_view name) {
    if (text::trimmedHorizontal(name).empty())
        return "Untitled";
    return clampName(name);
}

std::int64_t clampCountdown(std::int64_t seconds) {
    return countdownRange.clamp(seconds);
}

std::int64_t clampSnooze(std::int64_t seconds) {
    return snoozeRange.clamp(seconds);
}

std::vector<std::int64_t> options(std::span<const std::int64_t> presets, std::int64_t value) {
    std::vector<std::int64_t> result(presets.begin(), presets.end());
    if (std::find(result.begin(), result.end(), value) != result.end())
        return result;
    result.push_back(value);
    std::stable_sort(result.begin(), result.end());
    return result;
}

} // namespace ringwell::ChannelLimits
