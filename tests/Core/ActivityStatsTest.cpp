#include "Core/ActivityStats.h"

#include "TestSupport/Helpers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace ringwell {

void PrintTo(const ActivityStats::Count& count, std::ostream* out) {
    *out << count.name << "=" << count.count;
}
void PrintTo(const ActivityStats::Day& day, std::ostream* out) {
    *out << formatIso8601(day.start) << " received " << day.received << " rang " << day.rang;
}

namespace {

using testing::at;
using testing::calendarIn;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Count = ActivityStats::Count;
using Event = ActivityStats::Event;

Event event(Date date, std::optional<std::string> app = "Mail", bool rang = false,
            std::optional<std::string> channel = std::nullopt, std::string outcome = "No match") {
    return {date, std::move(app), std::move(channel), std::move(outcome), rang, false};
}

Event ringing(Date date, std::string channel, std::optional<std::string> app = "Mail") {
    return event(date, std::move(app), true, std::move(channel), "Fired");
}

class ActivityStatsTest : public ::testing::Test {
protected:
    ActivityStats compute(const std::vector<Event>& events, Date now) const {
        return ActivityStats::compute(events, 7, now, calendar, 5);
    }
    static std::vector<Date> starts(const ActivityStats& stats) {
        std::vector<Date> out;
        for (const auto& day : stats.days)
            out.push_back(day.start);
        return out;
    }
    static std::vector<std::int64_t> received(const ActivityStats& stats) {
        std::vector<std::int64_t> out;
        for (const auto& day : stats.days)
            out.push_back(day.received);
        return out;
    }

    Calendar calendar = calendarIn("Europe/Berlin");
    // Monday after the spring change of daylight saving time, 10:00 in Berlin.
    Date afterSpringChange = at("2025-03-31T10:00:00+02:00");
};

TEST_F(ActivityStatsTest, DaysStartAtLocalMidnightAcrossTheAutumnChange) {
    Date afterAutumnChange = at("2025-10-27T12:00:00+01:00");
    auto stats =
        compute({event(at("2025-10-26T23:59:59+01:00")), event(at("2025-10-27T00:00:00+01:00"))},
                afterAutumnChange);
    EXPECT_THAT(starts(stats),
                ElementsAre(at("2025-10-21T00:00:00+02:00"), at("2025-10-22T00:00:00+02:00"),
                            at("2025-10-23T00:00:00+02:00"), at("2025-10-24T00:00:00+02:00"),
                            at("2025-10-25T00:00:00+02:00"), at("2025-10-26T00:00:00+02:00"),
                            at("2025-10-27T00:00:00+01:00")));
    // The last second of the 25-hour day still belongs to it.
    EXPECT_THAT(received(stats), ElementsAre(0, 0, 0, 0, 0, 1, 1));
}

// The period runs from local midnight of the first day to now inclusive, and
// events land on their local day: 23:30 UTC on the 29th is already the 30th.
TEST_F(ActivityStatsTest, EventsInThePeriodLandOnTheirLocalDay) {
    auto stats =
        compute({event(at("2025-03-25T00:00:00+01:00")), event(at("2025-03-24T23:59:59+01:00")),
                 ringing(at("2025-03-29T23:30:00Z"), "Urgent"), event(at("2025-03-29T22:30:00Z")),
                 event(at("2025-03-30T12:00:00Z")), event(afterSpringChange),
                 event(afterSpringChange.addingSeconds(60))},
                afterSpringChange);
    EXPECT_THAT(received(stats), ElementsAre(1, 0, 0, 0, 1, 2, 1));
    EXPECT_EQ(stats.received, 5);
    EXPECT_EQ(stats.days[5].rang, 1);
    EXPECT_EQ(stats.days[4].rang, 0);
    EXPECT_EQ(stats.rang, 1);
    EXPECT_THAT(stats.outcomes, ElementsAre(Count{"No match", 4}, Count{"Fired", 1}));
    EXPECT_THAT(stats.topApps, ElementsAre(Count{"Mail", 5}));
}

// A test event counts nowhere; an event without an app counts but names no
// app; only ringing events count for their channel.
TEST_F(ActivityStatsTest, TestEventsCountNowhereAndOnlyRingsCountForChannels) {
    Event test = ringing(afterSpringChange, "Urgent", "Setup");
    test.isTest = true;
    test.outcome = "Setup test received";
    auto stats =
        compute({test, event(afterSpringChange, std::nullopt), ringing(afterSpringChange, "Urgent"),
                 event(afterSpringChange, "Mail", false, "Family", "Cooldown"),
                 event(afterSpringChange, "Mail", true, std::nullopt, "Fired")},
                afterSpringChange);
    EXPECT_THAT(received(stats), ElementsAre(0, 0, 0, 0, 0, 0, 4));
    EXPECT_EQ(stats.days.back().rang, 2);
    EXPECT_EQ(stats.rang, 2);
    EXPECT_THAT(stats.topApps, ElementsAre(Count{"Mail", 3}));
    EXPECT_THAT(stats.topChannels, ElementsAre(Count{"Urgent", 1}));
    EXPECT_THAT(stats.outcomes,
                ElementsAre(Count{"Fired", 2}, Count{"Cooldown", 1}, Count{"No match", 1}));
}

TEST_F(ActivityStatsTest, TopAppsKeepFiveOutcomesKeepAll) {
    std::vector<Event> events;
    const char* apps[] = {"A", "B", "C", "D", "E", "F"};
    for (int i = 0; i < 6; ++i) {
        for (int n = 0; n <= i; ++n)
            events.push_back(event(afterSpringChange, apps[i], false, std::nullopt,
                                   "Outcome " + std::to_string(i)));
    }
    auto stats = compute(events, afterSpringChange);
    EXPECT_THAT(stats.topApps, ElementsAre(Count{"F", 6}, Count{"E", 5}, Count{"D", 4},
                                           Count{"C", 3}, Count{"B", 2}));
    EXPECT_EQ(stats.outcomes.size(), 6u);
}

TEST_F(ActivityStatsTest, ZeroDaysGiveNoDaysAndAPeriodFromToday) {
    auto stats = ActivityStats::compute(
        {event(at("2025-03-31T00:30:00+02:00")), event(at("2025-03-30T23:30:00+02:00"))}, 0,
        afterSpringChange, calendar, 5);
    EXPECT_THAT(stats.days, IsEmpty());
    EXPECT_EQ(stats.received, 1);
}

TEST(ActivityCountsTest, CountsOrderEqualsByCodePointAndKeepTheLimit) {
    EXPECT_THAT(ActivityStats::counts({"mail", "Mail", "mail", "Mail", "Zed", "Zed"}, 5),
                ElementsAre(Count{"Mail", 2}, Count{"Zed", 2}, Count{"mail", 2}));
    // Code point order, not collation and not UTF-16 order: "Éclair" after
    // "zed", and U+FF5E before U+1F600.
    EXPECT_THAT(ActivityStats::counts({"\U0001F600", "\uFF5E", "Éclair", "zed"}, 5),
                ElementsAre(Count{"zed", 1}, Count{"Éclair", 1}, Count{"\uFF5E", 1},
                            Count{"\U0001F600", 1}));
    EXPECT_THAT(ActivityStats::counts({"a", "b", "b"}, 1), ElementsAre(Count{"b", 2}));
    EXPECT_THAT(ActivityStats::counts({"a", "b"}, 0), IsEmpty());
    EXPECT_EQ(ActivityStats::counts({"a", "b"}, std::numeric_limits<std::int64_t>::max()).size(),
              2u);
}

} // namespace
} // namespace ringwell
