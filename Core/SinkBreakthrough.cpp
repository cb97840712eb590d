#include "Core/SinkBreakthrough.h"

#include "Core/Json.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace ringwell {
namespace {

json::Json levelJson(const SinkLevel& level) {
    return json::Json{{"muted", level.muted}, {"volume", level.volume}};
}

SinkLevel levelFromJson(const json::Json& object, std::string_view key) {
    const json::Json* value = json::member(object, key);
    if (!value || !value->is_object())
        throw json::DecodeError("\"" + std::string(key) + "\": expected an object");
    const json::Json* volume = json::member(*value, "volume");
    if (!volume || !volume->is_number() || *volume < 0)
        throw json::DecodeError("\"volume\": expected a number of at least 0");
    return SinkLevel{json::requireBool(*value, "muted"), volume->get<double>()};
}

bool sameVolumes(double a, double b) {
    return std::abs(a - b) < SinkBreakthrough::sameVolume;
}

bool sameLevel(const SinkLevel& a, const SinkLevel& b) {
    return a.muted == b.muted && sameVolumes(a.volume, b.volume);
}

} // namespace

json::Json toJson(const SavedSink& saved) {
    json::Json out{{"sink", saved.sink},
                   {"original", levelJson(saved.original)},
                   {"applied", levelJson(saved.applied)}};
    if (saved.previous)
        out["previous"] = levelJson(*saved.previous);
    return out;
}

SavedSink savedSinkFromJson(const json::Json& value) {
    json::requireObject(value, "saved sink");
    SavedSink saved{json::requireString(value, "sink"), levelFromJson(value, "original"),
                    levelFromJson(value, "applied"), std::nullopt};
    if (json::member(value, "previous") && !value.at("previous").is_null())
        saved.previous = levelFromJson(value, "previous");
    return saved;
}

namespace SinkBreakthrough {

std::optional<SinkLevel> target(SinkLevel current, const BreakthroughSettings& settings,
                                bool headphones) {
    if (!settings.ringThroughMute)
        return std::nullopt;
    double wanted = std::clamp(settings.alarmVolumePercent, 0, 100) / 100.0;
    if (headphones)
        wanted = std::min(wanted, headphoneCap);
    // An audible sink louder than the alarm volume is left as it is.
    if (!current.muted && current.volume >= wanted - sameVolume / 2)
        return std::nullopt;
    return SinkLevel{false, wanted};
}

std::vector<SinkLevel> fadeSteps(SinkLevel current, SinkLevel target) {
    const double start = current.muted ? std::min(fadeFloor, target.volume)
                                       : std::min(current.volume, target.volume);
    std::vector<SinkLevel> steps;
    steps.reserve(fadeStepCount);
    for (int step = 1; step <= fadeStepCount; ++step) {
        const double share = static_cast<double>(step) / fadeStepCount;
        steps.push_back(SinkLevel{false, start + (target.volume - start) * share});
    }
    steps.back().volume = target.volume;
    return steps;
}

bool untouched(SinkLevel now, const SavedSink& saved) {
    return sameLevel(now, saved.applied) || (saved.previous && sameLevel(now, *saved.previous));
}

std::optional<SinkLevel> restore(SinkLevel now, const SavedSink& saved) {
    // The level Ringwell left, of the two the file allows, that `now` is.
    const SinkLevel& left =
        saved.previous && sameLevel(now, *saved.previous) ? *saved.previous : saved.applied;
    SinkLevel wanted = now;
    if (now.muted == left.muted)
        wanted.muted = saved.original.muted;
    if (sameVolumes(now.volume, left.volume))
        wanted.volume = saved.original.volume;
    if (sameLevel(wanted, now))
        return std::nullopt;
    return wanted;
}

bool isHeadphonePort(const std::string& portName, bool typedAsHeadphones) {
    if (typedAsHeadphones)
        return true;
    std::string lower = portName;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower.find("headphone") != std::string::npos ||
           lower.find("headset") != std::string::npos;
}

} // namespace SinkBreakthrough
} // namespace ringwell
