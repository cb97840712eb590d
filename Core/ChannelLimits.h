#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// The bounds of a channel's editable values, used by the channel editor and
// when a channel is saved. Names are measured in user-perceived characters.
namespace ChannelLimits {

// A closed range of seconds.
struct SecondsRange {
    std::int64_t lower;
    std::int64_t upper;

    std::int64_t clamp(std::int64_t seconds) const {
        return seconds < lower ? lower : (seconds > upper ? upper : seconds);
    }
    bool operator==(const SecondsRange&) const = default;
};

inline constexpr std::size_t nameLimit = 40;
inline constexpr SecondsRange countdownRange{5, 1800};
inline constexpr SecondsRange snoozeRange{60, 1800};
inline constexpr std::array<std::int64_t, 10> countdownPresets{5,   10,  15,  30,  60,
                                                               120, 300, 600, 900, 1800};
inline constexpr std::array<std::int64_t, 6> snoozePresets{60, 120, 300, 600, 900, 1800};

// Applied while typing: a name longer than `nameLimit` keeps its first
// `nameLimit` characters; shorter names are returned unchanged.
std::string clampName(std::string_view name);

// Applied when a channel is saved: "Untitled" when the name is blank once
// spaces and tabs are trimmed (line breaks are not blank here); otherwise the
// untrimmed name cut to `nameLimit` characters.
std::string finalizedName(std::string_view name);

std::int64_t clampCountdown(std::int64_t seconds);
std::int64_t clampSnooze(std::int64_t seconds);

// The presets as they are when they hold `value`; otherwise the presets with
// the value added in ascending order, so a picker can show a stored value that
// is not a preset.
std::vector<std::int64_t> options(std::span<const std::int64_t> presets, std::int64_t value);

} // namespace ChannelLimits
} // namespace ringwell
