#include "DaemonFixture.h"

namespace ringwell::testing {
namespace {

using CaptureCommandsTest = DaemonTest;

// Without a session bus the daemon runs on, says why it is not capturing
// and that no notification server shows its alarms,
// and the settings of `ringwell capture` still take and survive a restart.
TEST_F(CaptureCommandsTest, WithoutABusCaptureSaysWhyAndItsSettingsStick) {
    startDaemon();
    json::Json status = ringwellJson({"status", "--json"});
    EXPECT_TRUE(status["capture"]["enabled"].get<bool>());
    EXPECT_FALSE(status["capture"]["active"].get<bool>());
    EXPECT_NE(status["capture"]["problem"].get<std::string>(), "");
    EXPECT_TRUE(status["notifications"]["server"].is_null());
    EXPECT_NE(ringwell({"status"}).out.find("Alarm notices: no notification server answers"),
              std::string::npos);
    // Nothing denied anything: there is no notification server to ask.
    EXPECT_NE(
        ringwell({"permission"}).out.find("Notifications: no notification server is reachable"),
        std::string::npos);

    json::Json apps = ringwellJson({"capture", "apps", "Signal", "Mom's phone", "--json"});
    EXPECT_EQ(apps["apps"], (json::Json{"Signal", "Mom's phone"}));
    EXPECT_FALSE(ringwellJson({"capture", "off", "--json"})["enabled"].get<bool>());
    EXPECT_EQ(ringwell({"capture", "apps", "Signal", "--all"}).exitCode, 2);
    EXPECT_EQ(ringwell({"capture", "sideways"}).exitCode, 2);

    ASSERT_EQ(stopDaemon(), 0);
    startDaemon();
    json::Json capture = ringwellJson({"capture", "status", "--json"});
    EXPECT_FALSE(capture["enabled"].get<bool>());
    EXPECT_EQ(capture["apps"], (json::Json{"Signal", "Mom's phone"}));
    EXPECT_TRUE(ringwellJson({"capture", "apps", "--all", "--json"})["apps"].is_null());
    EXPECT_NE(ringwell({"capture"}).out.find("Capture: off"), std::string::npos);
}

} // namespace
} // namespace ringwell::testing
