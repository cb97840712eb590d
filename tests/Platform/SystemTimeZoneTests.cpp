#include "Platform/SystemTimeZone.h"

#include "PlatformTestSupport.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using namespace platformtest;
namespace fs = std::filesystem;

TEST(SystemTimeZoneTest, TheCalendarFollowsAChangeOfTz) {
    EnvironmentGuard zone("TZ", "Asia/Tokyo");
    EXPECT_EQ(SystemTimeZone::currentCalendar().timeZoneId(), "Asia/Tokyo");
    setenv("TZ", ":America/New_York", 1);
    EXPECT_EQ(SystemTimeZone::currentCalendar().timeZoneId(), "America/New_York");
    setenv("TZ", "", 1);
    EXPECT_EQ(SystemTimeZone::currentCalendar().timeZoneId(), "UTC");
}

TEST(SystemTimeZoneTest, TheSystemZoneIsTheFileLocaltimeLinksToReadAfresh) {
    TemporaryDirectory directory;
    for (const char* zone : {"Europe/Berlin", "Pacific/Auckland"}) {
        fs::create_directories(directory / "zoneinfo" / fs::path(zone).parent_path());
        writeFile(directory / "zoneinfo" / zone, "TZif");
    }
    SystemTimeZone::Sources sources{nullptr, directory / "localtime", directory / "timezone"};
    EXPECT_EQ(SystemTimeZone::zoneId(sources), std::nullopt);
    writeFile(directory / "timezone", "Asia/Kolkata\n");
    EXPECT_EQ(SystemTimeZone::zoneId(sources), "Asia/Kolkata");

    fs::create_symlink(directory / "zoneinfo" / "Europe/Berlin", directory / "localtime");
    EXPECT_EQ(SystemTimeZone::zoneId(sources), "Europe/Berlin");
    fs::remove(directory / "localtime");
    fs::create_symlink(directory / "zoneinfo" / "Pacific/Auckland", directory / "localtime");
    EXPECT_EQ(SystemTimeZone::zoneId(sources), "Pacific/Auckland");

    // TZ wins, also when it names a zone file.
    const std::string file = ":" + (directory / "zoneinfo" / "Europe/Berlin").string();
    sources.tz = file.c_str();
    EXPECT_EQ(SystemTimeZone::zoneId(sources), "Europe/Berlin");
}

} // namespace
} // namespace ringwell
