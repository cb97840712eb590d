#include "Core/RuleTemplate.h"
#include "Core/RuleMatcher.h"

#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

#include <set>

namespace ringwell {
namespace {

using testing::at;

TEST(RuleTemplateTest, NightRingsLateAndStopsAtSeven) {
    auto berlin = testing::calendarIn("Europe/Berlin");
    const auto& rule = RuleTemplate::find("night")->rule;
    NotificationInfo info;
    info.date = at("2025-01-07T23:30:00+01:00");
    EXPECT_TRUE(RuleMatcher::matches(rule, info, {}, berlin));
    info.date = at("2025-01-07T07:00:00+01:00");
    EXPECT_FALSE(RuleMatcher::matches(rule, info, {}, berlin));
}

TEST(RuleTemplateTest, RepeatedRingsOnTheThirdWithinTenMinutes) {
    auto utc = testing::calendarIn("UTC");
    const auto& rule = RuleTemplate::find("repeated")->rule;
    std::vector<NotificationInfo> history;
    std::vector<bool> verdicts;
    for (int i = 0; i < 3; ++i) {
        NotificationInfo info;
        info.app = "Grafana";
        info.title = "alert " + std::to_string(i);
        info.date = Date{1000.0 + 200 * i};
        verdicts.push_back(RuleMatcher::matches(rule, info, history, utc));
        history.insert(history.begin(), info);
    }
    EXPECT_EQ(verdicts, (std::vector<bool>{false, false, true}));
}

TEST(RuleTemplateTest, CallsFromRingsForTheirIncomingCallOnly) {
    auto utc = testing::calendarIn("UTC");
    auto rule = RuleTemplate::find("calls-from")->rule;
    rule.senders = {"Mom"};
    NotificationInfo call;
    call.app = "Phone";
    call.title = "Mom";
    EXPECT_TRUE(RuleMatcher::matches(rule, call, {}, utc));
    call.body = "Missed call";
    EXPECT_FALSE(RuleMatcher::matches(rule, call, {}, utc));
    call.body.clear();
    call.title = "Dad";
    EXPECT_FALSE(RuleMatcher::matches(rule, call, {}, utc));
}

} // namespace
} // namespace ringwell
