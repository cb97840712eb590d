#include "Platform/NotifierDBus.h"

#include "FakeNotificationServer.h"
#include "PlatformTestSupport.h"

#include <gtest/gtest.h>

#include <exception>
#include <map>
#include <memory>

namespace ringwell {
namespace {

using namespace platformtest;

class NotifierDBusTest : public ::testing::Test {
protected:
    // Runs `add` to its end; the exception it threw, if any.
    std::exception_ptr post(NotifierDBus& notifier, NoticeRequest request) {
        std::exception_ptr failure;
        bool finished = false;
        asio::co_spawn(context, notifier.add(std::move(request)), [&](std::exception_ptr error) {
            failure = error;
            finished = true;
        });
        EXPECT_TRUE(runUntil(context, [&] { return finished; })) << "add never finished";
        return failure;
    }

    static NoticeRequest failure(const std::string& body) {
        return {"ring-failed", "Ringwell couldn't ring Urgent", body, "ringwell-failure"};
    }
    static NoticeRequest alarm(const std::string& identifier = "alarm-1") {
        return {identifier,
                "Urgent: Mom",
                "call me",
                "ringwell-alarm",
                {{"stop", "Stop"}, {"snooze", "Snooze"}, {"default", "Open Ringwell"}},
                NoticeKind::alarm};
    }

    asio::io_context context;
    RecordingLogger logger;
    TemporaryDirectory directory;
};

TEST_F(NotifierDBusTest, WithoutASessionBusNoticesGoToTheLog) {
    EnvironmentGuard bus("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (directory / "none").string());
    NotifierDBus notifier(context, logger);

    EXPECT_FALSE(notifier.isConnected());
    EXPECT_EQ(notifier.permissionStatus(), "unreachable");
    EXPECT_EQ(post(notifier, failure("Too many alarms\nare scheduled")), nullptr);
    EXPECT_EQ(logger.count("Notice: Ringwell couldn't ring Urgent — Too many alarms are scheduled"),
              1);
}

class NotifierOnABusTest : public NotifierDBusTest {
protected:
    void SetUp() override {
        bus = std::make_unique<PrivateBus>(directory.path());
        if (!bus->available())
            GTEST_SKIP() << "dbus-daemon is not available";
        address = std::make_unique<EnvironmentGuard>("DBUS_SESSION_BUS_ADDRESS", bus->address());
    }

    std::unique_ptr<PrivateBus> bus;
    std::unique_ptr<EnvironmentGuard> address;
};

TEST_F(NotifierOnABusTest, AServerThatAnswersMeansNoticesAreAllowed) {
    FakeNotificationServer server(bus->address());
    NotifierDBus notifier(context, logger);

    EXPECT_TRUE(notifier.isConnected());
    EXPECT_TRUE(runUntil(context, [&] { return notifier.permissionStatus() != "unknown"; }));
    EXPECT_EQ(notifier.permissionStatus(), "allowed");
    EXPECT_EQ(notifier.server()->doNotDisturb, std::nullopt); // a server that does not tell
}

TEST_F(NotifierOnABusTest, WithNobodyServingNotificationsNoServerIsReachable) {
    NotifierDBus notifier(context, logger);

    EXPECT_TRUE(runUntil(context, [&] { return notifier.permissionStatus() != "unknown"; }));
    EXPECT_EQ(notifier.permissionStatus(), "unreachable");
    EXPECT_EQ(notifier.server(), std::nullopt);
    EXPECT_NE(post(notifier, failure("message")), nullptr);
}

// A newer notice replaces the older one with the same identifier; only an
// alarm's notice asks to pass do-not-disturb.
TEST_F(NotifierOnABusTest, NoticesReplaceTheirPredecessorAndOnlyAlarmsPassDoNotDisturb) {
    FakeNotificationServer server(bus->address());
    NotifierDBus notifier(context, logger);

    EXPECT_EQ(post(notifier, failure("first")), nullptr);
    EXPECT_EQ(post(notifier, failure("Too many alarms")), nullptr);
    EXPECT_EQ(post(notifier, alarm()), nullptr);
    // Invalid UTF-8 would make the bus refuse the whole message.
    EXPECT_EQ(post(notifier, {"other", "bad \xff text", "", ""}), nullptr);

    const auto notices = server.notices();
    ASSERT_EQ(notices.size(), 4u);
    EXPECT_EQ(notices[0].replacesId, 0u);
    EXPECT_EQ(notices[1].replacesId, notices[0].id);
    EXPECT_EQ(notices[2].replacesId, 0u); // another identifier, another notice
    EXPECT_NE(notices[2].id, notices[0].id);

    EXPECT_EQ(notices[1].appName, "Ringwell");
    EXPECT_EQ(notices[1].summary, "Ringwell couldn't ring Urgent");
    EXPECT_EQ(notices[1].body, "Too many alarms");
    EXPECT_EQ(notices[1].expireTimeout, -1);
    EXPECT_EQ(notices[1].hints.at("urgency"), "1");
    EXPECT_EQ(notices[1].hints.count("resident"), 0u);

    EXPECT_EQ(notices[2].actions, (std::vector<std::string>{"stop", "Stop", "snooze", "Snooze",
                                                            "default", "Open Ringwell"}));
    EXPECT_EQ(notices[2].expireTimeout, 0);
    const std::map<std::string, std::string> alarmHints{{"urgency", "2"},
                                                        {"resident", "true"},
                                                        {"transient", "false"},
                                                        {"suppress-sound", "true"},
                                                        {"desktop-entry", "ringwell"},
                                                        {"category", "x-ringwell.alarm"},
                                                        {"SWAYNC_BYPASS_DND", "true"},
                                                        {"x-ringwell-notice", "true"},
                                                        {"x-ringwell-thread", "ringwell-alarm"}};
    EXPECT_EQ(notices[2].hints, alarmHints);
    EXPECT_EQ(notices[3].summary, "bad \xef\xbf\xbd text");
}

TEST_F(NotifierOnABusTest, WithdrawClosesTheNoticeAndItsCloseIsNoResponse) {
    FakeNotificationServer server(bus->address());
    NotifierDBus notifier(context, logger);
    std::vector<NoticeResponse> responses;
    auto token = notifier.observeResponses([&](const auto& r) { responses.push_back(r); });

    EXPECT_EQ(post(notifier, alarm()), nullptr);
    const auto id = server.notices().at(0).id;
    bool withdrawn = false;
    asio::co_spawn(context, notifier.withdraw("alarm-1"),
                   [&](std::exception_ptr) { withdrawn = true; });
    EXPECT_TRUE(runUntil(context, [&] { return withdrawn && !server.closed().empty(); }));
    EXPECT_EQ(server.closed(), (std::vector<std::uint32_t>{id}));

    // The server's announcement of that close, and a click on the old id,
    // come too late to mean anything.
    server.invoke(id, "stop");
    EXPECT_EQ(post(notifier, failure("a later notice")), nullptr);
    server.close(server.notices().at(1).id, 3);
    EXPECT_TRUE(runUntil(context, [&] { return !responses.empty(); }));
    EXPECT_EQ(responses, (std::vector<NoticeResponse>{
                             {"ring-failed", NoticeResponse::Kind::closedBySystem, ""}}));
    notifier.stopObservingResponses(token);
}

TEST_F(NotifierOnABusTest, StoppingTakesTheAlarmNoticesAwayAndLeavesTheOthers) {
    FakeNotificationServer server(bus->address());
    auto notifier = std::make_unique<NotifierDBus>(context, logger);
    EXPECT_EQ(post(*notifier, failure("stays")), nullptr);
    EXPECT_EQ(post(*notifier, alarm()), nullptr);
    const auto alarmId = server.notices().at(1).id;

    notifier.reset();
    EXPECT_TRUE(runUntil(context, [&] { return !server.closed().empty(); }));
    EXPECT_EQ(server.closed(), (std::vector<std::uint32_t>{alarmId}));
}

TEST_F(NotifierOnABusTest, ClicksAndClosesOfANoticeOnShowBecomeResponses) {
    FakeNotificationServer server(bus->address());
    NotifierDBus notifier(context, logger);
    std::vector<NoticeResponse> responses;
    auto token = notifier.observeResponses([&](const auto& r) { responses.push_back(r); });
    auto next = [&](std::size_t count) {
        EXPECT_TRUE(runUntil(context, [&] { return responses.size() >= count; }));
        return responses.size() >= count ? responses[count - 1] : NoticeResponse{};
    };

    EXPECT_EQ(post(notifier, alarm("alarm-1")), nullptr);
    EXPECT_EQ(post(notifier, alarm("alarm-2")), nullptr);
    EXPECT_EQ(post(notifier, alarm("alarm-3")), nullptr);
    const auto notices = server.notices();

    server.invoke(notices[0].id, "snooze");
    EXPECT_EQ(next(1), (NoticeResponse{"alarm-1", NoticeResponse::Kind::action, "snooze"}));
    // A server that ignores `resident` closes a clicked notice as if dismissed.
    server.close(notices[0].id, 2);
    EXPECT_EQ(next(2), (NoticeResponse{"alarm-1", NoticeResponse::Kind::closedBySystem, ""}));
    server.close(notices[1].id, 2);
    EXPECT_EQ(next(3), (NoticeResponse{"alarm-2", NoticeResponse::Kind::dismissed, ""}));
    server.close(notices[2].id, 1);
    EXPECT_EQ(next(4), (NoticeResponse{"alarm-3", NoticeResponse::Kind::closedBySystem, ""}));
    // Posted again, a closed notice is a new one, not a replacement.
    EXPECT_EQ(post(notifier, alarm("alarm-3")), nullptr);
    EXPECT_EQ(server.notices().back().replacesId, 0u);
    notifier.stopObservingResponses(token);
}

// Plasma tells through `Inhibited`, dunst 1.9.0 through `paused` alone.
TEST_F(NotifierOnABusTest, TheServerIsNamedWithItsDoNotDisturbWhereItTells) {
    using Quieten = void (FakeNotificationServer::*)(bool);
    const std::pair<const char*, Quieten> servers[] = {
        {"Plasma", &FakeNotificationServer::setInhibited},
        {"dunst", &FakeNotificationServer::setPaused}};
    for (const auto& [name, quieten] : servers) {
        SCOPED_TRACE(name);
        FakeNotificationServer server(bus->address(), name);
        NotifierDBus notifier(context, logger);
        auto quiet = [&] {
            auto found = notifier.server();
            return found ? found->doNotDisturb : std::nullopt;
        };

        EXPECT_TRUE(runUntil(context, [&] { return quiet() == false; }));
        EXPECT_EQ(notifier.server()->name, name);
        (server.*quieten)(true);
        EXPECT_TRUE(runUntil(context, [&] { return quiet() == true; }));
    }
}

TEST_F(NotifierOnABusTest, ARefusedNoticeFailsTheCall) {
    FakeNotificationServer server(bus->address());
    NotifierDBus notifier(context, logger);

    const auto error = post(notifier, {"x", "refuse me", "", ""});
    ASSERT_NE(error, nullptr);
    try {
        std::rethrow_exception(error);
    } catch (const std::runtime_error& refused) {
        EXPECT_NE(std::string(refused.what()).find("refused by the fake server"),
                  std::string::npos);
    }
}

TEST_F(NotifierOnABusTest, ANoticeInFlightWhenTheNotifierGoesAwayEndsQuietly) {
    FakeNotificationServer server(bus->address());
    auto notifier = std::make_unique<NotifierDBus>(context, logger);
    bool finished = false;
    asio::co_spawn(context, notifier->add(failure("late")),
                   [&](std::exception_ptr) { finished = true; });
    drain(context); // the call is on its way; the answer has not been read
    notifier.reset();

    EXPECT_TRUE(runUntil(context, [&] { return finished; }));
}

} // namespace
} // namespace ringwell
