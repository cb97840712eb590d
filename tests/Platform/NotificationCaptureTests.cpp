#include "Platform/NotificationCapture.h"

#include "FakeNotificationServer.h"
#include "Platform/NotifierDBus.h"
#include "PlatformTestSupport.h"
#include "TestSupport/Process.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <cstdio>
#include <memory>
#include <mutex>
#include <thread>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace ringwell {
namespace {

using namespace platformtest;
using namespace std::chrono_literals;

// A private session bus with a notification server, a capture on it, and
// real clients (notify-send, gdbus) showing notifications.
class NotificationCaptureTest : public ::testing::Test {
protected:
    void SetUp() override {
        bus = std::make_unique<PrivateBus>(directory.path());
        if (!bus->available())
            GTEST_SKIP() << "dbus-daemon is not available";
        address = std::make_unique<EnvironmentGuard>("DBUS_SESSION_BUS_ADDRESS", bus->address());
        server = std::make_unique<FakeNotificationServer>(bus->address());
        capture.start([this](CapturedNotice notice) {
            captured.push_back(notice.fields);
            bridges.push_back(notice.bridge);
        });
        ASSERT_TRUE(runUntil(context, [&] { return capture.status().active; }))
            << capture.status().problem;
    }

    // Runs a client on the private bus; its output.
    std::string client(std::vector<std::string> argv) {
        argv[0] = "/usr/bin/" + argv[0];
        auto result = testing::runProcess(argv, {{"DBUS_SESSION_BUS_ADDRESS", bus->address()}});
        EXPECT_EQ(result.exitCode, 0) << argv[0] << ": " << result.err;
        return result.out;
    }

    // gdbus calling `method` of the notification server's objects.
    void gdbus(const std::string& destination, const std::string& path, const std::string& method,
               std::vector<std::string> arguments) {
        // "--" ends gdbus's options, so that -1 is an argument.
        std::vector<std::string> argv = {
            "gdbus",         "call", "--session", "--dest", destination,
            "--object-path", path,   "--method",  method,   "--"};
        argv.insert(argv.end(), arguments.begin(), arguments.end());
        client(argv);
    }

    bool seen(std::uint64_t count) {
        return runUntil(context, [&] { return capture.status().seen >= count; }) &&
               capture.status().seen == count;
    }

    NotificationInfo info(std::size_t index) const {
        return captured.at(index).notification(Date());
    }

    TemporaryDirectory directory;
    std::unique_ptr<PrivateBus> bus;
    std::unique_ptr<EnvironmentGuard> address;
    std::unique_ptr<FakeNotificationServer> server;
    asio::io_context context;
    RecordingLogger logger;
    NotificationCapture capture{context, logger, 50ms};
    std::vector<ShortcutInputFields> captured;
    std::vector<std::optional<PhoneBridge>> bridges;
};

TEST_F(NotificationCaptureTest, NotifySendIsCapturedOnceWithItsFieldsAndTheServerIsNamed) {
    client({"notify-send", "-a", "Signal", "-u", "critical", "Mom", "call me"});
    ASSERT_TRUE(seen(1));
    ASSERT_EQ(captured.size(), 1u);
    EXPECT_EQ(info(0).app, "Signal");
    EXPECT_EQ(info(0).title, "Mom");
    EXPECT_EQ(info(0).body, "call me");
    EXPECT_TRUE(info(0).isTimeSensitive);
    EXPECT_FALSE(bridges[0]);
    EXPECT_TRUE(runUntil(context, [&] { return !capture.status().server.empty(); }));
    EXPECT_EQ(capture.status().server, "fake");
    EXPECT_EQ(capture.status().serverVersion, "1");
}

// GTK's door is the phone-bridge case's; the mapping of either is the core's.
TEST_F(NotificationCaptureTest, PortalNotificationsAreCaptured) {
    gdbus("org.freedesktop.Notifications", "/org/freedesktop/portal/desktop",
          "org.freedesktop.impl.portal.Notification.AddNotification",
          {"org.example.Chat", "n1", "{'title': <'Bo'>, 'body': <'hi'>}"});
    ASSERT_TRUE(seen(1));
    EXPECT_EQ(info(0).app, "Chat");
    EXPECT_EQ(info(0).body, "hi");
}

// The mapping of a bridge's hints is the core's test; here they come over the bus.
TEST_F(NotificationCaptureTest, PhoneBridgesRingAsThePhonesApp) {
    gdbus("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
          "org.freedesktop.Notifications.Notify",
          {"KDE Connect", "0", "''", "Mom", "call me", "[]",
           "{'x-kde-appname': <'kdeconnect'>, 'x-kde-display-appname': <'Messages'>, "
           "'x-kdeconnect-source-device': <'Pixel 7'>}",
           "-1"});
    gdbus("org.gtk.Notifications", "/org/gtk/Notifications",
          "org.gtk.Notifications.AddNotification",
          {"org.gnome.Shell.Extensions.GSConnect", "dev1|42",
           "{'title': <'WhatsApp'>, 'body': <'Ana: see you'>}"});
    ASSERT_TRUE(seen(2));
    EXPECT_EQ(info(0).app, "Messages");
    EXPECT_EQ(captured[0].received.at(7).value, "Pixel 7");
    EXPECT_EQ(info(1).app, "WhatsApp");
    EXPECT_EQ(info(1).title, "Ana");
    ASSERT_TRUE(bridges[0] && bridges[1]);
    EXPECT_EQ(bridges[0]->kind, "KDE Connect");
    EXPECT_EQ(bridges[0]->device, "Pixel 7");
    EXPECT_EQ(bridges[1]->kind, "GSConnect");
    EXPECT_EQ(bridges[1]->device, "dev1");
}

TEST_F(NotificationCaptureTest, AReplacementCountsOnlyWhenItsTextChanged) {
    const std::string id = client({"notify-send", "-p", "-a", "Signal", "Mom", "call me"});
    ASSERT_TRUE(seen(1));
    const std::string replaces = id.substr(0, id.find('\n'));
    client({"notify-send", "-r", replaces, "-a", "Signal", "Mom", "call me"});
    client({"notify-send", "-r", replaces, "-a", "Signal", "Mom", "call me now"});
    ASSERT_TRUE(seen(2));
    EXPECT_EQ(info(1).body, "call me now");

    const std::vector<std::string> gtk = {"org.gnome.Fractal", "m1", "{'title': <'Ana'>}"};
    gdbus("org.gtk.Notifications", "/org/gtk/Notifications",
          "org.gtk.Notifications.AddNotification", gtk);
    gdbus("org.gtk.Notifications", "/org/gtk/Notifications",
          "org.gtk.Notifications.AddNotification", gtk);
    client({"notify-send", "-a", "Signal", "last"});
    ASSERT_TRUE(seen(4));
    EXPECT_EQ(info(3).title, "last");
}

// The same call addressed to the well-known name and to the server's unique
// name: one sender, one serial.
TEST_F(NotificationCaptureTest, TheSameCallSeenTwiceIsCapturedOnce) {
    sd_bus* sender = nullptr;
    ASSERT_GE(sd_bus_new(&sender), 0);
    sd_bus_set_address(sender, bus->address().c_str());
    sd_bus_set_bus_client(sender, 1);
    ASSERT_GE(sd_bus_start(sender), 0);
    sd_bus_creds* creds = nullptr;
    ASSERT_GE(sd_bus_get_name_creds(sender, "org.freedesktop.Notifications",
                                    SD_BUS_CREDS_UNIQUE_NAME, &creds),
              0);
    const char* unique = nullptr;
    sd_bus_creds_get_unique_name(creds, &unique);
    for (const char* destination : {"org.freedesktop.Notifications", unique}) {
        sd_bus_message* call = nullptr;
        sd_bus_message_new_method_call(sender, &call, destination, "/org/freedesktop/Notifications",
                                       "org.freedesktop.Notifications", "Notify");
        sd_bus_message_append(call, "susssasa{sv}i", "Signal", 0u, "", "Mom", "twice", 0, 0, -1);
        sd_bus_message_seal(call, 4242, 0);
        ASSERT_GE(sd_bus_send(sender, call, nullptr), 0);
        sd_bus_message_unref(call);
    }
    sd_bus_flush(sender);
    sd_bus_creds_unref(creds);
    sd_bus_flush_close_unref(sender);

    client({"notify-send", "-a", "Signal", "after"});
    ASSERT_TRUE(seen(2));
    EXPECT_EQ(info(0).body, "twice");
    EXPECT_EQ(info(1).title, "after");
}

TEST_F(NotificationCaptureTest, RingwellsOwnNoticesAreNotCaptured) {
    NotifierDBus notices(context, logger);
    bool posted = false;
    asio::co_spawn(context, notices.add({"ring-failed", "Ringwell couldn't ring Urgent", "x", ""}),
                   [&](std::exception_ptr) { posted = true; });
    ASSERT_TRUE(runUntil(context, [&] { return posted; }));
    ASSERT_EQ(server->notices().size(), 1u);

    client({"notify-send", "-a", "Signal", "after"});
    ASSERT_TRUE(seen(1));
    EXPECT_EQ(info(0).title, "after");
}

TEST_F(NotificationCaptureTest, ABusThatGoesAwayIsPickedUpAgainWhenItComesBack) {
    server.reset();
    bus.reset();
    ASSERT_TRUE(runUntil(context, [&] { return !capture.status().active; }));
    EXPECT_FALSE(capture.status().problem.empty());
    EXPECT_GE(logger.count("Not capturing notifications"), 1);

    bus = std::make_unique<PrivateBus>(directory.path());
    ASSERT_TRUE(runUntil(context, [&] { return capture.status().active; }));
    server = std::make_unique<FakeNotificationServer>(bus->address());
    client({"notify-send", "-a", "Signal", "back"});
    ASSERT_TRUE(seen(1));
    EXPECT_EQ(info(0).title, "back");
    // The server came after the bus: it is asked again once it shows a notification.
    EXPECT_TRUE(runUntil(context, [&] { return capture.status().server == "fake"; }));
}

// The session bus's address names a socket nobody serves yet.
class NotificationCaptureWithoutBusTest : public ::testing::Test {
protected:
    TemporaryDirectory directory;
    EnvironmentGuard address{"DBUS_SESSION_BUS_ADDRESS",
                             "unix:path=" + (directory / "bus").string()};
    asio::io_context context;
    RecordingLogger logger;
};

// The daemon may start before the session: capture says why it waits, and
// takes up the bus once it appears, without a restart.
TEST_F(NotificationCaptureWithoutBusTest, WithoutABusAtStartItSaysSoAndTakesUpTheBusWhenItAppears) {
    NotificationCapture capture(context, logger, 20ms);
    int changes = 0;
    capture.onStatusChange([&] { ++changes; });
    std::vector<ShortcutInputFields> captured;
    capture.start([&](CapturedNotice notice) { captured.push_back(notice.fields); });
    EXPECT_FALSE(capture.status().active);
    EXPECT_NE(capture.status().problem.find("cannot be reached"), std::string::npos);
    // Each retry fails the same way and is not logged again.
    runUntil(
        context, [] { return false; }, 200ms);
    EXPECT_EQ(logger.count("Not capturing notifications"), 1);
    EXPECT_EQ(changes, 1);

    PrivateBus bus(directory.path());
    if (!bus.available())
        GTEST_SKIP() << "dbus-daemon is not available";
    FakeNotificationServer server(bus.address());
    ASSERT_TRUE(runUntil(context, [&] { return capture.status().active; }));
    EXPECT_GE(changes, 2);
    auto result = testing::runProcess({"/usr/bin/notify-send", "-a", "Signal", "Mom", "late"},
                                      {{"DBUS_SESSION_BUS_ADDRESS", bus.address()}});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    ASSERT_TRUE(runUntil(context, [&] { return captured.size() == 1; }));
    EXPECT_EQ(captured[0].notification(Date()).body, "late");
}

// A socket that accepts connections and never says a word, as a hung bus
// would: it holds them until released, or gives up after thirty seconds.
class SilentBus {
public:
    explicit SilentBus(const std::filesystem::path& path) {
        listener_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::snprintf(address.sun_path, sizeof address.sun_path, "%s", path.c_str());
        if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            ::listen(listener_, 8) != 0)
            throw std::runtime_error("the silent bus cannot listen");
        holder_ = std::thread([this] {
            std::unique_lock lock(mutex_);
            if (!released_.wait_for(lock, 30s, [this] { return releasing_; }))
                gaveUp_ = true;
            ::close(listener_);
        });
    }
    ~SilentBus() {
        release();
        holder_.join();
    }
    void release() {
        std::lock_guard lock(mutex_);
        releasing_ = true;
        released_.notify_all();
    }
    bool gaveUp() {
        std::lock_guard lock(mutex_);
        return gaveUp_;
    }

private:
    int listener_ = -1;
    std::thread holder_;
    std::mutex mutex_;
    std::condition_variable released_;
    bool releasing_ = false;
    bool gaveUp_ = false;
};

TEST_F(NotificationCaptureWithoutBusTest, ABusThatDoesNotAnswerNeverHoldsUpTheLoop) {
    SilentBus silent(directory / "bus");
    NotificationCapture capture(context, logger, 1h);
    capture.start([](CapturedNotice) {});
    // Starting returned while the bus still held the connection unanswered,
    // and the loop gives up on it in its own time.
    EXPECT_FALSE(silent.gaveUp());
    ASSERT_TRUE(runUntil(
        context,
        [&] { return capture.status().problem.find("did not accept") != std::string::npos; }, 20s));
    EXPECT_FALSE(silent.gaveUp());
    EXPECT_FALSE(capture.status().active);
}

} // namespace
} // namespace ringwell
