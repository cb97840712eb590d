#include "Core/RulePreview.h"

#include "TestSupport/Helpers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace ringwell {

void PrintTo(const PreviewVerdict& verdict, std::ostream* out) {
    static const char* names[] = {"shadowed", "rings", "cooledDown", "disabled", "noMatch"};
    *out << names[static_cast<int>(verdict.kind())];
    if (verdict.shadowedBy())
        *out << "(" << verdict.shadowedBy()->toString() << ")";
}

namespace {

using testing::at;
using testing::calendarIn;
using ::testing::ElementsAre;

class RulePreviewTest : public ::testing::Test {
protected:
    // A notification `seconds` after the start of the replay.
    NotificationInfo message(const char* sender, double seconds, const char* app = "Messages") {
        return {app, sender, "", "", "hello", start.addingSeconds(seconds), false, std::nullopt};
    }

    static RoutableChannel channel(ChannelRule rule = {}, bool enabled = true) {
        return {Uuid::random(), enabled, std::move(rule)};
    }

    // Runs the preview with notifications given oldest first, as tests read best.
    std::vector<PreviewEntry> run(const RoutableChannel& previewed,
                                  const std::vector<RoutableChannel>& channels,
                                  std::vector<NotificationInfo> oldestFirst) {
        std::reverse(oldestFirst.begin(), oldestFirst.end());
        return RulePreview::run(previewed.id, channels, oldestFirst, calendar);
    }

    // Verdicts in oldest-first order.
    static std::vector<PreviewVerdict> verdicts(const std::vector<PreviewEntry>& entries) {
        std::vector<PreviewVerdict> out;
        out.reserve(entries.size());
        for (const auto& entry : entries)
            out.push_back(entry.verdict);
        std::reverse(out.begin(), out.end());
        return out;
    }

    static ChannelRule withCooldown(std::int64_t seconds) {
        ChannelRule rule;
        rule.cooldownSeconds = seconds;
        return rule;
    }

    Calendar calendar = calendarIn("Europe/Berlin");
    Date start = at("2025-06-02T10:00:00Z");
};

TEST_F(RulePreviewTest, UnknownChannelOrNoNotificationsGiveNoEntries) {
    auto known = channel();
    EXPECT_TRUE(run(channel(), {known}, {message("Mom", 0)}).empty());
    auto previewed = channel();
    EXPECT_TRUE(run(previewed, {previewed}, {}).empty());
    EXPECT_EQ(RulePreview::ringCount({}), 0);
}

TEST_F(RulePreviewTest, EntriesAreNewestFirstWithIdsCountingFromTheOldest) {
    auto previewed = channel();
    auto a = message("A", 0), b = message("B", 10), c = message("C", 20);
    auto entries = run(previewed, {previewed}, {a, b, c});
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0].id, 2);
    EXPECT_EQ(entries[0].notification, c);
    EXPECT_EQ(entries[2].id, 0);
    EXPECT_EQ(entries[2].notification, a);
    // Each entry keeps only the older notifications, oldest first.
    EXPECT_THAT(entries[0].history, ElementsAre(a, b));
    EXPECT_THAT(entries[1].history, ElementsAre(a));
    EXPECT_TRUE(entries[2].history.empty());
}

// An earlier enabled matching channel shadows, even while its own cooldown
// runs; disabled, mismatching and later channels do not, and a mismatch of the
// previewed channel is reported before any shadowing.
TEST_F(RulePreviewTest, OnlyEarlierEnabledMatchingChannelsShadow) {
    auto first = channel(withCooldown(3600));
    auto previewed = channel();
    auto entries = run(previewed, {first, previewed}, {message("Mom", 0), message("Mom", 10)});
    EXPECT_THAT(verdicts(entries), ElementsAre(PreviewVerdict::shadowed(first.id),
                                               PreviewVerdict::shadowed(first.id)));
    EXPECT_EQ(RulePreview::ringCount(entries), 0);
    EXPECT_TRUE(entries[0].verdict.matchesRule());

    ChannelRule slackOnly;
    slackOnly.apps = {"Slack"};
    entries = run(previewed, {channel({}, false), channel(slackOnly), previewed, channel()},
                  {message("A", 0)});
    EXPECT_THAT(verdicts(entries), ElementsAre(PreviewVerdict::rings()));
    auto slack = channel(slackOnly);
    EXPECT_THAT(verdicts(run(slack, {first, slack}, {message("Mom", 0)})),
                ElementsAre(PreviewVerdict::noMatch()));
}

TEST_F(RulePreviewTest, DisabledChannelWithMatchingRule) {
    ChannelRule messagesOnly;
    messagesOnly.apps = {"Messages"};
    auto previewed = channel(messagesOnly, false);
    auto entries = run(previewed, {previewed}, {message("Mom", 0), message("Mom", 10, "Slack")});
    EXPECT_THAT(verdicts(entries),
                ElementsAre(PreviewVerdict::disabled(), PreviewVerdict::noMatch()));
    EXPECT_TRUE(entries[1].verdict.matchesRule());
    EXPECT_FALSE(entries[0].verdict.matchesRule());
}

TEST_F(RulePreviewTest, CooledDownMessageDoesNotRestartTheCooldown) {
    auto previewed = channel(withCooldown(300));
    auto entries =
        run(previewed, {previewed}, {message("Mom", 0), message("Mom", 100), message("Mom", 400)});
    EXPECT_THAT(verdicts(entries),
                ElementsAre(PreviewVerdict::rings(), PreviewVerdict::cooledDown(),
                            PreviewVerdict::rings()));
    EXPECT_EQ(RulePreview::ringCount(entries), 2);
}

TEST_F(RulePreviewTest, ShadowedRingsDoNotStartACooldown) {
    // The earlier channel takes only the first message; the second one reaches
    // the previewed channel, which has not rung for Mom yet.
    ChannelRule first;
    first.keywords = {"first"};
    auto earlier = channel(first);
    auto previewed = channel(withCooldown(300));
    auto opening = message("Mom", 0);
    opening.body = "first";
    auto entries = run(previewed, {earlier, previewed}, {opening, message("Mom", 10)});
    EXPECT_THAT(verdicts(entries),
                ElementsAre(PreviewVerdict::shadowed(earlier.id), PreviewVerdict::rings()));
}

// Both channels count the notifications before each one in their windows.
TEST_F(RulePreviewTest, FrequencyDecidesRingingAndShadowing) {
    auto repeated = [](std::int64_t count) {
        ChannelRule rule;
        rule.frequency = FrequencyCondition{count, 600};
        return rule;
    };
    auto earlier = channel(repeated(3));
    auto previewed = channel(repeated(2));
    auto entries = run(previewed, {earlier, previewed},
                       {message("A", 0), message("B", 60), message("C", 120)});
    EXPECT_THAT(verdicts(entries), ElementsAre(PreviewVerdict::noMatch(), PreviewVerdict::rings(),
                                               PreviewVerdict::shadowed(earlier.id)));
}

} // namespace
} // namespace ringwell
