#include "Cli/WatchArguments.h"

#include "Core/Json.h"

#include <array>
#include <cctype>
#include <charconv>
#include <set>

namespace ringwell::cli {
namespace {

std::string lowercased(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

std::optional<std::int64_t> number(std::string_view text) {
    std::int64_t value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || text.empty())
        return std::nullopt;
    return value;
}

// Weekday numbers are 1 = Sunday ... 7 = Saturday.
Result<std::set<int>> weekdaySet(std::string_view list) {
    static constexpr std::array<std::string_view, 7> names = {
        "sunday", "monday", "tuesday", "wednesday", "thursday", "friday", "saturday"};
    std::set<int> days;
    std::size_t start = 0;
    while (start <= list.size()) {
        std::size_t comma = list.find(',', start);
        if (comma == std::string_view::npos)
            comma = list.size();
        const std::string word = lowercased(list.substr(start, comma - start));
        start = comma + 1;
        if (word == "weekdays") {
            days.insert({2, 3, 4, 5, 6});
            continue;
        }
        if (word == "weekends") {
            days.insert({1, 7});
            continue;
        }
        int found = 0;
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (word.size() >= 3 && names[i].substr(0, word.size()) == word)
                found = static_cast<int>(i) + 1;
        }
        if (found == 0)
            return Error{"--weekdays: \"" + word +
                             "\" is not a weekday (mon, tue, wed, thu, fri, sat, sun, "
                             "weekdays, weekends)",
                         Error::Kind::invalidInput};
        days.insert(found);
    }
    return days;
}

// "HH:MM" as the minute of the day.
Result<std::int64_t> minuteOfDay(std::string_view option, std::string_view text) {
    const auto colon = text.find(':');
    if (colon != std::string_view::npos) {
        auto hour = number(text.substr(0, colon));
        auto minute = number(text.substr(colon + 1));
        if (hour && minute && *hour >= 0 && *hour < 24 && *minute >= 0 && *minute < 60 &&
            text.size() - colon == 3)
            return *hour * 60 + *minute;
    }
    return Error{std::string(option) + ": \"" + std::string(text) +
                     "\" is not a time of day (HH:MM, 00:00 to 23:59)",
                 Error::Kind::invalidInput};
}

} // namespace

Result<std::int64_t> parseDuration(std::string_view text) {
    static constexpr std::array<std::pair<char, std::int64_t>, 4> units = {
        {{'s', 1}, {'m', 60}, {'h', 3600}, {'d', 86400}}};
    if (text.size() >= 2) {
        for (auto [unit, seconds] : units) {
            if (std::tolower(static_cast<unsigned char>(text.back())) != unit)
                continue;
            if (auto count = number(text.substr(0, text.size() - 1));
                count && *count > 0 && *count <= 1'000'000)
                return *count * seconds;
        }
    }
    return Error{"\"" + std::string(text) + "\" is not a duration (like 90m, 3h or 1d)",
                 Error::Kind::invalidInput};
}

Result<json::Json> watchBody(const std::string& app, std::string_view every,
                             std::optional<std::string> weekdays, std::optional<std::string> from,
                             std::optional<std::string> to, std::optional<std::string> ring) {
    auto seconds = parseDuration(every);
    if (!seconds)
        return Error{"--every: " + seconds.error().message, Error::Kind::invalidInput};
    json::Json body{{"app", app}, {"everySeconds", seconds.value()}};
    if (from.has_value() != to.has_value())
        return Error{"--from and --to go together", Error::Kind::invalidInput};
    if (weekdays || from) {
        std::set<int> days = {1, 2, 3, 4, 5, 6, 7};
        if (weekdays) {
            auto chosen = weekdaySet(*weekdays);
            if (!chosen)
                return chosen.error();
            days = chosen.value();
        }
        std::int64_t start = 0;
        std::int64_t end = 0; // the same minute: the whole day
        if (from) {
            auto first = minuteOfDay("--from", *from);
            auto last = minuteOfDay("--to", *to);
            if (!first)
                return first.error();
            if (!last)
                return last.error();
            start = first.value();
            end = last.value();
        }
        body["hours"] = json::Json{{"weekdays", days}, {"startMinute", start}, {"endMinute", end}};
    }
    if (ring)
        body["ring"] = *ring;
    return body;
}

} // namespace ringwell::cli
