#include "Core/Json.h"
#include "DaemonFixture.h"

namespace ringwell::testing {
namespace {

using WatchCommandsTest = DaemonTest;

TEST_F(WatchCommandsTest, AWatchAndItsLastHeardTimeSurviveARestart) {
    startDaemon();
    EXPECT_EQ(ringwell({"watch", "add", "Signal", "--every", "3x"}).exitCode, 2);
    auto added = ringwellJson({"watch", "add", "Signal", "--every", "3h", "--weekdays", "mon,fri",
                               "--from", "09:00", "--to", "17:30", "--json"});
    EXPECT_EQ(added["summary"], "every 3 h, Mon, Fri 09:00\u201317:30");
    ringwellJson({"send", "--app", "signal", "--json"});
    const json::Json heard = ringwellJson({"watch", "list", "--json"})["watches"][0]["lastHeard"];
    ASSERT_TRUE(heard.is_number());

    ASSERT_EQ(stopDaemon(), 0);
    startDaemon();
    auto kept = ringwellJson({"watch", "list", "--json"})["watches"];
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept[0]["lastHeard"], heard);
    EXPECT_NE(ringwell({"watch"}).out.find("Signal  every 3 h"), std::string::npos);

    EXPECT_EQ(ringwell({"watch", "remove", "SIGNAL"}).exitCode, 0);
}

} // namespace
} // namespace ringwell::testing
