#include "Alarms/NotificationDispatcher.h"

#include "AppTestSupport.h"
#include "Core/Json.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using testing::AppTest;

class NotificationDispatcherTest : public AppTest {
protected:
    FireEvent handle(const ShortcutInputFields& fields) {
        return run(NotificationDispatcher::handle(ctx, fields));
    }

    // Leaves one channel, "Mail alerts", that takes Mail only.
    Channel mailOnly(std::int64_t cooldownSeconds = 0) {
        return change(urgent().id, [&](Channel& c) {
            c.name = "Mail alerts";
            c.rule = appRule("Mail");
            c.rule.cooldownSeconds = cooldownSeconds;
        });
    }
};

// MARK: Every Send

TEST_F(NotificationDispatcherTest, EverySendIsLoggedAndDatedEvenAnEmptyOne) {
    handle(send("Mail"));
    EXPECT_EQ(logger.lines().at(0),
              (testing::RecordingLogger::Line{LogLevel::notice, "SendToRingwell",
                                              "Send to Ringwell: app=Mail setupTest=false"}));
    clock.advance(5);
    store.deleteChannel(urgent().id);
    const FireEvent event =
        handle(ShortcutInputFields::fromShortcutInput({}, {}, {}, {}, {}, {}, {}, {}, {}, {}));
    EXPECT_EQ(event.outcome, FireOutcome::noMatch);
    EXPECT_EQ(store.events().size(), 2u);
    EXPECT_EQ(defaults.value("lastSendToRingwell"), json::dateValue(clock.now()));
}

// MARK: Setup test

TEST_F(NotificationDispatcherTest, AWaitingSetupTestTakesTheNotificationAndNothingRings) {
    store.setSetupWarning(std::string("an earlier warning"));
    setupTest.start(clock.now());
    const FireEvent event = handle(send(std::nullopt, "Alice", "Hi"));

    EXPECT_EQ(event.outcome, FireOutcome::setupTest);
    EXPECT_TRUE(event.isTest);
    EXPECT_FALSE(event.channelID);
    EXPECT_EQ(event.sender, "Alice");
    EXPECT_EQ(store.events(), std::vector<FireEvent>{event});
    EXPECT_TRUE(service.scheduled.empty());
    EXPECT_TRUE(std::holds_alternative<SetupTestController::Received>(setupTest.state()));
    // The warning is for ordinary notifications; a test leaves it alone.
    EXPECT_EQ(store.setupWarning(), "an earlier warning");
    EXPECT_EQ(logger.lines().at(0).message, "Send to Ringwell: app=nil setupTest=true");
    // After the test the next notification rings again.
    EXPECT_EQ(handle(send("Mail")).outcome, FireOutcome::fired);
}

// MARK: Setup warning

TEST_F(NotificationDispatcherTest, EveryOrdinaryNotificationRefreshesTheSetupWarning) {
    handle(send(std::nullopt));
    EXPECT_EQ(store.setupWarning(),
              "Your automation isn't passing the app, so rules that name apps can't match. Set App "
              "from the notification with --app or the JSON field \"app\".");
    service.held.clear();
    handle(send("Mail"));
    EXPECT_EQ(store.setupWarning(), std::nullopt);
}

// MARK: Ringwell's own notices

TEST_F(NotificationDispatcherTest, OnlyRingwellsOwnFailureNoticeIsIgnored) {
    const FireEvent event = handle(send("ringwell", std::nullopt, "Ringwell couldn't ring Urgent"));
    EXPECT_EQ(event.outcome, FireOutcome::ignored);
    EXPECT_FALSE(event.channelID);
    EXPECT_TRUE(service.scheduled.empty());

    EXPECT_EQ(handle(send("Ringwell", std::nullopt, "Alarms stopped")).outcome, FireOutcome::fired);
    service.held.clear();
    // The same title from another app is not Ringwell's own.
    EXPECT_EQ(handle(send("Mail", std::nullopt, "Ringwell couldn't ring")).outcome,
              FireOutcome::fired);
}

// MARK: Routing

TEST_F(NotificationDispatcherTest, ADeletedChannelNoLongerTakesItsNotifications) {
    const Channel mail = mailOnly();
    EXPECT_EQ(handle(send("Mail")).outcome, FireOutcome::fired);
    store.deleteChannel(mail.id);
    service.held.clear();
    const FireEvent event = handle(send("Mail", "Alice"));
    EXPECT_EQ(event.outcome, FireOutcome::noMatch);
    EXPECT_FALSE(event.channelID);
    EXPECT_FALSE(event.alarmID);
    EXPECT_EQ(event.sender, "Alice");
    EXPECT_EQ(event.firedAt, clock.now());
}

// When the period ends is the cooldown's own test.
TEST_F(NotificationDispatcherTest, TheCooldownHoldsTheSenderOfARealRingOfTheChannel) {
    const Channel mail = mailOnly(60);
    // A test ring of this channel, and a real ring of another channel, hold nothing.
    run(scheduler.fire(mail, send("Mail", "Alice").notification(clock.now()), RingKind::test));
    service.held.clear();
    FireEvent otherChannel = store.events().front();
    otherChannel.id = Uuid::random();
    otherChannel.isTest = false;
    otherChannel.channelID = Uuid::random();
    store.log(otherChannel);
    EXPECT_EQ(handle(send("Mail", "Alice")).outcome, FireOutcome::fired);
    service.held.clear(); // the alarm was stopped, so only the cooldown can hold

    clock.advance(30);
    const FireEvent cooled = handle(send("Mail", "alice"));
    EXPECT_EQ(cooled.outcome, FireOutcome::cooledDown);
    EXPECT_EQ(cooled.channelID, mail.id);
    EXPECT_EQ(cooled.channelName, "Mail alerts");
    EXPECT_EQ(handle(send("Mail", "Bob")).outcome, FireOutcome::fired);
}

TEST_F(NotificationDispatcherTest, FrequencyRulesSeeTheEarlierNotifications) {
    change(urgent().id, [](Channel& c) { c.rule.frequency = FrequencyCondition{2, 600}; });
    EXPECT_EQ(handle(send("Mail")).outcome, FireOutcome::noMatch);
    clock.advance(10);
    EXPECT_EQ(handle(send("Mail")).outcome, FireOutcome::fired);
}

// MARK: Matching budget

TEST_F(NotificationDispatcherTest, HostileRulesAreCutShortAndTheEventSaysSo) {
    // Patterns that would match: without a budget, Urgent would ring.
    change(urgent().id, [](Channel& c) {
        c.rule.senders = {"Alice", "Bob"};
        c.rule.keywords = {"Hello"};
    });
    // A matching clock on which every reading comes a second after the last,
    // as if each pattern took that long: the routing's budget runs out at once.
    MatchBudget::Duration spent{};
    ctx.matchingClock = [&] { return spent += std::chrono::seconds(1); };
    const FireEvent event = handle(send("Mail", "Alice", "Hello"));
    EXPECT_EQ(event.outcome, FireOutcome::noMatch);
    EXPECT_TRUE(event.routingCutShort);
    EXPECT_EQ(store.events().front(), event);
    EXPECT_TRUE(service.scheduled.empty());

    // A later channel that rings instead says so too: Urgent may have been meant.
    store.addChannel(std::string("Everything"), ChannelRule{});
    const FireEvent instead = handle(send("Mail", "Alice", "Hello"));
    EXPECT_EQ(instead.outcome, FireOutcome::fired);
    EXPECT_EQ(instead.channelName, "Everything");
    EXPECT_TRUE(instead.routingCutShort);
    EXPECT_EQ(store.events().front(), instead);

    // With time left the same notification rings, and its event says nothing.
    ctx.matchingClock = [] { return MatchBudget::Duration{}; };
    const FireEvent rung = handle(send("Mail", "Alice", "Hello"));
    EXPECT_EQ(rung.outcome, FireOutcome::fired);
    EXPECT_FALSE(rung.routingCutShort);
}

// MARK: Failures

TEST_F(NotificationDispatcherTest, AFailedRingPostsOneNoticeNamingTheChannelOrLogsItsRefusal) {
    service.failNextSchedule(AlarmServiceError::Kind::maximumLimitReached);
    const FireEvent event = handle(send("Mail"));
    EXPECT_EQ(event.outcome, FireOutcome::failed);
    EXPECT_EQ(store.events().front(), event);
    ASSERT_EQ(notices.posted.size(), 1u);
    EXPECT_EQ(notices.posted[0].title, "Ringwell couldn't ring Urgent");
    EXPECT_EQ(notices.posted[0].body, event.errorMessage);
    EXPECT_EQ(notices.posted[0].identifier, "ring-failed");

    // A refused notice is logged, and the send still succeeds.
    service.failNextSchedule(AlarmServiceError::Kind::failed, "no audio");
    notices.failNext = true;
    EXPECT_EQ(handle(send("Mail")).outcome, FireOutcome::failed);
    EXPECT_EQ(notices.posted.size(), 1u);
    ASSERT_EQ(logger.lines().size(), 3u);
    EXPECT_EQ(logger.lines()[2].level, LogLevel::error);
    EXPECT_EQ(logger.lines()[2].message,
              "Posting the failure notice failed: the notification server refused the notice");
}

TEST_F(NotificationDispatcherTest, HandlingANotificationDirectlyThrowsTheAlarmError) {
    service.failNextSchedule(AlarmServiceError::Kind::failed, "no audio");
    EXPECT_THROW(run(NotificationDispatcher::handle(ctx, send("Mail").notification(clock.now()))),
                 RingwellAlarmError);
    EXPECT_TRUE(notices.posted.empty());
    EXPECT_EQ(store.events().size(), 1u);
}

} // namespace
} // namespace ringwell
