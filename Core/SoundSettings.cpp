#include "Core/SoundSettings.h"

#include "Core/Json.h"

#include <array>
#include <cmath>
#include <string>

namespace ringwell::SoundSettings {
namespace {

const std::array<std::string_view, 2> allKeys{ringThroughMute, alarmVolume};

std::string keyList() {
    std::string list;
    for (auto key : allKeys)
        list += (list.empty() ? "" : ", ") + std::string(key);
    return list;
}

} // namespace

std::span<const std::string_view> keys() {
    return allKeys;
}

BreakthroughSettings read(const std::function<std::optional<json::Json>(std::string_view)>& value) {
    BreakthroughSettings settings;
    for (auto key : allKeys) {
        auto stored = value(key);
        if (!stored || !check(key, *stored))
            continue;
        if (key == ringThroughMute)
            settings.ringThroughMute = stored->get<bool>();
        else
            settings.alarmVolumePercent = stored->get<int>();
    }
    return settings;
}

json::Json toJson(const BreakthroughSettings& settings) {
    return json::Json{{std::string(ringThroughMute), settings.ringThroughMute},
                      {std::string(alarmVolume), settings.alarmVolumePercent}};
}

Result<json::Json> check(std::string_view key, const json::Json& value) {
    if (key == ringThroughMute) {
        if (!value.is_boolean())
            return Error{"ringThroughMute must be true or false", Error::Kind::invalidInput};
        return value;
    }
    if (key == alarmVolume) {
        const double percent = value.is_number() ? value.get<double>() : -1;
        if (percent < lowestAlarmVolume || percent > 100 || percent != std::floor(percent))
            return Error{"alarmVolume must be a whole number of percent from " +
                             std::to_string(lowestAlarmVolume) + " to 100",
                         Error::Kind::invalidInput};
        return json::Json(static_cast<int>(percent));
    }
    return Error{"unknown setting '" + std::string(key) + "' (settings: " + keyList() + ")",
                 Error::Kind::notFound};
}

} // namespace ringwell::SoundSettings
