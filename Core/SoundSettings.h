#pragma once

#include "Core/JsonFwd.h"
#include "Core/Result.h"
#include "Core/SinkBreakthrough.h"

#include <functional>
#include <optional>
#include <span>
#include <string_view>

// The person's sound settings, "Ring through mute" and "Alarm volume", kept
// among the user defaults under the keys below. Pure: reading takes a lookup
// of stored values, checking takes the value a client sent.
namespace ringwell::SoundSettings {

inline constexpr std::string_view ringThroughMute = "ringThroughMute";
inline constexpr std::string_view alarmVolume = "alarmVolume";
inline constexpr int lowestAlarmVolume = 10;

// The keys in the order they are listed.
std::span<const std::string_view> keys();

// The settings from the stored values; a missing or unusable value reads as
// its default (on, 70%).
BreakthroughSettings read(const std::function<std::optional<json::Json>(std::string_view)>& value);

// The settings as JSON, keyed as stored.
json::Json toJson(const BreakthroughSettings& settings);

// The value to store for `key`, or why it cannot be stored: an unknown key
// (notFound, naming the known ones) or a value of the wrong kind
// (invalidInput). "Ring through mute" takes true or false; "Alarm volume" a
// whole number of percent from 10 to 100.
Result<json::Json> check(std::string_view key, const json::Json& value);

} // namespace ringwell::SoundSettings
