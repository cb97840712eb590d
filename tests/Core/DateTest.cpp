#include "Core/Calendar.h"
#include "Core/Iso8601.h"

#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using testing::at;
using testing::calendarIn;

TEST(DateTest, ParsesInternetDateTimesOnly) {
    EXPECT_EQ(at("2001-01-01T00:00:00Z").secondsSinceReferenceDate, 0);
    EXPECT_EQ(at("2001-01-01T01:00:00+01:00").secondsSinceReferenceDate, 0);
    EXPECT_EQ(at("2000-12-31T23:59:59Z").secondsSinceReferenceDate, -1);
    for (const char* text : {"2025-01-02", "2025-01-02T03:04:05", "2025-01-02 03:04:05Z",
                             "2025-01-02T03:04:05Z trailing", "", "2025-01-02T03:04:05+0100"}) {
        EXPECT_FALSE(parseIso8601(text)) << text;
    }
}

TEST(DateTest, OverlongOrOutOfRangeFieldsAreRejectedBeforeIcuReadsThem) {
    const std::string longFraction = "2025-12-31T23:59:59.1" + std::string(40, '0') + "Z";
    EXPECT_FALSE(parseIso8601(longFraction));
    EXPECT_FALSE(parseIso8601("2025-12-31T23:59:59.1234567890Z"));
    for (const char* text :
         {"2025-12-31T24:00:00Z", "2025-12-31T23:60:00Z", "2025-00-10T00:00:00Z",
          "2025-12-32T00:00:00Z", "2025-12-31T23:59:59.Z", "20251-12-31T23:59:59Z",
          "2025-12-31T23:59:59+24:00", "2025-02-30T00:00:00Z"}) {
        EXPECT_FALSE(parseIso8601(text)) << text;
    }
    auto nanoseconds = parseIso8601("2025-01-02T03:04:05.123456789Z");
    ASSERT_TRUE(nanoseconds);
    EXPECT_NEAR(nanoseconds->secondsSince(at("2025-01-02T03:04:05Z")), 0.123, 1e-6);
    auto tenths = parseIso8601("2025-01-02T03:04:05.5-02:30");
    ASSERT_TRUE(tenths);
    EXPECT_NEAR(tenths->secondsSince(at("2025-01-02T05:34:05Z")), 0.5, 1e-6);
}

TEST(DateTest, FormatsUtcWholeSeconds) {
    EXPECT_EQ(formatIso8601(at("2025-01-02T03:04:05+02:00")), "2025-01-02T01:04:05Z");
    EXPECT_EQ(formatIso8601(Date{0.999}), "2001-01-01T00:00:00Z");
    EXPECT_EQ(formatIso8601(Date{-0.5}), "2000-12-31T23:59:59Z");
}

TEST(CalendarTest, ComponentsFollowTheZoneAndCopies) {
    auto berlin = calendarIn("Europe/Berlin");
    // Saturday 00:30 in Berlin.
    EXPECT_EQ(berlin.components(at("2025-01-03T23:30:00Z")), (Calendar::Components{7, 0, 30}));
    EXPECT_FALSE(Calendar::inTimeZone("Not/AZone"));
    Calendar copy = berlin;
    berlin = calendarIn("UTC"); // the copy keeps a zone of its own
    EXPECT_EQ(copy.timeZoneId(), "Europe/Berlin");
    EXPECT_EQ(copy.components(at("2025-06-01T10:00:00Z"))->hour, 12);
}

TEST(CalendarTest, DaysAcrossADaylightSavingChange) {
    auto berlin = calendarIn("Europe/Berlin");
    // 2025-03-30 has 23 hours in Berlin.
    auto start = berlin.startOfDay(at("2025-03-30T12:00:00+02:00"));
    ASSERT_TRUE(start);
    EXPECT_EQ(*start, at("2025-03-30T00:00:00+01:00"));
    auto next = berlin.addingDays(*start, 1);
    ASSERT_TRUE(next);
    EXPECT_EQ(*next, at("2025-03-31T00:00:00+02:00"));
    EXPECT_EQ(next->secondsSince(*start), 23 * 3600);
    EXPECT_TRUE(berlin.isSameDay(at("2025-03-30T00:00:00+01:00"), at("2025-03-30T23:59:59+02:00")));
    EXPECT_FALSE(
        berlin.isSameDay(at("2025-03-29T23:59:59+01:00"), at("2025-03-30T00:00:00+01:00")));
}

} // namespace
} // namespace ringwell
