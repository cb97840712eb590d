#include "Alarms/AlarmScheduler.h"

#include "Alarms/EventRecord.h"

#include "AppTestSupport.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using testing::AppTest;
using Kind = AlarmServiceError::Kind;

class AlarmSchedulerTest : public AppTest {
protected:
    NotificationInfo payload(std::string title = "Server down", std::string body = "Disk full") {
        NotificationInfo info;
        info.app = "Mail";
        info.sender = "ops@example.com";
        info.title = std::move(title);
        info.subtitle = "Production";
        info.body = std::move(body);
        info.date = clock.now().addingSeconds(-2);
        info.isTimeSensitive = true;
        info.received = std::vector<ReceivedField>{{"App", "Mail"}};
        return info;
    }

    FireEvent fire(const Channel& channel, RingKind kind = RingKind::live) {
        return run(scheduler.fire(channel, payload(), kind));
    }

    // The error `fire` threw, failing the test when it threw none.
    RingwellAlarmError fireFailure(const Channel& channel) {
        try {
            fire(channel);
        } catch (const RingwellAlarmError& error) {
            return error;
        }
        ADD_FAILURE() << "fire did not fail";
        return RingwellAlarmError::schedulingFailed("none");
    }

    Channel repeating(std::int64_t count) {
        return change(urgent().id, [&](Channel& c) {
            c.repeatEnabled = true;
            c.repeatCount = count;
        });
    }

    const AlarmConfiguration& configurationOf(const Uuid& id) {
        const auto* scheduled = service.find(id);
        EXPECT_NE(scheduled, nullptr);
        static const AlarmConfiguration none;
        return scheduled ? scheduled->configuration : none;
    }
};

// MARK: The road of one ring

TEST_F(AlarmSchedulerTest, AFiredEventIsLoggedWithItsAlarm) {
    const FireEvent event = fire(urgent());
    ASSERT_EQ(store.events().size(), 1u);
    EXPECT_EQ(store.events().front(), event);
    EXPECT_EQ(event.outcome, FireOutcome::fired);
    EXPECT_EQ(event.channelName, "Urgent");
    ASSERT_TRUE(event.alarmID);
    EXPECT_EQ(event.followUpAlarmIDs, std::vector<Uuid>{});
    EXPECT_EQ(event.received, payload().received);
    EXPECT_EQ(event.receivedAt, payload().date);
    EXPECT_EQ(event.firedAt, clock.now());
    ASSERT_EQ(service.scheduled.size(), 1u);
    EXPECT_EQ(service.scheduled[0].id, *event.alarmID);
    EXPECT_FALSE(scheduler.isInFlight(urgent().id));
}

TEST_F(AlarmSchedulerTest, ADisabledChannelIsSkippedWithoutAskingAnythingButRingsForATest) {
    service.state = AlarmAuthorizationState::notDetermined;
    const Channel disabled = change(urgent().id, [](Channel& c) { c.isEnabled = false; });
    const FireEvent event = fire(disabled);
    EXPECT_EQ(event.outcome, FireOutcome::skipped);
    EXPECT_FALSE(event.alarmID);
    EXPECT_TRUE(service.calls.empty());
    EXPECT_EQ(store.events().front(), event);

    service.state = AlarmAuthorizationState::authorized;
    const FireEvent test = fire(disabled, RingKind::test);
    EXPECT_EQ(test.outcome, FireOutcome::fired);
    EXPECT_TRUE(test.isTest);
    EXPECT_EQ(service.scheduled.size(), 1u);
}

TEST_F(AlarmSchedulerTest, NotAuthorizedRecordsAFailureAndThrowsOrIsReturned) {
    service.state = AlarmAuthorizationState::denied;
    const RingwellAlarmError error = fireFailure(urgent());
    EXPECT_EQ(error.kind(), RingwellAlarmError::Kind::notAuthorized);
    EXPECT_STREQ(error.what(), "Ringwell isn't allowed to schedule alarms. Open Ringwell and allow "
                               "Alarms in Settings.");
    ASSERT_EQ(store.events().size(), 1u);
    EXPECT_EQ(store.events().front().outcome, FireOutcome::failed);
    EXPECT_EQ(store.events().front().errorMessage, error.what());
    EXPECT_TRUE(service.scheduled.empty());
    EXPECT_EQ(service.authorizationRequests, 0); // a denial is not asked again

    const FireAttempt attempt = run(scheduler.attempt(urgent(), payload(), RingKind::live));
    ASSERT_TRUE(attempt.error);
    EXPECT_EQ(attempt.error->kind(), RingwellAlarmError::Kind::notAuthorized);
    EXPECT_EQ(attempt.event, store.events().front());
}

TEST_F(AlarmSchedulerTest, AnUndecidedPermissionIsAskedForOnce) {
    service.state = AlarmAuthorizationState::notDetermined;
    EXPECT_EQ(fire(urgent()).outcome, FireOutcome::fired);
    service.held.clear();
    fire(urgent());
    EXPECT_EQ(service.authorizationRequests, 1);

    // A refused or failed request is not authorised.
    service.state = AlarmAuthorizationState::notDetermined;
    service.answer = AlarmAuthorizationState::denied;
    EXPECT_EQ(fireFailure(urgent()).kind(), RingwellAlarmError::Kind::notAuthorized);
    service.state = AlarmAuthorizationState::notDetermined;
    service.answer = std::nullopt;
    EXPECT_EQ(run(scheduler.requestAuthorization()), AlarmAuthorizationState::denied);
    EXPECT_EQ(fireFailure(urgent()).kind(), RingwellAlarmError::Kind::notAuthorized);
}

// MARK: Coalescing

TEST_F(AlarmSchedulerTest, TwoNearSimultaneousRingsOfOneChannelScheduleOneAlarm) {
    service.suspendSchedule = true;
    const Channel other = store.addChannel(std::string("Other"), ChannelRule{});
    std::vector<Awaitable<FireEvent>> rings;
    rings.push_back(scheduler.fire(urgent(), payload("first"), RingKind::live));
    rings.push_back(scheduler.fire(urgent(), payload("second"), RingKind::live));
    rings.push_back(scheduler.fire(other, payload("third"), RingKind::live));
    auto outcomes = testing::runTogether(io, std::move(rings));

    ASSERT_TRUE(outcomes[0].value && outcomes[1].value && outcomes[2].value);
    EXPECT_EQ(outcomes[0].value->outcome, FireOutcome::fired);
    EXPECT_EQ(outcomes[1].value->outcome, FireOutcome::coalesced);
    EXPECT_FALSE(outcomes[1].value->alarmID);
    EXPECT_EQ(outcomes[1].value->title, "second");
    EXPECT_EQ(outcomes[2].value->outcome, FireOutcome::fired); // another channel
    EXPECT_EQ(service.scheduled.size(), 2u);
    EXPECT_EQ(store.events().size(), 3u);
    EXPECT_FALSE(scheduler.isInFlight(urgent().id));
}

// Whether a channel rings is asked of the service, not of the history.
TEST_F(AlarmSchedulerTest, OnlyHeldAlarmsNamingTheChannelMakeItActive) {
    fire(repeating(2));
    store.clearEvents();
    EXPECT_EQ(fire(urgent()).outcome, FireOutcome::coalesced);
    ASSERT_EQ(service.scheduled.size(), 3u);
    ASSERT_EQ(service.held.size(), 3u);
    service.held.erase(service.held.begin()); // the first alarm was stopped
    EXPECT_TRUE(scheduler.isActive(urgent().id));
    service.failAlarmsQuery = true; // a service that cannot list its alarms holds none
    EXPECT_FALSE(scheduler.isActive(urgent().id));
    service.failAlarmsQuery = false;
    service.held.clear();
    EXPECT_FALSE(scheduler.isActive(urgent().id));

    service.hold(Uuid::random());
    AlarmConfiguration otherChannel;
    otherChannel.attributes.metadata.channelID = Uuid::random();
    service.held.push_back(Alarm{Uuid::random(), AlarmState::alerting, otherChannel, {}, {}});
    EXPECT_FALSE(scheduler.isActive(urgent().id));
    EXPECT_EQ(fire(urgent()).outcome, FireOutcome::fired);
}

// MARK: Follow-ups

TEST_F(AlarmSchedulerTest, FollowUpsAreCappedAtTenAndOnlyForLiveRingsWithRepeatOn) {
    EXPECT_EQ(fire(repeating(25)).followUpAlarmIDs->size(), 10u);
    EXPECT_EQ(service.scheduled.size(), 11u);
    service.held.clear();
    EXPECT_EQ(fire(repeating(-1)).followUpAlarmIDs, std::vector<Uuid>{});
    service.held.clear();
    EXPECT_EQ(fire(repeating(3), RingKind::test).followUpAlarmIDs, std::vector<Uuid>{});
    service.held.clear();
    change(urgent().id, [](Channel& c) { c.repeatEnabled = false; });
    EXPECT_EQ(fire(urgent()).followUpAlarmIDs, std::vector<Uuid>{});
    EXPECT_EQ(service.scheduled.size(), 14u);
}

TEST_F(AlarmSchedulerTest, RemindersFollowTheIntervalAndAStopCancelsOnlyTheRemindersAfterIt) {
    const FireEvent event = fire(repeating(3));
    EXPECT_EQ(configurationOf(*event.alarmID).countdownDuration,
              (CountdownDuration{1.0, std::nullopt}));
    std::vector<double> preAlerts;
    for (const Uuid& id : *event.followUpAlarmIDs)
        preAlerts.push_back(*configurationOf(id).countdownDuration.preAlert);
    EXPECT_EQ(preAlerts, (std::vector<double>{121, 241, 361}));

    const auto& ids = *event.followUpAlarmIDs;
    EXPECT_EQ(configurationOf(*event.alarmID).stopIntent,
              StopRingwellAlarmIntent::make(*event.alarmID, ids));
    EXPECT_EQ(configurationOf(ids[0]).stopIntent,
              StopRingwellAlarmIntent::make(ids[0], {ids[1], ids[2]}));
    EXPECT_EQ(configurationOf(ids[2]).stopIntent, StopRingwellAlarmIntent::make(ids[2], {}));
    // Performed against the service: stopping reminder 2 of 3 leaves reminder 1.
    configurationOf(ids[1]).stopIntent.perform(service);
    std::vector<Uuid> left;
    for (const Alarm& alarm : service.held)
        left.push_back(alarm.id);
    EXPECT_EQ(left, (std::vector<Uuid>{*event.alarmID, ids[0]}));
}

TEST_F(AlarmSchedulerTest, CountdownAlarmsWaitTheirCountdownAndSnoozeSetsThePostAlert) {
    Channel channel = change(urgent().id, [](Channel& c) {
        c.mode = FiringMode::countdown;
        c.countdownSeconds = 30;
        c.snoozeEnabled = true;
        c.snoozeSeconds = 300;
        c.repeatEnabled = true;
        c.repeatCount = 2;
    });
    const FireEvent event = fire(channel);
    const auto& alert = configurationOf(*event.alarmID).attributes.presentation.alert;
    EXPECT_EQ(alert.secondaryButton, (AlarmButton{"Snooze", "#FFFFFF", "zzz"}));
    EXPECT_EQ(alert.secondaryButtonBehavior, SecondaryButtonBehavior::countdown);
    EXPECT_EQ(configurationOf(*event.alarmID).countdownDuration, (CountdownDuration{30.0, 300.0}));
    EXPECT_EQ(configurationOf(event.followUpAlarmIDs->at(0)).countdownDuration,
              (CountdownDuration{150.0, 300.0}));
    EXPECT_EQ(configurationOf(event.followUpAlarmIDs->at(1)).countdownDuration,
              (CountdownDuration{270.0, 300.0}));
}

TEST_F(AlarmSchedulerTest, RemindersAreTitledAndSoundTheReminderToneOrElseTheChannelsSound) {
    Channel channel = change(urgent().id, [](Channel& c) {
        c.repeatEnabled = true;
        c.repeatCount = 1;
        c.sound = AlarmTone::klaxon;
        c.reminderSound = AlarmTone::chime;
    });
    const FireEvent event = fire(channel);
    const auto& first = configurationOf(*event.alarmID);
    const auto& reminder = configurationOf(event.followUpAlarmIDs->at(0));
    EXPECT_EQ(first.attributes.presentation.alert.title, "Server down: Disk full");
    EXPECT_EQ(reminder.attributes.presentation.alert.title, "Reminder: Server down: Disk full");
    EXPECT_EQ(first.sound, (AlarmSound{"ringwell-klaxon.caf"}));
    EXPECT_EQ(reminder.sound, (AlarmSound{"ringwell-chime.caf"}));

    service.held.clear();
    channel = change(urgent().id, [](Channel& c) {
        c.sound = AlarmTone::system;
        c.reminderSound.reset();
    });
    const FireEvent second = fire(channel);
    EXPECT_EQ(configurationOf(*second.alarmID).sound, AlarmSound{});
    EXPECT_EQ(configurationOf(second.followUpAlarmIDs->at(0)).sound, AlarmSound{});
}

TEST_F(AlarmSchedulerTest, AFailedReminderIsLeftOutAndTheOthersStillRing) {
    service.failScheduleCall(2, Kind::maximumLimitReached);
    const FireEvent event = fire(repeating(3));
    EXPECT_EQ(event.outcome, FireOutcome::fired);
    EXPECT_EQ(event.followUpAlarmIDs->size(), 3u);
    EXPECT_EQ(service.scheduled.size(), 3u);
    EXPECT_EQ(service.find(event.followUpAlarmIDs->at(1)), nullptr);
    EXPECT_NE(service.find(event.followUpAlarmIDs->at(2)), nullptr);
}

// MARK: Presentation

TEST_F(AlarmSchedulerTest, NotificationTextFillsTheMetadataUnlessHidden) {
    EXPECT_EQ(configurationOf(*fire(urgent()).alarmID).attributes.metadata,
              (RingwellAlarmMetadata{urgent().id, "Urgent", "Mail", "Server down", "Production",
                                     "Disk full"}));
    service.held.clear();
    Channel channel = change(urgent().id, [](Channel& c) {
        c.showNotificationText = false;
        c.tintHex = "#34C759";
    });
    const AlarmAttributes& attributes = configurationOf(*fire(channel).alarmID).attributes;
    EXPECT_EQ(attributes.presentation.alert.title, "Urgent");
    EXPECT_EQ(attributes.metadata,
              (RingwellAlarmMetadata{channel.id, "Urgent", "Mail", "", "", ""}));
    EXPECT_EQ(attributes.tintHex, "#34C759");
}

// MARK: Errors

TEST_F(AlarmSchedulerTest, ServiceErrorsBecomeLoggedAlarmErrors) {
    service.failNextSchedule(Kind::maximumLimitReached, "limit of 64 alarms");
    const RingwellAlarmError limit = fireFailure(urgent());
    EXPECT_EQ(limit.kind(), RingwellAlarmError::Kind::tooManyAlarms);
    EXPECT_STREQ(limit.what(), "Too many alarms are already scheduled. Open Ringwell and use Stop "
                               "All Alarms, then try again.");
    EXPECT_EQ(store.events().front().outcome, FireOutcome::failed);
    EXPECT_EQ(store.events().front().errorMessage, limit.what());
    EXPECT_FALSE(store.events().front().alarmID);
    EXPECT_FALSE(scheduler.isInFlight(urgent().id));

    service.failNextSchedule(Kind::failed, "the sound device is gone");
    const RingwellAlarmError other = fireFailure(urgent());
    EXPECT_EQ(other.kind(), RingwellAlarmError::Kind::schedulingFailed);
    EXPECT_STREQ(other.what(), "Ringwell couldn't schedule the alarm: the sound device is gone");

    service.failNextSchedule(std::make_exception_ptr(std::runtime_error("disk full")));
    EXPECT_STREQ(fireFailure(urgent()).what(), "Ringwell couldn't schedule the alarm: disk full");
}

// MARK: Stop all

TEST_F(AlarmSchedulerTest, StopAllCancelsEveryAlarmIgnoringErrorsAndLeavesTheLog) {
    fire(repeating(1));
    service.failCancel = true;
    EXPECT_NO_THROW(scheduler.stopAll());
    EXPECT_EQ(std::count_if(service.calls.begin(), service.calls.end(),
                            [](const std::string& c) { return c.starts_with("cancel"); }),
              2);
    service.failAlarmsQuery = true;
    EXPECT_NO_THROW(scheduler.stopAll());

    service.failCancel = false;
    service.failAlarmsQuery = false;
    service.hold(Uuid::random());
    const auto events = store.events();
    scheduler.stopAll();
    EXPECT_TRUE(service.held.empty());
    EXPECT_EQ(store.events(), events);
}

} // namespace
} // namespace ringwell
