#include "Core/ChannelRule.h"

#include "Core/Joined.h"
#include "Core/Json.h"
#include "Core/TextFolding.h"
#include "Core/TextMatcher.h"
#include "Core/Utf8.h"
#include "Core/Whitespace.h"

#include <cstdio>

namespace ringwell {
namespace {

std::string clock(std::int64_t minute) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%02lld:%02lld", static_cast<long long>(minute / 60),
                  static_cast<long long>(minute % 60));
    return buffer;
}

// The first entry that is not blank once trimmed, trimmed.
std::optional<std::string> firstNonBlank(const std::vector<std::string>& list) {
    for (const auto& entry : list) {
        if (!text::isBlank(entry))
            return text::trimmed(entry);
    }
    return std::nullopt;
}

// " +N" for the other entries of a list, blank ones counted.
std::string othersSuffix(const std::vector<std::string>& list) {
    return list.size() >= 2 ? " +" + std::to_string(list.size() - 1) : std::string();
}

constexpr std::string_view dayShortNames[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

} // namespace

// MARK: ActiveHours

const std::set<std::int64_t>& ActiveHours::allDays() {
    static const std::set<std::int64_t> days = {1, 2, 3, 4, 5, 6, 7};
    return days;
}

const std::set<std::int64_t>& ActiveHours::weekdaysOnly() {
    static const std::set<std::int64_t> days = {2, 3, 4, 5, 6};
    return days;
}

bool ActiveHours::contains(Date date, const Calendar& calendar) const {
    auto parts = calendar.components(date);
    if (!parts)
        return false;
    const std::int64_t weekday = parts->weekday;
    const std::int64_t minute = parts->hour * 60 + parts->minute;
    const std::int64_t previousWeekday = weekday == 1 ? 7 : weekday - 1;
    if (isAllDay())
        return weekdays.contains(weekday);
    if (startMinute < endMinute)
        return weekdays.contains(weekday) && startMinute <= minute && minute < endMinute;
    if (weekdays.contains(weekday) && minute >= startMinute)
        return true;
    return weekdays.contains(previousWeekday) && minute < endMinute;
}

std::string ActiveHours::summary() const {
    std::string days;
    if (weekdays == allDays()) {
        days = "Every day";
    } else if (weekdays == weekdaysOnly()) {
        days = "Weekdays";
    } else if (weekdays == std::set<std::int64_t>{1, 7}) {
        days = "Weekends";
    } else {
        std::vector<std::string> names;
        for (std::int64_t day : {2, 3, 4, 5, 6, 7, 1}) {
            if (weekdays.contains(day))
                names.emplace_back(dayShortNames[day - 1]);
        }
        days = text::joined(names, ", ");
    }
    if (isAllDay())
        return days + " all day";
    return days + " " + clock(startMinute) + "\u2013" + clock(endMinute);
}

// MARK: FrequencyCondition

const std::vector<std::int64_t>& FrequencyCondition::windowPresets() {
    static const std::vector<std::int64_t> presets = {60, 300, 600, 1800, 3600};
    return presets;
}

std::string FrequencyCondition::summary() const {
    return std::to_string(count) + "\u00D7 in " + std::to_string(windowSeconds / 60) + " min";
}

// MARK: ChannelRule

const std::vector<std::int64_t>& ChannelRule::cooldownPresets() {
    static const std::vector<std::int64_t> presets = {0, 30, 60, 120, 300, 600, 1800};
    return presets;
}

std::string ChannelRule::summary() const {
    std::vector<std::string> parts;
    parts.push_back(apps.empty() ? "Any app" : text::joined(apps, ", "));
    if (!senders.empty())
        parts.push_back("from " + text::joined(senders, ", "));
    if (!keywords.empty())
        parts.push_back("contains " + text::joined(keywords, ", "));
    if (calls == CallFilter::incoming)
        parts.emplace_back("incoming calls");
    if (calls == CallFilter::missed)
        parts.emplace_back("missed calls");
    if (activeHours)
        parts.push_back(activeHours->summary());
    if (frequency)
        parts.push_back(frequency->summary());
    return text::joined(parts, " \u00B7 ");
}

std::string ChannelRule::suggestedName() const {
    std::string name;
    if (auto sender = firstNonBlank(senders)) {
        name = *sender + othersSuffix(senders);
    } else if (auto keyword = firstNonBlank(keywords)) {
        name = "\u201C" + *keyword + "\u201D" + othersSuffix(keywords);
    } else if (calls == CallFilter::incoming) {
        name = "Incoming Calls";
    } else if (calls == CallFilter::missed) {
        name = "Missed Calls";
    } else if (auto app = firstNonBlank(apps)) {
        name = *app + othersSuffix(apps);
    } else if (frequency) {
        name = "Repeated";
    } else if (activeHours) {
        name = "Scheduled";
    } else {
        name = "All Notifications";
    }
    return text::prefixCharacters(name, 40);
}

std::vector<std::string> ChannelRule::invalidPatterns() const {
    MatchBudget unlimited = MatchBudget::unlimited();
    return invalidPatterns(unlimited);
}

std::vector<std::string> ChannelRule::invalidPatterns(MatchBudget& budget) const {
    std::vector<std::string> invalid;
    if (!usesRegex)
        return invalid;
    for (const auto* list : {&senders, &keywords}) {
        for (const auto& pattern : *list) {
            if (!budget.hasTimeLeft()) {
                budget.noteCutShort();
                continue;
            }
            if (!TextMatcher::regex(pattern))
                invalid.push_back(pattern);
        }
    }
    return invalid;
}

bool ChannelRule::canMatchPhone() const {
    if (apps.empty())
        return true;
    for (const auto& app : apps) {
        if (text::equalsIgnoringCase(app, PhoneApp::name))
            return true;
    }
    return false;
}

std::string_view rawValue(ChannelRule::CallFilter filter) {
    switch (filter) {
    case ChannelRule::CallFilter::any:
        return "any";
    case ChannelRule::CallFilter::incoming:
        return "incoming";
    case ChannelRule::CallFilter::missed:
        return "missed";
    }
    return "any";
}

std::optional<ChannelRule::CallFilter> callFilterFromRaw(std::string_view raw) {
    for (auto filter : ChannelRule::allCallFilters) {
        if (rawValue(filter) == raw)
            return filter;
    }
    return std::nullopt;
}

// MARK: JSON

json::Json toJson(const ActiveHours& hours) {
    json::Json days = json::Json::array();
    for (auto day : hours.weekdays)
        days.push_back(day);
    return json::Json{{"weekdays", std::move(days)},
                      {"startMinute", hours.startMinute},
                      {"endMinute", hours.endMinute}};
}

json::Json toJson(const FrequencyCondition& frequency) {
    return json::Json{{"count", frequency.count}, {"windowSeconds", frequency.windowSeconds}};
}

json::Json toJson(const ChannelRule& rule) {
    json::Json out{{"apps", rule.apps},
                   {"senders", rule.senders},
                   {"keywords", rule.keywords},
                   {"usesRegex", rule.usesRegex},
                   {"calls", rawValue(rule.calls)},
                   {"cooldownSeconds", rule.cooldownSeconds}};
    if (rule.activeHours)
        out["activeHours"] = toJson(*rule.activeHours);
    if (rule.frequency)
        out["frequency"] = toJson(*rule.frequency);
    return out;
}

ActiveHours activeHoursFromJson(const json::Json& value) {
    json::requireObject(value, "activeHours");
    ActiveHours hours;
    for (const auto& day : json::requireArray(value, "weekdays")) {
        if (!day.is_number_integer())
            throw json::DecodeError("\"weekdays\": expected integers");
        hours.weekdays.insert(day.get<std::int64_t>());
    }
    hours.startMinute = json::requireInt(value, "startMinute");
    hours.endMinute = json::requireInt(value, "endMinute");
    return hours;
}

FrequencyCondition frequencyFromJson(const json::Json& value) {
    json::requireObject(value, "frequency");
    return {json::requireInt(value, "count"), json::requireInt(value, "windowSeconds")};
}

ChannelRule ruleFromJson(const json::Json& value) {
    json::requireObject(value, "rule");
    ChannelRule rule;
    if (const auto* apps = json::optionalArray(value, "apps"))
        rule.apps = json::stringList(*apps, "apps");
    if (const auto* senders = json::optionalArray(value, "senders"))
        rule.senders = json::stringList(*senders, "senders");
    if (const auto* keywords = json::optionalArray(value, "keywords"))
        rule.keywords = json::stringList(*keywords, "keywords");
    rule.usesRegex = json::optionalBool(value, "usesRegex").value_or(false);
    if (auto calls = json::optionalString(value, "calls")) {
        auto filter = callFilterFromRaw(*calls);
        if (!filter)
            throw json::DecodeError("\"calls\": unknown value \"" + *calls +
                                    "\" (expected any, incoming or missed)");
        rule.calls = *filter;
    }
    rule.cooldownSeconds = json::optionalInt(value, "cooldownSeconds").value_or(0);
    if (const auto* hours = json::member(value, "activeHours"))
        rule.activeHours = activeHoursFromJson(*hours);
    if (const auto* frequency = json::member(value, "frequency"))
        rule.frequency = frequencyFromJson(*frequency);
    return rule;
}

// MARK: RuleCondition

namespace RuleConditions {

std::string_view id(RuleCondition condition) {
    switch (condition) {
    case RuleCondition::app:
        return "app";
    case RuleCondition::sender:
        return "sender";
    case RuleCondition::keywords:
        return "keywords";
    case RuleCondition::calls:
        return "calls";
    case RuleCondition::hours:
        return "hours";
    case RuleCondition::repeated:
        return "repeated";
    case RuleCondition::cooldown:
        return "cooldown";
    }
    return "";
}

std::optional<RuleCondition> fromId(std::string_view raw) {
    for (auto condition : allCases) {
        if (id(condition) == raw)
            return condition;
    }
    return std::nullopt;
}

std::string_view title(RuleCondition condition) {
    switch (condition) {
    case RuleCondition::app:
        return "App";
    case RuleCondition::sender:
        return "From";
    case RuleCondition::keywords:
        return "Contains";
    case RuleCondition::calls:
        return "Phone calls";
    case RuleCondition::hours:
        return "Time of day";
    case RuleCondition::repeated:
        return "Repeated";
    case RuleCondition::cooldown:
        return "Cooldown";
    }
    return "";
}

std::string_view symbolName(RuleCondition condition) {
    switch (condition) {
    case RuleCondition::app:
        return "app.badge";
    case RuleCondition::sender:
        return "person";
    case RuleCondition::keywords:
        return "text.magnifyingglass";
    case RuleCondition::calls:
        return "phone";
    case RuleCondition::hours:
        return "clock";
    case RuleCondition::repeated:
        return "repeat";
    case RuleCondition::cooldown:
        return "hourglass";
    }
    return "";
}

bool isList(RuleCondition condition) {
    return condition == RuleCondition::app || condition == RuleCondition::sender ||
           condition == RuleCondition::keywords;
}

bool isSet(RuleCondition condition, const ChannelRule& rule) {
    switch (condition) {
    case RuleCondition::app:
        return !rule.apps.empty();
    case RuleCondition::sender:
        return !rule.senders.empty();
    case RuleCondition::keywords:
        return !rule.keywords.empty();
    case RuleCondition::calls:
        return rule.calls != ChannelRule::CallFilter::any;
    case RuleCondition::hours:
        return rule.activeHours.has_value();
    case RuleCondition::repeated:
        return rule.frequency.has_value();
    case RuleCondition::cooldown:
        return rule.cooldownSeconds > 0;
    }
    return false;
}

void clear(RuleCondition condition, ChannelRule& rule) {
    switch (condition) {
    case RuleCondition::app:
        rule.apps.clear();
        break;
    case RuleCondition::sender:
        rule.senders.clear();
        break;
    case RuleCondition::keywords:
        rule.keywords.clear();
        break;
    case RuleCondition::calls:
        rule.calls = ChannelRule::CallFilter::any;
        break;
    case RuleCondition::hours:
        rule.activeHours.reset();
        break;
    case RuleCondition::repeated:
        rule.frequency.reset();
        break;
    case RuleCondition::cooldown:
        rule.cooldownSeconds = 0;
        break;
    }
}

void seed(RuleCondition condition, ChannelRule& rule) {
    switch (condition) {
    case RuleCondition::app:
    case RuleCondition::sender:
    case RuleCondition::keywords:
        break;
    case RuleCondition::calls:
        if (rule.calls == ChannelRule::CallFilter::any)
            rule.calls = ChannelRule::CallFilter::incoming;
        break;
    case RuleCondition::hours:
        if (!rule.activeHours)
            rule.activeHours = ActiveHours{ActiveHours::allDays(), 1320, 420};
        break;
    case RuleCondition::repeated:
        if (!rule.frequency)
            rule.frequency = FrequencyCondition{3, 600};
        break;
    case RuleCondition::cooldown:
        if (rule.cooldownSeconds == 0)
            rule.cooldownSeconds = 300;
        break;
    }
}

std::vector<RuleCondition> available(const ChannelRule& rule) {
    std::vector<RuleCondition> conditions;
    for (auto condition : allCases) {
        if (condition == RuleCondition::calls && !rule.canMatchPhone())
            continue;
        conditions.push_back(condition);
    }
    return conditions;
}

} // namespace RuleConditions
} // namespace ringwell
