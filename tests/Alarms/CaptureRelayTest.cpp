#include "Alarms/CaptureRelay.h"

#include "AppTestSupport.h"
#include "TestSupport/Fakes/FakeNotificationSource.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using testing::FakeNotificationSource;

class CaptureRelayTest : public testing::AppTest {
protected:
    // Delivers one notification and runs the dispatcher to its end.
    void capture(std::optional<std::string> app, std::string title = "Mom") {
        source.deliver(send(std::move(app), std::nullopt, title, std::string("call me")));
        io.restart();
        io.run();
    }

    FakeNotificationSource source;
    CaptureRelay relay{ctx, source, io.get_executor()};
};

TEST_F(CaptureRelayTest, ACapturedNotificationTakesTheRoadOfASend) {
    relay.start();
    ASSERT_TRUE(source.running());
    capture("Signal");

    ASSERT_EQ(store.events().size(), 1u);
    const FireEvent& event = store.events().front();
    EXPECT_EQ(event.outcome, FireOutcome::fired);
    EXPECT_EQ(event.channelName, "Urgent");
    EXPECT_EQ(event.app, "Signal");
    EXPECT_EQ(event.title, "Mom");
    EXPECT_TRUE(defaults.value(DefaultsKey::lastSendToRingwell).has_value());
    EXPECT_EQ(relay.forwarded(), 1u);
}

TEST_F(CaptureRelayTest, OnlyTheChosenAppsReachTheDispatcher) {
    relay.setApps(std::vector<std::string>{" signal ", "  ", "SIGNAL"});
    EXPECT_EQ(relay.apps(), (std::vector<std::string>{"signal"}));
    relay.start();
    int sightings = 0;
    relay.onSighting([&] { ++sightings; });
    capture("Signal");
    capture("Slack");
    ASSERT_EQ(store.events().size(), 1u);
    EXPECT_EQ(store.events().front().app, "Signal");
    // Apps not chosen are still listed as seen, so that they can be chosen.
    ASSERT_EQ(relay.sightings().apps().size(), 2u);
    EXPECT_EQ(relay.sightings().apps()[0].name, "Slack");
    EXPECT_EQ(sightings, 2);

    relay.setApps(std::nullopt);
    capture("Slack");
    EXPECT_EQ(store.events().size(), 2u);
}

TEST_F(CaptureRelayTest, TurningCaptureOffStopsTheSourceAndIsRemembered) {
    relay.start();
    relay.setEnabled(false);
    EXPECT_FALSE(source.running());

    CaptureRelay later(ctx, source, io.get_executor());
    later.start();
    EXPECT_FALSE(source.running());
    later.setEnabled(true);
    EXPECT_TRUE(source.running());
    capture("Signal");
    EXPECT_EQ(store.events().size(), 1u);
}

} // namespace
} // namespace ringwell
