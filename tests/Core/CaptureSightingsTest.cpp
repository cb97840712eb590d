#include "Core/CaptureSightings.h"

#include <gtest/gtest.h>

#include <string>

namespace ringwell {
namespace {

TEST(CaptureSightingsTest, AppsAreCountedMostRecentFirstIgnoringCaseAndBlanks) {
    CaptureSightings sightings;
    sightings.sawApp("Signal", Date{10});
    sightings.sawApp("Slack", Date{20});
    sightings.sawApp(" signal ", Date{30});
    sightings.sawApp("  ", Date{40});

    ASSERT_EQ(sightings.apps().size(), 2u);
    EXPECT_EQ(sightings.apps()[0].name, "signal");
    EXPECT_EQ(sightings.apps()[0].count, 2u);
    EXPECT_EQ(sightings.apps()[0].lastSeen, Date{30});
    EXPECT_EQ(sightings.apps()[1].name, "Slack");
    EXPECT_EQ(sightings.apps()[1].count, 1u);
}

TEST(CaptureSightingsTest, TheLeastRecentAppMakesWayPastTheLimit) {
    CaptureSightings sightings;
    for (std::size_t i = 0; i <= CaptureSightings::maxApps; ++i)
        sightings.sawApp("app " + std::to_string(i), Date{double(i)});
    ASSERT_EQ(sightings.apps().size(), CaptureSightings::maxApps);
    EXPECT_EQ(sightings.apps().front().name, "app 100");
    EXPECT_EQ(sightings.apps().back().name, "app 1");
}

TEST(CaptureSightingsTest, BridgesAreKeptPerKindAndDevice) {
    CaptureSightings sightings;
    sightings.sawBridge("KDE Connect", "Pixel 7", Date{1});
    sightings.sawBridge("GSConnect", "Pixel 7", Date{2});
    sightings.sawBridge("KDE Connect", "Pixel 7", Date{3});
    ASSERT_EQ(sightings.bridges().size(), 2u);
    EXPECT_EQ(sightings.bridges()[0].kind, "KDE Connect");
    EXPECT_EQ(sightings.bridges()[0].lastSeen, Date{3});
    EXPECT_EQ(sightings.bridges()[1].kind, "GSConnect");
}

} // namespace
} // namespace ringwell
