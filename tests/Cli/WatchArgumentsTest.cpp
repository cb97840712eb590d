#include "Cli/WatchArguments.h"

#include "Core/Json.h"

#include <gtest/gtest.h>

namespace ringwell::cli {
namespace {

TEST(WatchArgumentsTest, DurationsDaysAndHoursBecomeTheWatchBody) {
    EXPECT_EQ(parseDuration("90m").value(), 5400);
    EXPECT_EQ(parseDuration("1D").value(), 86400);
    for (const char* bad : {"", "3", "h", "0h", "-2h", "3 h", "1.5h", "3w"})
        EXPECT_FALSE(parseDuration(bad)) << bad;
    EXPECT_EQ(parseDuration("3x").error().message, "\"3x\" is not a duration (like 90m, 3h or 1d)");

    auto body = watchBody("Mail", "3h", "Mon,friday,weekends", "22:00", "07:00", "Urgent");
    ASSERT_TRUE(body) << body.error().message;
    EXPECT_EQ(body.value(), json::Json::parse(R"({"app": "Mail", "everySeconds": 10800,
        "hours": {"weekdays": [1, 2, 6, 7], "startMinute": 1320, "endMinute": 420},
        "ring": "Urgent"})"));
    // Days alone watch those whole days; hours alone watch every day.
    EXPECT_EQ(watchBody("Mail", "1h", "sat", {}, {}, {}).value()["hours"]["startMinute"], 0);
    EXPECT_EQ(watchBody("Mail", "1h", {}, "08:00", "09:00", {}).value()["hours"]["weekdays"].size(),
              7u);
    EXPECT_FALSE(watchBody("Mail", "1h", {}, {}, {}, {}).value().contains("hours"));

    EXPECT_EQ(watchBody("Mail", "1h", "mo", {}, {}, {}).error().message,
              "--weekdays: \"mo\" is not a weekday (mon, tue, wed, thu, fri, sat, sun, weekdays, "
              "weekends)");
    EXPECT_EQ(watchBody("Mail", "1h", {}, "08:00", {}, {}).error().message,
              "--from and --to go together");
    EXPECT_EQ(watchBody("Mail", "1h", {}, "8", "24:00", {}).error().message,
              "--from: \"8\" is not a time of day (HH:MM, 00:00 to 23:59)");
    EXPECT_FALSE(watchBody("Mail", "1h", {}, "08:00", "23:60", {}));
}

} // namespace
} // namespace ringwell::cli
