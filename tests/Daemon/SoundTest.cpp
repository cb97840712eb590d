#include "Core/Json.h"
#include "DaemonFixture.h"
#include "TestSupport/PrivatePulse.h"

#include <csignal>
#include <sys/wait.h>

namespace ringwell::testing {
namespace {

class SoundTest : public DaemonTest {};

TEST_F(SoundTest, SettingsAreListedShownAndChangedWithClearErrors) {
    startDaemon();
    // A change with one bad value stores nothing, not even the good one.
    auto refused =
        apiRequest("PUT", "/v1/settings", R"({"ringThroughMute": false, "alarmVolume": 5})");
    EXPECT_EQ(refused.rfind("HTTP/1.1 400", 0), 0u) << refused;
    EXPECT_NE(refused.find("alarmVolume must be a whole number"), std::string::npos) << refused;
    EXPECT_EQ(ringwell({"settings"}).out, "ringThroughMute: on\nalarmVolume: 70\n");

    EXPECT_EQ(ringwell({"settings", "alarmVolume", "85%"}).out, "alarmVolume: 85\n");
    EXPECT_EQ(ringwell({"settings", "ringThroughMute", "off"}).exitCode, 0);
    EXPECT_EQ(ringwellJson({"settings", "--json"}),
              (json::Json{{"ringThroughMute", false}, {"alarmVolume", 85}}));

    EXPECT_EQ(ringwell({"settings", "alarmVolume", "150"}).exitCode, 2);
    EXPECT_EQ(ringwell({"settings", "ringThroughMute", "loud"}).exitCode, 2);
    auto unknown = ringwell({"settings", "volume"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_NE(unknown.err.find("unknown setting 'volume'"), std::string::npos) << unknown.err;
    // Nothing bad was stored, and what was stored survives a restart.
    stopDaemon();
    startDaemon();
    EXPECT_EQ(ringwell({"settings", "alarmVolume"}).out, "alarmVolume: 85\n");
}

TEST_F(SoundTest, WithoutAnAudioServerTheStatusSaysWhyAlarmsAreSilent) {
    startDaemon();
    // The daemon reaches out for a server as it starts, on a thread of its own.
    ProcessResult status;
    eventually([&] {
        status = ringwell({"status"});
        return status.out.find("Sound: not checked yet") == std::string::npos;
    });
    EXPECT_NE(status.out.find("Sound: none (No audio server is reachable"), std::string::npos)
        << status.out;
}

// The whole road with a real sound server: a muted output rings, and is put
// back even when the daemon is killed while the alarm rings.
TEST_F(SoundTest, AKilledDaemonPutsTheRaisedSinkBackAtItsNextStart) {
    PrivatePulse pulse(root / "pulse");
    if (!pulse.start())
        GTEST_SKIP() << "pulseaudio is not available";
    environment["PULSE_SERVER"] = pulse.serverAddress();
    pulse.setSink(true, 40);

    startDaemon();
    ASSERT_EQ(ringwell({"permission", "alarms", "allow"}).exitCode, 0);
    std::string channel = ringwellJson({"channels", "--json"})[0]["id"];
    ASSERT_EQ(ringwell({"ring", channel}).exitCode, 0);
    ASSERT_TRUE(eventually([&] { return pulse.alarmStream().has_value(); }));
    EXPECT_TRUE(eventually([&] { return pulse.sinkIs(false, 70); }));
    EXPECT_NE(ringwell({"status"}).out.find("Sound: pulseaudio"), std::string::npos);

    ::kill(daemon, SIGKILL);
    ::waitpid(daemon, nullptr, 0);
    daemon = -1;
    ASSERT_TRUE(eventually([&] { return pulse.streams().empty(); }));
    EXPECT_TRUE(pulse.sinkIs(false, 70));

    // The alarm still rings after the restart; once it stops, the sink is as
    // the person left it before the alarm.
    startDaemon();
    ASSERT_TRUE(eventually([&] { return pulse.alarmStream().has_value(); }));
    ASSERT_EQ(ringwell({"stop-all"}).exitCode, 0);
    EXPECT_TRUE(eventually([&] { return pulse.sinkIs(true, 40); }));
}

} // namespace
} // namespace ringwell::testing
