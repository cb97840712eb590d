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

TEST_F(RingwellNotificationsTest, AFailureNoticeNamesTheChannelAndOpensRingwell) {
    post("Too many alarms.", std::string("Urgent"));
    ASSERT_EQ(center.shown.size(), 1u);
    EXPECT_EQ(center.shown[0], (NoticeRequest{"ring-failed",
                                              "Ringwell couldn't ring Urgent",
                                              "Too many alarms.",
                                              "ringwell-failure",
                                              {{"default", "Open Ringwell"}},
                                              NoticeKind::information}));
}

TEST_F(RingwellNotificationsTest, WithoutAChannelTheTitleHasNoTrailingSpace) {
    post("No permission.", std::nullopt);
    EXPECT_EQ(center.shown.at(0).title, "Ringwell couldn't ring");
}

TEST_F(RingwellNotificationsTest, ALaterFailureReplacesTheNoticeOnShow) {
    post("first", std::string("Urgent"));
    post("second", std::string("Mail"));
    ASSERT_EQ(center.shown.size(), 1u);
    EXPECT_EQ(center.shown[0].body, "second");
    EXPECT_EQ(center.shown[0].title, "Ringwell couldn't ring Mail");
}

TEST_F(RingwellNotificationsTest, ARefusalReachesTheCaller) {
    center.failNext = true;
    EXPECT_THROW(post("first", std::nullopt), std::runtime_error);
}

} // namespace
} // namespace ringwell
