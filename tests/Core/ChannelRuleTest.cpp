#include "Core/ChannelRule.h"

#include "Core/Json.h"
#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using testing::at;
using testing::calendarIn;

ChannelRule fromJson(const char* text) {
    return ruleFromJson(json::Json::parse(text));
}

TEST(ChannelRuleTest, SummaryJoinsPartsAsStored) {
    ChannelRule rule;
    EXPECT_EQ(rule.summary(), "Any app");
    rule.apps = {"WhatsApp"};
    rule.senders = {"Mom"};
    rule.keywords = {"urgent", " asap"};
    rule.calls = ChannelRule::CallFilter::missed;
    rule.activeHours = ActiveHours{ActiveHours::weekdaysOnly(), 540, 1020};
    rule.frequency = FrequencyCondition{3, 600};
    rule.cooldownSeconds = 60;
    rule.usesRegex = true;
    EXPECT_EQ(rule.summary(), "WhatsApp · from Mom · contains urgent,  asap · missed calls · "
                              "Weekdays 09:00–17:00 · 3× in 10 min");
}

TEST(ChannelRuleTest, SuggestedNamePrefersTheMostSpecificConditionCutToFortyCharacters) {
    ChannelRule rule;
    rule.apps = {" ", "Slack", "Mail"};
    EXPECT_EQ(rule.suggestedName(), "Slack +2");
    rule.calls = ChannelRule::CallFilter::incoming;
    EXPECT_EQ(rule.suggestedName(), "Incoming Calls");
    rule.keywords = {"  urgent  ", "asap"};
    EXPECT_EQ(rule.suggestedName(), "\u201Curgent\u201D +1");
    rule.senders = {"  ", "Mom", "Dad"};
    EXPECT_EQ(rule.suggestedName(), "Mom +2");

    ChannelRule scheduled;
    scheduled.activeHours = ActiveHours{{1}, 0, 0};
    EXPECT_EQ(scheduled.suggestedName(), "Scheduled");
    scheduled.frequency = FrequencyCondition{2, 60};
    EXPECT_EQ(scheduled.suggestedName(), "Repeated");
    scheduled.senders = {"   "};
    EXPECT_EQ(scheduled.suggestedName(), "Repeated"); // only blank senders

    rule.senders = {std::string(60, 'x')};
    EXPECT_EQ(rule.suggestedName(), std::string(40, 'x'));
}

TEST(ChannelRuleTest, InvalidPatternsOnlyInRegexMode) {
    ChannelRule rule;
    rule.senders = {"[", "ok"};
    rule.keywords = {"(", "fine", "("};
    EXPECT_TRUE(rule.invalidPatterns().empty());
    rule.usesRegex = true;
    EXPECT_EQ(rule.invalidPatterns(), (std::vector<std::string>{"[", "(", "("}));
}

TEST(ChannelRuleTest, CallsAreAvailableOnlyWhenThePhoneCanMatch) {
    ChannelRule rule;
    rule.apps = {"Slack"};
    EXPECT_FALSE(rule.canMatchPhone());
    auto available = RuleConditions::available(rule);
    EXPECT_EQ(std::find(available.begin(), available.end(), RuleCondition::calls), available.end());
    rule.apps = {"Slack", "PHONE"};
    EXPECT_TRUE(rule.canMatchPhone());
    rule.apps = {" Phone"}; // compared as stored
    EXPECT_FALSE(rule.canMatchPhone());
}

TEST(ChannelRuleTest, SeedAndClearConditions) {
    ChannelRule rule;
    for (auto condition : RuleConditions::allCases)
        RuleConditions::seed(condition, rule);
    EXPECT_EQ(rule.calls, ChannelRule::CallFilter::incoming);
    EXPECT_TRUE(rule.activeHours && rule.frequency && rule.cooldownSeconds > 0);

    rule.cooldownSeconds = 60;
    rule.calls = ChannelRule::CallFilter::missed;
    RuleConditions::seed(RuleCondition::cooldown, rule);
    RuleConditions::seed(RuleCondition::calls, rule);
    EXPECT_EQ(rule.cooldownSeconds, 60);
    EXPECT_EQ(rule.calls, ChannelRule::CallFilter::missed);

    rule.keywords = {""};
    rule.usesRegex = true;
    EXPECT_TRUE(RuleConditions::isSet(RuleCondition::keywords, rule)); // blank entries count
    for (auto condition : RuleConditions::allCases)
        RuleConditions::clear(condition, rule);
    EXPECT_TRUE(rule.usesRegex);
    rule.usesRegex = false;
    EXPECT_EQ(rule, ChannelRule{});
}

// An overnight window belongs to the day it opens; Saturday night wraps into Sunday.
TEST(ActiveHoursTest, WindowsWrapAtMidnightIntoTheNextDay) {
    auto berlin = calendarIn("Europe/Berlin");
    ActiveHours friday{{6}, 1320, 420}; // Friday 22:00-07:00
    // 2025-01-03 is a Friday.
    EXPECT_TRUE(friday.contains(at("2025-01-03T22:00:00+01:00"), berlin));
    EXPECT_FALSE(friday.contains(at("2025-01-03T21:59:00+01:00"), berlin));
    EXPECT_TRUE(friday.contains(at("2025-01-04T06:59:00+01:00"), berlin));
    EXPECT_FALSE(friday.contains(at("2025-01-04T07:00:00+01:00"), berlin));
    EXPECT_FALSE(friday.contains(at("2025-01-03T06:59:00+01:00"), berlin));
    EXPECT_TRUE(friday.isOvernight());
    auto utc = calendarIn("UTC");
    ActiveHours saturday{{7}, 1380, 60};
    EXPECT_TRUE(saturday.contains(at("2025-01-05T00:30:00Z"), utc)); // Sunday morning
    ActiveHours sunday{{1}, 1380, 60};
    EXPECT_TRUE(sunday.contains(at("2025-01-06T00:30:00Z"), utc)); // Monday morning
    EXPECT_FALSE(sunday.contains(at("2025-01-05T00:30:00Z"), utc));
}

TEST(ActiveHoursTest, LocalTimeAcrossADaylightSavingChange) {
    auto berlin = calendarIn("Europe/Berlin");
    ActiveHours night{ActiveHours::allDays(), 1320, 420};
    // Clocks go from 02:00 to 03:00 on 2025-03-30; local time decides.
    EXPECT_TRUE(night.contains(at("2025-03-30T06:59:00+02:00"), berlin));
    EXPECT_FALSE(night.contains(at("2025-03-30T07:00:00+02:00"), berlin));
    // 05:30 UTC is 06:30 before the change would be, but 07:30 local after it.
    EXPECT_FALSE(night.contains(at("2025-03-30T05:30:00Z"), berlin));
    EXPECT_TRUE(night.contains(at("2025-03-29T05:30:00Z"), berlin));
    // Clocks go back on 2025-10-26: 02:30 happens twice, both inside.
    EXPECT_TRUE(night.contains(at("2025-10-26T02:30:00+02:00"), berlin));
    EXPECT_TRUE(night.contains(at("2025-10-26T02:30:00+01:00"), berlin));
}

TEST(ActiveHoursTest, AllDayAndSameDayWindows) {
    auto utc = calendarIn("UTC");
    ActiveHours allDay{ActiveHours::weekdaysOnly(), 600, 600};
    EXPECT_TRUE(allDay.contains(at("2025-01-06T00:00:00Z"), utc)); // Monday
    EXPECT_TRUE(allDay.contains(at("2025-01-06T23:59:00Z"), utc));
    EXPECT_FALSE(allDay.contains(at("2025-01-05T12:00:00Z"), utc)); // Sunday
    EXPECT_EQ(allDay.summary(), "Weekdays all day");

    ActiveHours office{{2}, 540, 1020};
    EXPECT_TRUE(office.contains(at("2025-01-06T09:00:00Z"), utc));
    EXPECT_FALSE(office.contains(at("2025-01-06T17:00:00Z"), utc));
    EXPECT_FALSE(office.contains(at("2025-01-06T08:59:00Z"), utc));
}

TEST(ActiveHoursTest, Summaries) {
    EXPECT_EQ((ActiveHours{{2, 4, 6}, 510, 1020}).summary(), "Mon, Wed, Fri 08:30–17:00");
    EXPECT_EQ((ActiveHours{{1, 7}, 1320, 420}).summary(), "Weekends 22:00–07:00");
    EXPECT_EQ((ActiveHours{ActiveHours::allDays(), 0, 0}).summary(), "Every day all day");
    EXPECT_EQ((ActiveHours{{}, 0, 0}).summary(), " all day");
    EXPECT_EQ((FrequencyCondition{3, 90}).summary(), "3× in 1 min");
}

TEST(ChannelRuleJsonTest, DecodingIsLenientAboutMissingKeysButNotBadValues) {
    EXPECT_EQ(fromJson("{}"), ChannelRule{});
    auto rule = fromJson(R"({"senders":[" Mom ",""],"calls":"incoming","extra":1})");
    EXPECT_EQ(rule.senders, (std::vector<std::string>{" Mom ", ""}));
    EXPECT_EQ(rule.calls, ChannelRule::CallFilter::incoming);
    for (const char* bad :
         {R"({"calls":"sometimes"})", R"({"apps":[1]})", R"({"cooldownSeconds":1.5})",
          R"({"activeHours":{"weekdays":[1]}})", R"({"frequency":{"count":3}})", "[]"}) {
        EXPECT_THROW(fromJson(bad), json::DecodeError) << bad;
    }
}

} // namespace
} // namespace ringwell
