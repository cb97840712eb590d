#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ringwell {

// A colour with red, green and blue components in 0...1.
struct TintColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    bool operator==(const TintColor&) const = default;
};

// "#RRGGBB" in upper-case hex: each component clamped to 0...1 (NaN reads as
// 0) and scaled to 0...255, rounded to the nearest integer.
std::string tintHex(TintColor color);
// The colour of "#RRGGBB" (hex digits in either case); none for any other form.
std::optional<TintColor> tintColor(std::string_view hex);

// The eight colours that new channels take in turn.
namespace ChannelPalette {

inline constexpr std::array<std::string_view, 8> colors = {
    "#FF3B30", "#FF9500", "#FFCC00", "#34C759", "#00C7BE", "#007AFF", "#AF52DE", "#FF2D55",
};

// What the colour picker calls each of `colors`, in the same order.
inline constexpr std::array<std::string_view, colors.size()> names = {
    "Red", "Orange", "Yellow", "Green", "Teal", "Blue", "Purple", "Pink",
};

// Red: the first channel's colour and the colour of a channel whose file names none.
inline constexpr std::string_view defaultTint = colors[0];

// The colour of a new channel when `existingChannels` channels exist before it.
inline std::string tintForNewChannel(std::size_t existingChannels) {
    return std::string(colors[existingChannels % colors.size()]);
}

} // namespace ChannelPalette
} // namespace ringwell
