#include "Core/RuleMatcher.h"

#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using Condition = RuleCheck::Condition;
using testing::at;

class RuleMatcherTest : public ::testing::Test {
protected:
    Calendar utc = testing::calendarIn("UTC");
    std::vector<NotificationInfo> history;

    NotificationInfo note(std::string app, std::string sender, std::string title,
                          std::string body = "", Date date = Date{1000}) {
        NotificationInfo info;
        info.app = std::move(app);
        info.sender = std::move(sender);
        info.title = std::move(title);
        info.body = std::move(body);
        info.date = date;
        return info;
    }

    RuleEvaluation evaluate(const ChannelRule& rule, const NotificationInfo& info) {
        return RuleMatcher::evaluate(rule, info, history, utc);
    }
};

TEST_F(RuleMatcherTest, EmptyRuleMatchesWithoutChecks) {
    auto evaluation = evaluate(ChannelRule{}, note("", "", ""));
    EXPECT_TRUE(evaluation.checks.empty());
    EXPECT_TRUE(evaluation.matches());
}

TEST_F(RuleMatcherTest, AppIsAWholeCaseInsensitiveNameWithEntriesTrimmed) {
    ChannelRule rule;
    rule.apps = {" Mail "};
    auto passed = evaluate(rule, note("mail", "", ""));
    ASSERT_EQ(passed.checks.size(), 1u);
    EXPECT_EQ(passed.checks[0], (RuleCheck{Condition::app, true, "\"mail\" is one of  Mail "}));

    rule.apps = {"Mail", "Messages"};
    EXPECT_EQ(evaluate(rule, note("Slack", "", "")).checks[0].detail,
              "\"Slack\" isn't one of Mail, Messages");
    EXPECT_EQ(evaluate(rule, note("", "", "")).checks[0].detail,
              "(empty) isn't one of Mail, Messages");
    EXPECT_FALSE(evaluate(rule, note("Mailbox", "", "")).matches());
    rule.apps = {"Éclair"};
    EXPECT_FALSE(evaluate(rule, note("Eclair", "", "")).matches());
}

TEST_F(RuleMatcherTest, SenderTestsFromAndSkipsBlankAndBrokenPatterns) {
    ChannelRule rule;
    rule.senders = {"  ", "mom"};
    EXPECT_EQ(evaluate(rule, note("Messages", "", "Mom")).checks[0],
              (RuleCheck{Condition::sender, true, "\"Mom\" matches \"mom\""}));
    rule.senders = {" ", ""};
    EXPECT_EQ(evaluate(rule, note("Messages", "", "")).checks[0],
              (RuleCheck{Condition::sender, false, "(empty) matches none of the senders"}));
    rule.usesRegex = true;
    rule.senders = {"(", "^al"};
    EXPECT_EQ(evaluate(rule, note("Messages", "Alice", "Hi")).checks[0].detail,
              "\"Alice\" matches \"^al\"");
}

TEST_F(RuleMatcherTest, KeywordReportedIsTheEarliestInTheList) {
    ChannelRule rule;
    rule.keywords = {"asap", "urgent"};
    auto info = note("Mail", "", "urgent: reply", "asap please");
    EXPECT_EQ(evaluate(rule, info).checks[0].detail, "Text contains \"asap\"");
    info.subtitle = "ASAP";
    info.body = "";
    EXPECT_TRUE(evaluate(rule, info).matches());
    EXPECT_EQ(evaluate(rule, note("Mail", "", "hello")).checks[0],
              (RuleCheck{Condition::keywords, false, "Text contains none of the keywords"}));

    rule.usesRegex = true;
    rule.keywords = {"[", "urg.nt"};
    EXPECT_EQ(evaluate(rule, note("Mail", "", "", "URGENT now")).checks[0].detail,
              "Text contains \"urg.nt\"");
    // The sender is not searched for keywords.
    EXPECT_FALSE(evaluate(rule, note("Mail", "urgent", "", "")).matches());
}

TEST_F(RuleMatcherTest, CallsConditionOnlyJudgesCalls) {
    ChannelRule rule;
    rule.calls = ChannelRule::CallFilter::incoming;
    EXPECT_TRUE(evaluate(rule, note("Mail", "Ann", "Hi")).checks.empty());
    auto missed = evaluate(rule, note("Phone", "Ann", "Ann", "Missed call"));
    ASSERT_EQ(missed.checks.size(), 1u);
    EXPECT_EQ(missed.checks[0],
              (RuleCheck{Condition::calls, false, "Missed call, rule wants incoming calls"}));
    EXPECT_EQ(evaluate(rule, note("PHONE", "Ann", "Ann")).checks[0],
              (RuleCheck{Condition::calls, true, "Incoming call, rule wants incoming calls"}));
}

TEST_F(RuleMatcherTest, ActiveHoursUseTheGivenCalendar) {
    ChannelRule rule;
    rule.activeHours = ActiveHours{ActiveHours::weekdaysOnly(), 540, 1020};
    auto inside = note("Mail", "", "", "", at("2025-01-06T09:30:00Z"));
    EXPECT_EQ(evaluate(rule, inside).checks[0],
              (RuleCheck{Condition::activeHours, true, "Within Weekdays 09:00–17:00"}));
    auto tokyo = testing::calendarIn("Asia/Tokyo"); // 18:30 there
    EXPECT_EQ(RuleMatcher::evaluate(rule, inside, history, tokyo).checks[0].detail,
              "Outside Weekdays 09:00–17:00");
}

TEST_F(RuleMatcherTest, EveryConditionIsReportedInOrderWithoutShortCircuit) {
    ChannelRule rule;
    rule.apps = {"Mail"};
    rule.senders = {"Bob"};
    rule.keywords = {"x"};
    rule.calls = ChannelRule::CallFilter::missed;
    rule.activeHours = ActiveHours{{1}, 0, 0};
    rule.frequency = FrequencyCondition{2, 60};
    auto evaluation = evaluate(rule, note("Phone", "Ann", "t", "b", at("2025-01-06T09:30:00Z")));
    std::vector<Condition> order;
    for (const auto& check : evaluation.checks)
        order.push_back(check.condition);
    EXPECT_EQ(order, (std::vector<Condition>{Condition::app, Condition::sender, Condition::keywords,
                                             Condition::calls, Condition::activeHours,
                                             Condition::frequency}));
    EXPECT_FALSE(evaluation.matches());
}

TEST_F(RuleMatcherTest, FrequencyCountsMatchingHistoryInsideTheInclusiveWindow) {
    ChannelRule rule;
    rule.keywords = {"down"};
    rule.frequency = FrequencyCondition{3, 600};
    auto now = note("Mon", "", "server down", "", Date{10000});
    history = {note("Mon", "", "db down", "", Date{10000 - 600}),
               note("Mon", "", "web down", "", Date{10000 - 1})};
    auto evaluation = evaluate(rule, now);
    EXPECT_EQ(evaluation.checks.back(), (RuleCheck{Condition::frequency, true,
                                                   "3 matching in the last 10 min, rule wants 3"}));

    history[0].date = Date{10000 - 601}; // just outside
    EXPECT_EQ(evaluate(rule, now).checks.back().detail,
              "2 matching in the last 10 min, rule wants 3");

    history = {now, note("Mon", "", "all fine", "", Date{9990}),
               note("Mon", "", "later down", "", Date{10001})};
    // The notification itself, entries failing the keyword and later entries don't count.
    EXPECT_EQ(evaluate(rule, now).checks.back().detail,
              "1 matching in the last 10 min, rule wants 3");

    // Minutes are truncated.
    history.clear();
    rule.keywords.clear();
    rule.frequency = FrequencyCondition{2, 59};
    EXPECT_EQ(evaluate(rule, note("A", "", "")).checks.back().detail,
              "1 matching in the last 0 min, rule wants 2");
}

TEST_F(RuleMatcherTest, FrequencyJudgesActiveHoursAtEachEntrysOwnDate) {
    ChannelRule rule;
    rule.activeHours = ActiveHours{ActiveHours::allDays(), 600, 720};
    rule.frequency = FrequencyCondition{2, 3600};
    auto now = note("A", "", "", "", at("2025-01-06T10:10:00Z"));
    history = {note("A", "", "", "", at("2025-01-06T09:50:00Z")),
               note("A", "", "", "", at("2025-01-06T10:05:00Z"))};
    EXPECT_EQ(evaluate(rule, now).checks.back().detail,
              "2 matching in the last 60 min, rule wants 2");
}

} // namespace
} // namespace ringwell
