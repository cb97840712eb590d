#include "Alarms/Watchdog.h"
#include "Alarms/NotificationDispatcher.h"

#include "AppTestSupport.h"

#include <gtest/gtest.h>

namespace ringwell::testing {
namespace {

// The clock starts on Sunday 2026-03-01 at 10:30 in Berlin.
class WatchdogTest : public AppTest {
protected:
    void forward(const char* app) {
        run(NotificationDispatcher::handle(ctx, send(std::string(app))));
    }

    std::size_t silentEvents() const {
        return std::count_if(store.events().begin(), store.events().end(),
                             [](const FireEvent& e) { return e.outcome == FireOutcome::silent; });
    }

    static WatchExpectation every(const char* app, std::int64_t seconds,
                                  std::optional<ActiveHours> hours = std::nullopt) {
        return {app, seconds, std::move(hours), {}, std::nullopt};
    }
};

TEST_F(WatchdogTest, AMissedExpectationIsToldOnceAndTrafficEndsIt) {
    Watchdog watchdog(ctx);
    forward("Signal");
    ASSERT_TRUE(watchdog.add(every("signal", 3 * 3600)));

    clock.advance(3 * 3600 - 60);
    EXPECT_TRUE(run(watchdog.check()).empty());
    clock.advance(60);
    auto told = run(watchdog.check());
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told[0].outcome, FireOutcome::silent);
    EXPECT_EQ(told[0].title, "No notifications from signal since 2026-03-01 10:30 \u2014 is "
                             "forwarding still working?");
    ASSERT_EQ(notices.posted.size(), 1u);
    EXPECT_EQ(notices.posted[0].title, told[0].title);
    EXPECT_TRUE(watchdog.list()[0].isSilent);

    // One notice per silence, however long it lasts.
    clock.advance(6 * 3600);
    EXPECT_TRUE(run(watchdog.check()).empty());
    EXPECT_EQ(silentEvents(), 1u);
    // A silence record is no notification: it does not end the silence.
    EXPECT_TRUE(watchdog.list()[0].isSilent);

    forward("Signal");
    EXPECT_FALSE(watchdog.list()[0].isSilent);
    clock.advance(3 * 3600);
    EXPECT_EQ(run(watchdog.check()).size(), 1u);
    EXPECT_EQ(notices.posted.size(), 2u);
}

TEST_F(WatchdogTest, OnlyWatchedHoursCountAndARestartKeepsWhatItKnew) {
    {
        Watchdog watchdog(ctx);
        // Weekdays 09:00 to 17:00: Sunday's silence does not count.
        ASSERT_TRUE(watchdog.add(every("Mail", 2 * 3600, ActiveHours{{2, 3, 4, 5, 6}, 540, 1020})));
        forward("Mail"); // Sunday 10:30
    }
    Watchdog restarted(ctx); // the same settings, as after a restart
    ASSERT_EQ(restarted.list().size(), 1u);
    EXPECT_EQ(restarted.list()[0].lastHeard, at("2026-03-01T09:30:00Z"));
    // Due on Monday at 11:00 local time.
    EXPECT_EQ(restarted.list()[0].dueAt, at("2026-03-02T10:00:00Z"));
    clock.set(at("2026-03-02T09:59:00Z"));
    EXPECT_TRUE(run(restarted.check()).empty());
    clock.set(at("2026-03-02T10:00:00Z"));
    EXPECT_EQ(run(restarted.check()).size(), 1u);

    EXPECT_TRUE(restarted.remove("MAIL"));
    EXPECT_TRUE(restarted.list().empty());
    EXPECT_FALSE(restarted.remove("Mail"));
}

TEST_F(WatchdogTest, AnAppIsHeardWhateverTheCaseOfItsName) {
    {
        Watchdog watchdog(ctx);
        ASSERT_TRUE(watchdog.add(every("STRASSE", 3600)));
        forward("Straße");
        EXPECT_EQ(watchdog.list()[0].lastHeard, clock.now());
    }
    // Earlier versions saved what they heard under the lower-cased name.
    json::Json saved = *ctx.defaults.value("watchdog");
    saved["lastHeard"] = {{"straße", json::dateValue(at("2026-03-01T08:00:00Z"))}};
    ctx.defaults.set("watchdog", saved);
    EXPECT_EQ(Watchdog(ctx).list()[0].lastHeard, at("2026-03-01T08:00:00Z"));
}

TEST_F(WatchdogTest, ADeviceIsHeardFromWhateverItSendsAndAWatchCanRingAChannel) {
    Watchdog watchdog(ctx);
    change(urgent().id, [](Channel& c) { c.rule = appRule("Calendar"); });
    WatchExpectation watch = every("device:Pixel", 3600);
    watch.ring = urgent().id;
    ASSERT_TRUE(watchdog.add(watch));
    auto fromPixel = send(std::string("Mail"));
    fromPixel.received.push_back({"Device", "Pixel"});
    clock.advance(1800);
    run(NotificationDispatcher::handle(ctx, fromPixel));
    ASSERT_EQ(watchdog.list()[0].lastHeard, clock.now());

    clock.advance(3600);
    ASSERT_EQ(run(watchdog.check()).size(), 1u);
    // The channel rings instead of the notice, and its ring is not heard as
    // the device's traffic.
    EXPECT_EQ(service.scheduled.size(), 1u);
    EXPECT_TRUE(notices.posted.empty());
    EXPECT_EQ(store.events().front().outcome, FireOutcome::fired);
    EXPECT_TRUE(watchdog.list()[0].isSilent);

    // A channel deleted since falls back to the notice.
    const Uuid channel = urgent().id;
    store.deleteChannel(channel);
    run(NotificationDispatcher::handle(ctx, fromPixel));
    clock.advance(3600);
    ASSERT_EQ(run(watchdog.check()).size(), 1u);
    EXPECT_EQ(notices.posted.size(), 1u);
}

TEST_F(WatchdogTest, CaptureThatStopsWorkingIsToldOnceAndClearedWhenItWorksAgain) {
    Watchdog watchdog(ctx);
    bool stopped = true;
    watchdog.watchCapture([&] { return stopped; });
    // Never working (no desktop session) is nothing to tell.
    EXPECT_TRUE(run(watchdog.check()).empty());

    stopped = false;
    EXPECT_TRUE(run(watchdog.check()).empty());
    const Date worked = clock.now();
    clock.advance(60);
    stopped = true;
    auto told = run(watchdog.check());
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told[0].title, "No notifications from desktop capture since 2026-03-01 10:30 "
                             "\u2014 is forwarding still working?");
    EXPECT_EQ(watchdog.captureSilentSince(), worked);
    clock.advance(60);
    EXPECT_TRUE(run(watchdog.check()).empty());
    EXPECT_EQ(notices.posted.size(), 1u);

    stopped = false;
    EXPECT_TRUE(run(watchdog.check()).empty());
    EXPECT_FALSE(watchdog.captureSilentSince());
    stopped = true;
    EXPECT_EQ(run(watchdog.check()).size(), 1u);
}

TEST_F(WatchdogTest, RefusesWatchesItCannotKeep) {
    Watchdog watchdog(ctx);
    EXPECT_FALSE(watchdog.add(every(" ", 3600)));
    EXPECT_FALSE(watchdog.add(every("a/b", 3600)));
    EXPECT_FALSE(watchdog.add(every("Mail", 59)));
    EXPECT_FALSE(watchdog.add(every("Mail", 3600, ActiveHours{{}, 0, 0})));
    EXPECT_FALSE(watchdog.add(every("Mail", 3600, ActiveHours{{8}, 0, 0})));
    EXPECT_FALSE(watchdog.add(every("Mail", 3600, ActiveHours{{1}, 0, 1440})));
    EXPECT_TRUE(watchdog.list().empty());
}

} // namespace
} // namespace ringwell::testing
