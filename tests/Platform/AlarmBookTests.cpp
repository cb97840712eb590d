#include "Platform/AlarmBook.h"

#include "PlatformTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace ringwell {
namespace {

using platformtest::configuration;
using platformtest::errorKind;
using Kind = AlarmServiceError::Kind;

class AlarmBookTest : public ::testing::Test {
protected:
    const Date start{760000000};
    Date at(double seconds) const { return start.addingSeconds(seconds); }
    AlarmState stateOf(const Uuid& id) const { return book.find(id)->state; }

    AlarmBook book;
    const Uuid first = Uuid::random();
    const Uuid second = Uuid::random();
};

TEST_F(AlarmBookTest, EachAlarmAlertsOnceAtItsExactDeadlineEarliestFirst) {
    const Uuid third = Uuid::random();
    book.schedule(first, configuration(30), start);
    book.schedule(second, configuration(20), start);
    book.schedule(third, configuration(std::nullopt), start); // at once
    EXPECT_EQ(book.advance(start), std::vector<Uuid>{third});
    EXPECT_EQ(book.nextDeadline(), at(20));
    EXPECT_TRUE(book.advance(at(19.999)).empty());
    EXPECT_EQ(stateOf(second), AlarmState::countdown);

    EXPECT_EQ(book.advance(at(30)), (std::vector<Uuid>{second, first}));
    EXPECT_EQ(stateOf(first), AlarmState::alerting);
    EXPECT_EQ(book.find(first)->fireDate, at(30)); // the moment it started to alert
    EXPECT_EQ(book.nextDeadline(), std::nullopt);
    EXPECT_TRUE(book.advance(at(120)).empty());
}

TEST_F(AlarmBookTest, SnoozeRestartsThePostAlertCountdownAndAlertsAgain) {
    book.schedule(first, configuration(1, 300), start);
    book.advance(at(1));

    book.snooze(first, at(5));
    EXPECT_EQ(stateOf(first), AlarmState::countdown);
    EXPECT_EQ(book.find(first)->fireDate, at(305));

    EXPECT_TRUE(book.advance(at(304)).empty());
    EXPECT_EQ(book.advance(at(305)), std::vector<Uuid>{first});
    EXPECT_EQ(stateOf(first), AlarmState::alerting);
}

TEST_F(AlarmBookTest, PauseKeepsTheRemainingTimeAndResumeContinuesIt) {
    book.schedule(first, configuration(60), start);

    book.pause(first, at(20));
    const Alarm* paused = book.find(first);
    EXPECT_EQ(paused->state, AlarmState::paused);
    EXPECT_EQ(paused->remainingSeconds, 40);
    EXPECT_EQ(paused->fireDate, std::nullopt);
    EXPECT_EQ(book.nextDeadline(), std::nullopt);
    EXPECT_TRUE(book.advance(at(1000)).empty()); // a paused alarm never comes due

    book.resume(first, at(500));
    EXPECT_EQ(book.find(first)->fireDate, at(540));
    EXPECT_EQ(book.find(first)->remainingSeconds, std::nullopt);
    EXPECT_TRUE(book.advance(at(539)).empty());
    EXPECT_EQ(book.advance(at(540)), std::vector<Uuid>{first});
}

TEST_F(AlarmBookTest, OperationsOnlyFitTheirStatesAndKnownIds) {
    book.schedule(first, configuration(1), start);
    book.schedule(second, configuration(60, 300), start);
    book.advance(at(1));

    EXPECT_EQ(errorKind([&] { book.snooze(first, at(2)); }), Kind::failed);  // no post-alert
    EXPECT_EQ(errorKind([&] { book.snooze(second, at(2)); }), Kind::failed); // counting down
    EXPECT_EQ(errorKind([&] { book.pause(first, at(2)); }), Kind::failed);   // alerting
    EXPECT_EQ(errorKind([&] { book.resume(second, at(2)); }), Kind::failed); // counting down
    book.pause(second, at(2));
    EXPECT_EQ(errorKind([&] { book.pause(second, at(3)); }), Kind::failed); // already paused
    EXPECT_EQ(stateOf(first), AlarmState::alerting);
    EXPECT_EQ(book.find(second)->remainingSeconds, 58);

    const Uuid unknown = Uuid::random();
    EXPECT_EQ(errorKind([&] { book.stop(unknown); }), Kind::notFound);
    EXPECT_EQ(errorKind([&] { book.cancel(unknown); }), Kind::notFound);
    EXPECT_EQ(errorKind([&] { book.pause(unknown, start); }), Kind::notFound);
    EXPECT_EQ(errorKind([&] { book.resume(unknown, start); }), Kind::notFound);
    EXPECT_EQ(errorKind([&] { book.snooze(unknown, start); }), Kind::notFound);
    EXPECT_EQ(book.alarms().size(), 2u);
}

TEST_F(AlarmBookTest, AlarmsInEveryStateAreListedInSchedulingOrderAndRemoved) {
    const Uuid third = Uuid::random();
    const auto kept = configuration(1, 300, "ringwell-bark.caf", "Second");
    book.schedule(first, configuration(60), start);
    book.schedule(second, kept, start);
    book.schedule(third, configuration(60), start);
    book.advance(at(1));
    book.pause(first, at(10));

    const auto& alarms = book.alarms();
    ASSERT_EQ(alarms.size(), 3u);
    EXPECT_EQ(alarms[0].id, first);
    EXPECT_EQ(alarms[0].state, AlarmState::paused);
    EXPECT_EQ(alarms[1].id, second);
    EXPECT_EQ(alarms[1].state, AlarmState::alerting);
    EXPECT_EQ(alarms[1].configuration, kept);
    EXPECT_EQ(alarms[2].id, third);
    EXPECT_EQ(alarms[2].state, AlarmState::countdown);

    book.stop(first);   // paused
    book.stop(second);  // alerting
    book.cancel(third); // counting down
    EXPECT_TRUE(book.alarms().empty());
    EXPECT_EQ(book.nextDeadline(), std::nullopt);
}

TEST_F(AlarmBookTest, TheSixtyFifthAlarmReachesTheLimitButARestoredBookKeepsEveryAlarm) {
    std::vector<Uuid> ids;
    for (std::size_t i = 0; i < AlarmBook::limit; ++i) {
        ids.push_back(Uuid::random());
        book.schedule(ids.back(), configuration(60), start);
    }
    // Alerting alarms count as much as scheduled ones.
    book.advance(at(60));

    EXPECT_EQ(errorKind([&] { book.schedule(first, configuration(60), start); }),
              Kind::maximumLimitReached);
    EXPECT_EQ(book.alarms().size(), AlarmBook::limit);

    book.stop(ids.front());
    EXPECT_EQ(errorKind([&] { book.schedule(first, configuration(60), start); }), std::nullopt);

    // A restored book keeps every saved alarm, even beyond the limit.
    std::vector<Alarm> saved(book.alarms().begin(), book.alarms().end());
    for (int i = 0; i < 6; ++i)
        saved.push_back(
            Alarm{Uuid::random(), AlarmState::countdown, configuration(60), at(60), {}});
    AlarmBook restored(saved);
    EXPECT_EQ(restored.alarms().size(), AlarmBook::limit + 6);
    EXPECT_EQ(errorKind([&] { restored.schedule(second, configuration(60), start); }),
              Kind::maximumLimitReached);
}

TEST_F(AlarmBookTest, ScheduleRejectsATakenIdAndDurationsThatAreNoTime) {
    book.schedule(first, configuration(60), start);
    EXPECT_EQ(errorKind([&] { book.schedule(first, configuration(5), start); }), Kind::failed);
    EXPECT_EQ(book.find(first)->fireDate, at(60));

    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(errorKind([&] { book.schedule(second, configuration(nan), start); }), Kind::failed);
    EXPECT_EQ(errorKind([&] { book.schedule(second, configuration(-1), start); }), Kind::failed);
    EXPECT_EQ(errorKind([&] { book.schedule(second, configuration(1, -5), start); }), Kind::failed);
    EXPECT_EQ(book.alarms().size(), 1u);
}

} // namespace
} // namespace ringwell
