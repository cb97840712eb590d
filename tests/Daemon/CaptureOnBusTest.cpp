#include "DaemonFixture.h"
#include "Platform/FakeNotificationServer.h"

#include <memory>

namespace ringwell::testing {
namespace {

using platformtest::FakeNotificationServer;
using platformtest::PrivateBus;

// The daemon on a private session bus with a notification server, and real
// clients showing notifications on it, as on a desktop.
class CaptureOnBusTest : public DaemonTest {
protected:
    void SetUp() override {
        DaemonTest::SetUp();
        bus = std::make_unique<PrivateBus>(root);
        if (!bus->available())
            GTEST_SKIP() << "dbus-daemon is not available";
        server = std::make_unique<FakeNotificationServer>(bus->address());
        environment["DBUS_SESSION_BUS_ADDRESS"] = bus->address();
        startDaemon();
        ASSERT_TRUE(eventually([&] { return capture()["active"] == true; })) << daemonLog();
    }

    void client(const std::vector<std::string>& argv) {
        auto result = runProcess(argv, environment);
        ASSERT_EQ(result.exitCode, 0) << argv[0] << ": " << result.err;
    }
    json::Json capture() { return ringwellJson({"capture", "status", "--json"}); }
    bool seen(int count) {
        return eventually([&] { return capture()["seen"] == count; });
    }

    std::unique_ptr<PrivateBus> bus;
    std::unique_ptr<FakeNotificationServer> server;
};

// The README's first minutes: a channel "Urgent" for Signal messages from Mom,
// and `notify-send -a Signal Mom "call me"` rings it: the app name is the app,
// the summary the title and so the sender, the body the body.
TEST_F(CaptureOnBusTest, NotifySendRingsTheChannelForItsAppAndSender) {
    ASSERT_EQ(ringwell({"permission", "alarms", "allow"}).exitCode, 0);
    json::Json urgent = ringwellJson({"channel", "show", "Urgent", "--json"});
    urgent["rule"] = json::Json::parse(R"({"apps": ["Signal"], "senders": ["Mom"]})");
    ASSERT_EQ(ringwell({"channel", "update"}, json::encode(urgent)).exitCode, 0);

    client({"/usr/bin/notify-send", "-a", "Signal", "Bob", "hi"});
    client({"/usr/bin/notify-send", "-a", "Signal", "Mom", "call me"});
    ASSERT_TRUE(eventually([&] { return ringwellJson({"events", "--json"}).size() == 2; }));
    json::Json mom, bob;
    for (const auto& event : ringwellJson({"events", "--json"}))
        (event["title"] == "Mom" ? mom : bob) = event;
    EXPECT_EQ(bob["title"], "Bob");
    EXPECT_NE(bob["channelName"], "Urgent");
    EXPECT_EQ(mom["channelName"], "Urgent");
    EXPECT_EQ(mom["outcome"], "fired");
    EXPECT_EQ(mom["app"], "Signal");
    EXPECT_EQ(mom["body"], "call me");
    EXPECT_EQ(ringwellJson({"alarms", "--json"}).size(), 1u);
}

// The setup guide's list: each app seen since start with its count, most
// recent first, and the phone bridge a phone's notification came through.
TEST_F(CaptureOnBusTest, CaptureCountsEachAppAndSeesThePhoneBridge) {
    ASSERT_EQ(ringwell({"capture", "apps", "Signal"}).exitCode, 0);
    client({"/usr/bin/notify-send", "-a", "Signal", "Mom", "one"});
    client({"/usr/bin/notify-send", "-a", "Signal", "Mom", "two"});
    const std::string phoneHints =
        "{'x-kde-appname': <'kdeconnect'>, 'x-kde-display-appname': <'Messages'>, "
        "'x-kdeconnect-source-device': <'Pixel 7'>}";
    client({"/usr/bin/gdbus", "call", "--session", "--dest", "org.freedesktop.Notifications",
            "--object-path", "/org/freedesktop/Notifications", "--method",
            "org.freedesktop.Notifications.Notify", "--", "KDE Connect", "0", "''", "Mom",
            "see you", "[]", phoneHints, "-1"});
    ASSERT_TRUE(seen(3));

    json::Json state = capture();
    ASSERT_EQ(state["seenApps"].size(), 2u) << state.dump();
    EXPECT_EQ(state["seenApps"][0]["name"], "Messages");
    EXPECT_EQ(state["seenApps"][1]["name"], "Signal");
    EXPECT_EQ(state["seenApps"][1]["count"], 2);
    ASSERT_EQ(state["bridges"].size(), 1u);
    EXPECT_EQ(state["bridges"][0]["kind"], "KDE Connect");
    EXPECT_EQ(state["bridges"][0]["device"], "Pixel 7");
    EXPECT_TRUE(state["bridges"][0]["lastSeen"].is_number());
    EXPECT_EQ(ringwellJson({"status", "--json"})["capture"]["seenApps"], state["seenApps"]);

    const std::string text = ringwell({"capture"}).out;
    EXPECT_NE(text.find("  Signal  2  (last "), std::string::npos) << text;
    EXPECT_NE(text.find("Phone bridge: KDE Connect from Pixel 7"), std::string::npos) << text;
}

} // namespace
} // namespace ringwell::testing
