#pragma once

#include "Core/MatchBudget.h"

#include "Core/Calendar.h"
#include "Core/JsonFwd.h"
#include "Core/NotificationInfo.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// A time-of-day window on chosen weekdays (1 = Sunday ... 7 = Saturday).
// The end minute is exclusive; start == end means the whole day; end < start
// runs past midnight, and the morning part belongs to the day the window opened.
struct ActiveHours {
    std::set<std::int64_t> weekdays;
    std::int64_t startMinute = 0;
    std::int64_t endMinute = 0;

    static const std::set<std::int64_t>& allDays();      // {1...7}
    static const std::set<std::int64_t>& weekdaysOnly(); // {2...6}

    bool isAllDay() const { return startMinute == endMinute; }
    bool isOvernight() const { return endMinute < startMinute; }

    // Whether `date` falls inside the window in the given calendar.
    bool contains(Date date, const Calendar& calendar) const;
    // "Weekdays 22:00–07:00", "Every day all day", "Mon, Wed, Fri 08:30–17:00".
    std::string summary() const;

    bool operator==(const ActiveHours&) const = default;
};

// The "repeated" condition: `count` matching notifications within `windowSeconds`.
struct FrequencyCondition {
    std::int64_t count = 0;
    std::int64_t windowSeconds = 0;

    static constexpr std::int64_t countRangeMin = 2;
    static constexpr std::int64_t countRangeMax = 10;
    static const std::vector<std::int64_t>& windowPresets();

    // "3× in 10 min" (whole minutes, truncated).
    std::string summary() const;

    bool operator==(const FrequencyCondition&) const = default;
};

// The matching rule of a channel: every condition that is set must pass.
struct ChannelRule {
    enum class CallFilter { any, incoming, missed };
    static constexpr CallFilter allCallFilters[] = {CallFilter::any, CallFilter::incoming,
                                                    CallFilter::missed};

    std::vector<std::string> apps;
    std::vector<std::string> senders;
    std::vector<std::string> keywords;
    bool usesRegex = false;
    CallFilter calls = CallFilter::any;
    std::int64_t cooldownSeconds = 0;
    std::optional<ActiveHours> activeHours;
    std::optional<FrequencyCondition> frequency;

    static const std::vector<std::int64_t>& cooldownPresets();

    // One-line description: "WhatsApp · from Mom · contains urgent, asap".
    std::string summary() const;
    // The name a channel takes when its name follows the rule.
    std::string suggestedName() const;
    // Sender and keyword patterns (as stored) that do not compile as regular
    // expressions; empty unless the rule uses regular expressions. With a
    // budget, the patterns left once it is spent are not checked (and are
    // counted as cut short).
    std::vector<std::string> invalidPatterns() const;
    std::vector<std::string> invalidPatterns(MatchBudget& budget) const;
    // Whether the rule can see notifications of the phone app.
    bool canMatchPhone() const;

    bool operator==(const ChannelRule&) const = default;
};

std::string_view rawValue(ChannelRule::CallFilter filter);
std::optional<ChannelRule::CallFilter> callFilterFromRaw(std::string_view raw);

// JSON forms. Decoding a rule is lenient about missing keys and strict about
// types and unknown call filters; the decoders throw json::DecodeError.
json::Json toJson(const ActiveHours& hours);
json::Json toJson(const FrequencyCondition& frequency);
json::Json toJson(const ChannelRule& rule);
ActiveHours activeHoursFromJson(const json::Json& value);
FrequencyCondition frequencyFromJson(const json::Json& value);
ChannelRule ruleFromJson(const json::Json& value);

// The kinds of condition a person can add to or remove from a rule.
enum class RuleCondition { app, sender, keywords, calls, hours, repeated, cooldown };

namespace RuleConditions {
inline constexpr RuleCondition allCases[] = {
    RuleCondition::app,   RuleCondition::sender,   RuleCondition::keywords, RuleCondition::calls,
    RuleCondition::hours, RuleCondition::repeated, RuleCondition::cooldown};

std::string_view id(RuleCondition condition);
std::optional<RuleCondition> fromId(std::string_view id);
std::string_view title(RuleCondition condition);
std::string_view symbolName(RuleCondition condition);
bool isList(RuleCondition condition);

bool isSet(RuleCondition condition, const ChannelRule& rule);
void clear(RuleCondition condition, ChannelRule& rule);
// Gives a freshly added condition a useful starting value; a set one is left alone.
void seed(RuleCondition condition, ChannelRule& rule);
std::vector<RuleCondition> available(const ChannelRule& rule);
} // namespace RuleConditions

} // namespace ringwell
