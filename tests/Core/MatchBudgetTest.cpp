#include "Core/MatchBudget.h"
#include "Core/Router.h"
#include "Core/RuleMatcher.h"
#include "Core/RulePreview.h"
#include "Core/TextMatcher.h"

#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace ringwell {
namespace {

using namespace std::chrono_literals;

// A monotonic source that moves on by `step` every time it is read.
struct SteppingSource {
    MatchBudget::Duration step;
    int reads = 0;
    MatchBudget::MonotonicSource source() {
        return [this] { return step * reads++; };
    }
};

const std::string catastrophicText = std::string(10000, 'a') + "!";

TEST(MatchBudgetTest, ASpentBudgetMakesEveryPatternANonMatchAndCountsIt) {
    MatchBudget spent = MatchBudget::spent();
    EXPECT_FALSE(TextMatcher::matches("urgent", "urgent", PatternKind::plain, spent));
    EXPECT_FALSE(TextMatcher::matches("urg.nt", "urgent", PatternKind::regex, spent));
    EXPECT_FALSE(TextMatcher::matches("  ", "  ", PatternKind::plain, spent));
    EXPECT_EQ(spent.cutShortCount(), 2u);

    MatchBudget unlimited = MatchBudget::unlimited();
    EXPECT_TRUE(TextMatcher::matches("urg.nt", "urgent", PatternKind::regex, unlimited));
    EXPECT_EQ(unlimited.cutShortCount(), 0u);
}

TEST(MatchBudgetTest, ASearchRunningPastTheDeadlineIsStopped) {
    // Read at the start and before the search; the next read, from inside the
    // search, is past the deadline.
    SteppingSource clock{40ms};
    MatchBudget budget(50ms, clock.source());
    EXPECT_FALSE(TextMatcher::matches("(a+)+$", catastrophicText, PatternKind::regex, budget));
    EXPECT_EQ(budget.cutShortCount(), 1u);
    EXPECT_FALSE(budget.hasTimeLeft());
}

TEST(MatchBudgetTest, OneRoutingStopsTryingPatternsOnceItsBudgetIsSpent) {
    std::vector<RoutableChannel> channels;
    for (int i = 0; i < 300; ++i) {
        ChannelRule rule;
        rule.usesRegex = true;
        rule.keywords = {"(a+)+b{" + std::to_string(i + 1) + "}"};
        channels.push_back({Uuid::random(), true, rule});
    }
    ChannelRule fromMail;
    fromMail.apps = {"Mail"};
    channels.push_back({Uuid::random(), true, fromMail});

    NotificationInfo info;
    info.app = "Mail";
    info.body = catastrophicText;
    SteppingSource clock{10ms};
    MatchBudget budget(50ms, clock.source());
    EXPECT_EQ(Router::route(info, channels, {}, testing::calendarIn("UTC"), budget),
              RouteResult::channel(channels.back().id));
    // A handful of patterns ran; the rest were not even started.
    EXPECT_LT(clock.reads, 20);
    EXPECT_GE(budget.cutShortCount(), 295u);
}

TEST(MatchBudgetTest, ChecksCutShortSayTheRuleWasCutShort) {
    ChannelRule rule;
    rule.senders = {"Alice"};
    rule.keywords = {"down"};
    NotificationInfo info;
    info.sender = "Alice";
    info.title = "server down";
    info.date = Date{1000};
    MatchBudget spent = MatchBudget::spent();
    auto evaluation = RuleMatcher::evaluate(rule, info, {}, testing::calendarIn("UTC"), spent);
    EXPECT_FALSE(evaluation.matches());
    ASSERT_EQ(evaluation.checks.size(), 2u);
    for (const auto& check : evaluation.checks)
        EXPECT_NE(check.detail.find("(cut short: "), std::string::npos) << check.detail;

    rule.senders.clear();
    rule.frequency = FrequencyCondition{2, 600};
    NotificationInfo earlier = info;
    earlier.date = Date{900};
    SteppingSource clock{30ms};
    MatchBudget budget(50ms, clock.source());
    evaluation = RuleMatcher::evaluate(rule, info, {earlier}, testing::calendarIn("UTC"), budget);
    ASSERT_EQ(evaluation.checks.size(), 2u);
    EXPECT_EQ(evaluation.checks[0].detail, "Text contains \"down\"");
    EXPECT_EQ(evaluation.checks[1].detail,
              "1 matching in the last 10 min, rule wants 2 (cut short: the rules' patterns took "
              "too long to check)");
}

TEST(MatchBudgetTest, PreviewAndDescriptionStopOnceTheBudgetIsSpent) {
    ChannelRule rule;
    rule.usesRegex = true;
    rule.keywords = {"(a+)+b", "(", "urgent"};
    const Uuid id = Uuid::random();
    const std::vector<RoutableChannel> channels = {{id, true, rule}};
    NotificationInfo info;
    info.body = "urgent";
    const std::vector<NotificationInfo> notifications(3, info);
    auto calendar = testing::calendarIn("UTC");

    auto unbounded = RulePreview::run(id, channels, notifications, calendar);
    EXPECT_EQ(RulePreview::ringCount(unbounded), 3);
    MatchBudget spent = MatchBudget::spent();
    auto cut = RulePreview::run(id, channels, notifications, calendar, spent);
    ASSERT_EQ(cut.size(), 3u);
    for (const auto& entry : cut)
        EXPECT_EQ(entry.verdict, PreviewVerdict::noMatch());
    EXPECT_GE(spent.cutShortCount(), 3u);

    // Describing compiles every pattern; with the time spent after the first
    // one, the invalid "(" is never reached.
    SteppingSource clock{30ms};
    MatchBudget budget(50ms, clock.source());
    EXPECT_TRUE(rule.invalidPatterns(budget).empty());
    EXPECT_EQ(budget.cutShortCount(), 2u);
    EXPECT_EQ(rule.invalidPatterns(), std::vector<std::string>{"("});
}

} // namespace
} // namespace ringwell
