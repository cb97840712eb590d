#include "Core/TraceMoment.h"

#include "Core/Iso8601.h"
#include "Core/TextFolding.h"
#include "Core/Whitespace.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace ringwell::TraceMoment {
namespace {

// Calendar weekday numbers: 1 = Sunday ... 7 = Saturday.
constexpr std::array<std::string_view, 7> dayNames = {"sunday",   "monday", "tuesday", "wednesday",
                                                      "thursday", "friday", "saturday"};

std::optional<int> weekdayNamed(std::string_view word) {
    const std::string lower = text::lowercased(word);
    if (lower.size() < 3)
        return std::nullopt;
    for (std::size_t i = 0; i < dayNames.size(); ++i) {
        if (dayNames[i].starts_with(lower))
            return static_cast<int>(i) + 1;
    }
    return std::nullopt;
}

std::optional<int> number(std::string_view digits, int max) {
    if (digits.empty() || digits.size() > 2)
        return std::nullopt;
    int value = 0;
    auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size() || value > max)
        return std::nullopt;
    return value;
}

} // namespace

std::optional<Calendar::Components> parse(std::string_view input, const Calendar& calendar) {
    const std::string trimmedText = text::trimmed(input);
    if (auto date = parseIso8601(trimmedText))
        return calendar.components(*date);
    std::string_view rest = trimmedText;
    const auto space = rest.find(' ');
    if (space == std::string_view::npos)
        return std::nullopt;
    auto weekday = weekdayNamed(rest.substr(0, space));
    const std::string_view time = rest.substr(space + 1);
    const auto colon = time.find(':');
    if (!weekday || colon == std::string_view::npos || time.size() - colon != 3)
        return std::nullopt;
    auto hour = number(time.substr(0, colon), 23);
    auto minute = number(time.substr(colon + 1), 59);
    if (!hour || !minute)
        return std::nullopt;
    return Calendar::Components{*weekday, *hour, *minute};
}

std::string format(Calendar::Components moment) {
    std::string day(dayNames.at(static_cast<std::size_t>(moment.weekday - 1)).substr(0, 3));
    day[0] = static_cast<char>(day[0] - 'a' + 'A');
    char time[8];
    std::snprintf(time, sizeof time, "%02d:%02d", moment.hour, moment.minute);
    return day + " " + time;
}

} // namespace ringwell::TraceMoment
