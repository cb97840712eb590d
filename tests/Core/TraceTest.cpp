#include "Core/Trace.h"
#include "Core/TraceMoment.h"

#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using testing::at;
using testing::calendarIn;

class TraceTest : public ::testing::Test {
protected:
    static NotificationInfo message(const char* app, const char* sender, Date date) {
        return {app, sender, "", "", "hello", date, false, std::nullopt};
    }

    static NamedChannel channel(const char* name, ChannelRule rule, bool enabled = true) {
        return {{Uuid::random(), enabled, std::move(rule)}, name};
    }

    // Monday to Friday, 09:00 to 17:00.
    static ChannelRule officeHours(const char* app) {
        ChannelRule rule;
        rule.apps = {app};
        rule.activeHours = ActiveHours{{2, 3, 4, 5, 6}, 540, 1020};
        return rule;
    }

    Calendar calendar = calendarIn("Europe/Berlin");
    MatchBudget unlimited = MatchBudget::unlimited();
};

TEST_F(TraceTest, AMomentReplaysEachNotificationAtThatWeekdayAndTime) {
    auto prod = channel("Prod incidents", officeHours("PagerDuty"));
    ChannelRule momRule;
    momRule.senders = {"Mom"};
    momRule.cooldownSeconds = 300;
    auto mom = channel("Calls from Mom", momRule);
    auto off = channel("Old pager", officeHours("Pager"), false);
    // Saturday 22:00 in Berlin, newest first as the history gives them.
    const Date saturday = at("2025-06-07T20:00:00Z");
    std::vector<NotificationInfo> newestFirst = {
        message("Pager", "ops", saturday.addingSeconds(40)),
        message("Messages", "MOM", saturday.addingSeconds(30)), // within Mom's cooldown
        message("Messages", "Mom", saturday.addingSeconds(20)),
        message("PagerDuty", "ops", saturday.addingSeconds(10)), message("Mail", "boss", saturday)};

    auto asIs = Trace::run({prod, mom, off}, newestFirst, 50, calendar, unlimited);
    EXPECT_EQ(asIs.summary(), "1 would ring: 1 Calls from Mom; 4 stay quiet");

    auto monday = TraceMoment::parse("mon 10:00", calendar);
    ASSERT_TRUE(monday);
    auto report =
        Trace::run({prod, mom, off}, newestFirst, 50, calendar.pinnedTo(*monday), unlimited);
    using K = TraceLine::Kind;
    std::vector<K> kinds;
    for (const auto& line : report.lines)
        kinds.push_back(line.kind);
    EXPECT_EQ(kinds, (std::vector<K>{K::disabled, K::cooledDown, K::rings, K::rings, K::noMatch}));
    EXPECT_EQ(report.lines[0].channelName, "Old pager");
    EXPECT_EQ(report.lines[3].channelID, prod.routable.id);
    EXPECT_EQ(report.summary(), "2 would ring: 1 Prod incidents, 1 Calls from Mom; 3 stay quiet");

    // Only the newest two are replayed; the older ones stay history.
    EXPECT_EQ(Trace::run({prod, mom, off}, newestFirst, 2, calendar, unlimited).lines.size(), 2u);
}

TEST_F(TraceTest, FrequencyWindowsKeepTheNotificationsOwnDates) {
    ChannelRule repeated;
    repeated.frequency = FrequencyCondition{2, 60};
    auto channelRepeated = channel("Repeated", repeated);
    const Date start = at("2025-06-07T20:00:00Z");
    // Pinned to one moment, all three look simultaneous; their dates still
    // put the first two 10 minutes apart and the last two 30 s apart.
    std::vector<NotificationInfo> newestFirst = {message("A", "x", start.addingSeconds(630)),
                                                 message("A", "x", start.addingSeconds(600)),
                                                 message("A", "x", start)};
    auto report =
        Trace::run({channelRepeated}, newestFirst, 3, calendar.pinnedTo({2, 10, 0}), unlimited);
    EXPECT_EQ(report.summary(), "1 would ring: 1 Repeated; 2 stay quiet");
    EXPECT_EQ(report.lines[0].kind, TraceLine::Kind::rings);
}

TEST(TraceMomentTest, ReadsDayNamesAndInstantsInTheZone) {
    Calendar berlin = testing::calendarIn("Europe/Berlin");
    using C = Calendar::Components;
    EXPECT_EQ(TraceMoment::parse("sun 03:00", berlin), (C{1, 3, 0}));
    EXPECT_EQ(TraceMoment::parse("Saturday 9:05", berlin), (C{7, 9, 5}));
    // The night the clocks go forward: 01:30 UTC is 03:30 summer time, the
    // night before it is 02:30 winter time.
    EXPECT_EQ(TraceMoment::parse("2026-03-29T01:30:00Z", berlin), (C{1, 3, 30}));
    EXPECT_EQ(TraceMoment::parse("2026-03-28T01:30:00Z", berlin), (C{7, 2, 30}));
    EXPECT_EQ(TraceMoment::format({1, 3, 0}), "Sun 03:00");
    for (const char* bad : {"", "sun", "su 03:00", "sunny 03:00", "mon 24:00", "mon 10:0",
                            "mon 10:60", "mon  10:00", "2026-03-29"})
        EXPECT_FALSE(TraceMoment::parse(bad, berlin)) << bad;
}

} // namespace
} // namespace ringwell
