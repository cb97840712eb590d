#include "Core/ConnectionStatus.h"

#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using testing::at;
using Trigger = ConnectionStatus::Trigger;

class ConnectionStatusTest : public ::testing::Test {
protected:
    std::string labelFor(double secondsAgo) const {
        ConnectionStatus status{now.addingSeconds(-secondsAgo), 1};
        return status.label(now);
    }

    Uuid channel = Uuid::random();
    Uuid other = Uuid::random();
    Date now = at("2025-06-02T10:00:00Z");
};

TEST_F(ConnectionStatusTest, CountsOnlyTheChannelsEventsAndTakesTheFirstInLogOrder) {
    auto status = ConnectionStatus::of(channel, {{other, now}, {std::nullopt, now}});
    EXPECT_EQ(status.count, 0);
    EXPECT_EQ(status.lastTriggered, std::nullopt);
    EXPECT_EQ(status.label(now), "Never triggered");
    std::vector<Trigger> newestFirst = {
        {other, at("2025-06-02T09:00:00Z")},   {std::nullopt, at("2025-06-02T08:00:00Z")},
        {channel, at("2025-06-01T12:00:00Z")}, {other, at("2025-06-01T11:00:00Z")},
        {channel, at("2025-05-30T12:00:00Z")},
    };
    status = ConnectionStatus::of(channel, newestFirst);
    EXPECT_EQ(status.count, 2);
    EXPECT_EQ(status.lastTriggered, at("2025-06-01T12:00:00Z"));
    // The log is newest first; the first attributed entry is taken as it is.
    status = ConnectionStatus::of(
        channel, {{channel, at("2025-06-01T12:00:00Z")}, {channel, at("2025-06-02T09:00:00Z")}});
    EXPECT_EQ(status.lastTriggered, at("2025-06-01T12:00:00Z"));
}

TEST_F(ConnectionStatusTest, LabelPicksTheUnitFromTheInterval) {
    EXPECT_EQ(labelFor(0.4), "Last triggered now");
    EXPECT_EQ(labelFor(59), "Last triggered 59 seconds ago");
    EXPECT_EQ(labelFor(60), "Last triggered 1 minute ago");
    EXPECT_EQ(labelFor(2 * 3600 + 59 * 60), "Last triggered 2 hours ago");
    EXPECT_EQ(labelFor(30 * 3600), "Last triggered yesterday");
    EXPECT_EQ(labelFor(8 * 86400), "Last triggered last week");
    EXPECT_EQ(labelFor(800 * 86400), "Last triggered 2 years ago");
    EXPECT_EQ(labelFor(-120), "Last triggered in 2 minutes");
}

TEST(AppReachabilityTest, NamesCompareLowerCasedAndOtherwiseExactly) {
    const std::vector<std::string> known = {"Mail", "Messages", "Phone"};
    EXPECT_TRUE(ConnectionStatus::isReaching("PHONE", known));
    EXPECT_TRUE(ConnectionStatus::isReaching("ÉCOLE", {"école"}));
    EXPECT_FALSE(ConnectionStatus::isReaching("Mail ", known));
    EXPECT_FALSE(ConnectionStatus::isReaching("Mai", known));
}

} // namespace
} // namespace ringwell
