#include "Model/FiringMode.h"
#include "Core/Json.h"

#include <unicode/measfmt.h>
#include <unicode/measunit.h>
#include <unicode/measure.h>

#include <memory>
#include <vector>

namespace ringwell {
namespace {

// One formatter per thread: ICU formatters are not safe to share between
// threads, and building one costs far more than using it.
const icu::MeasureFormat* narrowFormat() {
    thread_local std::unique_ptr<icu::MeasureFormat> format = [] {
        UErrorCode status = U_ZERO_ERROR;
        auto created = std::make_unique<icu::MeasureFormat>(icu::Locale::getEnglish(),
                                                            UMEASFMT_WIDTH_NARROW, status);
        if (U_FAILURE(status))
            created.reset();
        return created;
    }();
    return format.get();
}

// Used only when ICU cannot give a formatter (no locale data); same text for English.
std::string plainCountdown(std::int64_t minutes, std::int64_t seconds) {
    std::string out;
    if (minutes > 0)
        out = std::to_string(minutes) + "m";
    if (seconds > 0 || minutes == 0)
        out += (out.empty() ? "" : " ") + std::to_string(seconds) + "s";
    return out;
}

} // namespace

std::string_view rawValue(FiringMode mode) {
    switch (mode) {
    case FiringMode::immediate:
        return "immediate";
    case FiringMode::countdown:
        return "countdown";
    }
    return "immediate";
}

std::optional<FiringMode> firingModeFromRaw(std::string_view raw) {
    for (auto mode : FiringModes::allCases) {
        if (rawValue(mode) == raw)
            return mode;
    }
    return std::nullopt;
}

std::string formatCountdown(std::int64_t totalSeconds) {
    if (totalSeconds < 0)
        totalSeconds = 0;
    const std::int64_t minutes = totalSeconds / 60;
    const std::int64_t seconds = totalSeconds % 60;
    const icu::MeasureFormat* format = narrowFormat();
    if (!format)
        return plainCountdown(minutes, seconds);

    UErrorCode status = U_ZERO_ERROR;
    std::vector<icu::Measure> measures;
    auto add = [&](std::int64_t value, icu::MeasureUnit* unit) {
        measures.emplace_back(icu::Formattable(static_cast<int64_t>(value)), unit, status);
    };
    if (minutes > 0)
        add(minutes, icu::MeasureUnit::createMinute(status));
    if (seconds > 0 || minutes == 0)
        add(seconds, icu::MeasureUnit::createSecond(status));
    if (U_FAILURE(status))
        return plainCountdown(minutes, seconds);

    icu::UnicodeString formatted;
    icu::FieldPosition position(icu::FieldPosition::DONT_CARE);
    format->formatMeasures(measures.data(), static_cast<int32_t>(measures.size()), formatted,
                           position, status);
    if (U_FAILURE(status))
        return plainCountdown(minutes, seconds);
    std::string out;
    formatted.toUTF8String(out);
    return out;
}

std::string modeBadge(FiringMode mode, std::int64_t countdownSeconds) {
    switch (mode) {
    case FiringMode::immediate:
        return "Immediate";
    case FiringMode::countdown:
        return "Countdown " + formatCountdown(countdownSeconds);
    }
    return "Immediate";
}

json::Json toJson(FiringMode mode) {
    return std::string(rawValue(mode));
}

FiringMode firingModeFromJson(const json::Json& value, std::string_view key) {
    const std::string raw = json::asString(value, key);
    auto mode = firingModeFromRaw(raw);
    if (!mode)
        throw json::DecodeError("\"" + std::string(key) + "\": unknown firing mode \"" + raw +
                                "\" (expected immediate or countdown)");
    return *mode;
}

} // namespace ringwell
