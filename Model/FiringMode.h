#pragma once

#include "Core/JsonFwd.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ringwell {

// Whether a channel's alarm rings at once or after its countdown. Unlike
// AlarmTone, an unknown raw value is an error, never a default.
enum class FiringMode { immediate, countdown };

namespace FiringModes {
inline constexpr FiringMode allCases[] = {FiringMode::immediate, FiringMode::countdown};
}

std::string_view rawValue(FiringMode mode);
std::optional<FiringMode> firingModeFromRaw(std::string_view raw);

// "30s", "1m 30s", "5m": minutes and seconds in narrow units, zero units left
// out ("0s" when both are zero). Negative values read as zero.
std::string formatCountdown(std::int64_t seconds);

// The short badge of a channel: "Immediate", or "Countdown " and the countdown.
std::string modeBadge(FiringMode mode, std::int64_t countdownSeconds);

json::Json toJson(FiringMode mode);
// Throws json::DecodeError naming `key` for a non-string or an unknown mode.
FiringMode firingModeFromJson(const json::Json& value, std::string_view key);

} // namespace ringwell
