// The alarm's desktop notice end to end: the local alarm service and the
// notifier on a private session bus, answered by a fake notification server
// the way a person at the desktop would answer it.

#include "Platform/LocalAlarmService.h"
#include "Platform/NotifierDBus.h"

#include "FakeNotificationServer.h"
#include "PlatformTestSupport.h"
#include "TestSupport/Fakes/SilentAudioSink.h"

#include <gtest/gtest.h>

#include <memory>

namespace ringwell {
namespace {

using namespace platformtest;
namespace fs = std::filesystem;

class AlarmNoticeOnBusTest : public ::testing::Test {
protected:
    void SetUp() override {
        bus = std::make_unique<PrivateBus>(directory.path());
        if (!bus->available())
            GTEST_SKIP() << "dbus-daemon is not available";
        address = std::make_unique<EnvironmentGuard>("DBUS_SESSION_BUS_ADDRESS", bus->address());
        server = std::make_unique<FakeNotificationServer>(bus->address());
        notifier = std::make_unique<NotifierDBus>(context, logger);
        writeFile(directory / "default.caf", "tone");
        service = std::make_unique<LocalAlarmService>(
            context, clock, sink, *notifier, logger,
            LocalAlarmService::Files{directory / "alarms.json", directory / "Sounds",
                                     directory / "default.caf"});
        service->setAuthorization(AlarmAuthorizationState::authorized);
    }
    void TearDown() override {
        service.reset();
        notifier.reset();
    }

    // The first alarm rings now, with a snooze and two reminders waiting.
    void ring() {
        auto config = configuration(1, 300);
        config.attributes.presentation.alert.secondaryButton =
            AlarmButton{"Snooze", "#FFFFFF", "zzz"};
        config.attributes.presentation.alert.secondaryButtonBehavior =
            SecondaryButtonBehavior::countdown;
        config.stopIntent = StopRingwellAlarmIntent::make(first, reminders);
        schedule(first, config);
        schedule(reminders[0], configuration(121));
        schedule(reminders[1], configuration(241));
        clock.advance(1);
        service->processDueAlarms();
        ASSERT_TRUE(runUntil(context, [&] { return !server->notices().empty(); }));
    }

    void schedule(const Uuid& id, AlarmConfiguration config) {
        scheduleNow(context, *service, id, std::move(config));
    }

    std::optional<AlarmState> stateOfFirst() const {
        for (const auto& alarm : service->alarms()) {
            if (alarm.id == first)
                return alarm.state;
        }
        return std::nullopt;
    }

    TemporaryDirectory directory;
    asio::io_context context;
    TestClock clock;
    SilentAudioSink sink;
    RecordingLogger logger;
    std::unique_ptr<PrivateBus> bus;
    std::unique_ptr<EnvironmentGuard> address;
    std::unique_ptr<FakeNotificationServer> server;
    std::unique_ptr<NotifierDBus> notifier;
    std::unique_ptr<LocalAlarmService> service;
    const Uuid first = Uuid::random();
    const std::vector<Uuid> reminders{Uuid::random(), Uuid::random()};
};

TEST_F(AlarmNoticeOnBusTest, StopOnTheNoticeStopsTheAlarmAndItsRemindersAndClosesIt) {
    ring();
    const auto notice = server->notices().back();
    server->invoke(notice.id, "stop");
    EXPECT_TRUE(runUntil(context, [&] { return service->alarms().empty(); }));
    EXPECT_TRUE(runUntil(context, [&] { return !server->closed().empty(); }));
    EXPECT_EQ(server->closed(), (std::vector<std::uint32_t>{notice.id}));
    EXPECT_EQ(sink.playing(), std::nullopt);
}

TEST_F(AlarmNoticeOnBusTest, SnoozeOnTheNoticeSnoozesAndTakesTheNoticeAway) {
    ring();
    const auto notice = server->notices().back();
    server->invoke(notice.id, "snooze");

    EXPECT_TRUE(runUntil(context, [&] { return stateOfFirst() == AlarmState::countdown; }));
    EXPECT_TRUE(runUntil(context, [&] { return !server->closed().empty(); }));
    EXPECT_EQ(service->alarms().size(), 3u); // the reminders still wait
}

TEST_F(AlarmNoticeOnBusTest, ANoticeTheDesktopTookAwayWhileRingingIsPostedAgain) {
    ring();
    const auto before = server->notices().size();
    server->close(server->notices().back().id, 1);
    EXPECT_TRUE(runUntil(context, [&] { return server->notices().size() > before; }));
    EXPECT_EQ(server->notices().back().replacesId, 0u);
    EXPECT_EQ(stateOfFirst(), AlarmState::alerting);
}

} // namespace
} // namespace ringwell
