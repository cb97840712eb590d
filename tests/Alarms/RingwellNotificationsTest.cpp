#include "Alarms/RingwellNotifications.h"

#include "AppTestSupport.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

class RingwellNotificationsTest : public ::testing::Test {
protected:
    void post(std::string message, std::optional<std::string> channelName) {
        testing::run(io, RingwellNotifications::postFailure(center, std::move(message),
                                                            std::move(channelName)));
    }

    asio::io_context io;
    testing::FakeNoticeCenter center;
};

TEST_F(RingwellNotificationsTest, AFailureNoticeNamesTheChannelIfAnyAndOpensRingwell) {
    post("Too many alarms.", std::string("Urgent"));
    post("No permission.", std::nullopt);
    ASSERT_EQ(center.posted.size(), 2u);
    EXPECT_EQ(center.posted[0], (NoticeRequest{"ring-failed",
                                               "Ringwell couldn't ring Urgent",
                                               "Too many alarms.",
                                               "ringwell-failure",
                                               {{"default", "Open Ringwell"}},
                                               NoticeKind::information}));
    // One identifier for every failure: a later one replaces the notice on show.
    EXPECT_EQ(center.posted[1].identifier, "ring-failed");
    EXPECT_EQ(center.posted[1].title, "Ringwell couldn't ring");
}

TEST_F(RingwellNotificationsTest, ARefusalReachesTheCaller) {
    center.failNext = true;
    EXPECT_THROW(post("first", std::nullopt), std::runtime_error);
}

} // namespace
} // namespace ringwell
