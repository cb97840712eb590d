#include "Core/Json.h"
#include "DaemonFixture.h"
#include "TestSupport/TemporaryDirectory.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

namespace ringwell::testing {
namespace {

using DaemonLifecycleTest = DaemonTest;

TEST_F(DaemonLifecycleTest, CommandsWithoutADaemonSayHowToStartIt) {
    auto result = ringwell({"events"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "Ringwell isn't running. Start it with `ringwell serve`.\n");
    EXPECT_EQ(ringwell({"send", "--app", "Mail"}).exitCode, 3);
}

TEST_F(DaemonLifecycleTest, OneDaemonPerUserWithPrivateSocket) {
    startDaemon();
    struct stat info {};
    ASSERT_EQ(::stat(socket.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    ASSERT_EQ(::stat(socket.parent_path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u);

    auto second = ringwell({"serve"});
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_NE(second.err.find("already running"), std::string::npos) << second.err;
    EXPECT_EQ(ringwell({"channels"}).exitCode, 0);

    EXPECT_EQ(stopDaemon(), 0);
    EXPECT_FALSE(std::filesystem::exists(socket));
}

// As systemd's notify socket sees it: one datagram per message, or "" when
// none comes within 30 s.
std::string nextNotification(int notify) {
    pollfd ready{notify, POLLIN, 0};
    if (::poll(&ready, 1, 30'000) != 1)
        return "";
    char buffer[512];
    const auto size = ::recv(notify, buffer, sizeof buffer, 0);
    return size > 0 ? std::string(buffer, static_cast<std::size_t>(size)) : "";
}

// Under systemd (Type=notify) the daemon says READY once its API socket and
// web listener are up, and STOPPING when it stops.
TEST_F(DaemonLifecycleTest, SystemdHearsReadyOnceEverythingListensAndStoppingAtTheEnd) {
    const auto path = root / "notify";
    const int notify = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ASSERT_GE(notify, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(notify, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    environment["NOTIFY_SOCKET"] = path.string();

    startDaemon();
    const std::string ready = nextNotification(notify);
    EXPECT_EQ(
        ready.rfind("READY=1\nSTATUS=Serving on " + socket.string() + " and http://127.0.0.1:", 0),
        0u)
        << ready;
    EXPECT_EQ(ready.find("token"), std::string::npos); // the secret stays out of systemctl status
    EXPECT_EQ(stopDaemon(), 0);
    EXPECT_EQ(nextNotification(notify), "STOPPING=1");
    ::close(notify);
}

TEST_F(DaemonLifecycleTest, ACountdownSurvivesARestart) {
    startDaemon();
    ASSERT_EQ(ringwell({"permission", "alarms", "allow"}).exitCode, 0);
    auto channel = ringwellJson({"channel", "show", "Urgent"});
    channel["mode"] = "countdown";
    channel["countdownSeconds"] = 900;
    ASSERT_EQ(ringwell({"channel", "update"}, json::encode(channel)).exitCode, 0);
    auto fired = ringwellJson({"ring", "Urgent", "--title", "Door", "--json"});
    ASSERT_EQ(fired["outcome"], "fired");

    ASSERT_EQ(stopDaemon(), 0);
    startDaemon();
    auto alarms = ringwellJson({"alarms", "--json"});
    ASSERT_EQ(alarms.size(), 1u);
    EXPECT_EQ(alarms[0]["id"], fired["alarmID"]);
    EXPECT_EQ(alarms[0]["state"], "countdown");
    EXPECT_EQ(alarms[0]["configuration"]["countdownDuration"]["preAlert"], 900);
    EXPECT_NE(ringwell({"permission"}).out.find("Alarms: allowed"), std::string::npos);
}

TEST_F(DaemonLifecycleTest, ChannelsAreManagedFromTheCommandLine) {
    startDaemon();
    auto added = ringwellJson({"channel", "add", "--template", "on-call", "--json"});
    EXPECT_EQ(added["name"], "PagerDuty +1");
    auto named = ringwellJson(
        {"channel", "add", "--name", "Mom", "--rule", R"({"senders":["Mom"]})", "--json"});
    EXPECT_EQ(named["usesAutomaticName"], false);

    ASSERT_EQ(ringwell({"channel", "move", "mom", "1"}).exitCode, 0);
    auto list = ringwellJson({"channels", "--json"});
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0]["name"], "Mom");
    EXPECT_EQ(list[1]["name"], "Urgent");
    EXPECT_EQ(ringwellJson({"channels", "urg", "--json"})[0]["name"], "Urgent");

    EXPECT_EQ(ringwell({"channel", "add", "--template", "nope"}).exitCode, 2);
    EXPECT_EQ(ringwell({"channel", "add", "--rule", R"({"calls":"sometimes"})"}).exitCode, 2);
    EXPECT_EQ(ringwell({"channel", "update"}, "{not json").exitCode, 2);
    EXPECT_EQ(ringwell({"channel", "move", named["id"], "0"}).exitCode, 2);
    EXPECT_EQ(ringwell({"channel", "delete", "Mo"}).exitCode, 1);
    ASSERT_EQ(ringwell({"channel", "delete", "Mom"}).exitCode, 0);
    EXPECT_EQ(ringwellJson({"channels", "--json"}).size(), 2u);

    // "Create Channel from This" on a history event.
    auto event = ringwellJson({"send", "--app", "Phone", "--title", "Ann", "--json"});
    auto like = ringwellJson({"channel", "add", "--like", event["id"], "--json"});
    EXPECT_EQ(like["name"], "Ann");
}

TEST_F(DaemonLifecycleTest, PreviewStatsAndDiagnostics) {
    startDaemon();
    ringwell({"send", "--app", "Mail", "--title", "first"});
    ringwell({"send", "--app", "Mail", "--title", "another"});
    auto preview = ringwellJson({"preview", "Urgent", "--json"});
    EXPECT_EQ(preview["ringCount"], 2);
    EXPECT_EQ(preview["entries"].size(), 2u);
    EXPECT_EQ(ringwellJson({"stats", "--json"})["received"], 2);

    std::string file = (root / "Ringwell Diagnostics.txt").string();
    ASSERT_EQ(ringwell({"diagnostics", "--output", file}).exitCode, 0);
    const std::string report = readFile(file);
    EXPECT_NE(report.find("Recent events (2 of 2):"), std::string::npos);

    ASSERT_EQ(ringwell({"clear-history"}).exitCode, 0);
    EXPECT_TRUE(ringwellJson({"events", "--json"}).empty());
}

// A directory where the store file belongs makes every save fail, also for
// root. Sends are still acknowledged; status and diagnostics say why the
// history is not saved until a save succeeds and writes everything.
TEST_F(DaemonLifecycleTest, AFailingSaveIsShownUntilTheNextSaveCatchesUp) {
    startDaemon();
    const auto storeFile = root / "data" / "ringwell" / "ringwell.json";
    std::filesystem::remove(storeFile);
    std::filesystem::create_directory(storeFile);
    ASSERT_EQ(ringwell({"send", "--app", "Mail", "--title", "first"}).exitCode, 0);

    auto status = ringwellJson({"status", "--json"});
    ASSERT_TRUE(status["saveProblem"].is_string()) << status.dump();
    const std::string problem = status["saveProblem"];
    EXPECT_EQ(problem.rfind("Ringwell can't save its history: ", 0), 0u) << problem;
    EXPECT_NE(problem.find(storeFile.string()), std::string::npos) << problem;
    EXPECT_NE(ringwell({"status"}).out.find(problem), std::string::npos);
    EXPECT_NE(ringwell({"diagnostics"}).out.find(problem), std::string::npos);

    std::filesystem::remove(storeFile);
    ASSERT_EQ(ringwell({"send", "--app", "Mail", "--title", "second"}).exitCode, 0);
    EXPECT_TRUE(ringwellJson({"status", "--json"})["saveProblem"].is_null());
    auto onDisk = json::Json::parse(readFile(storeFile));
    EXPECT_EQ(onDisk["events"].size(), 2u);
}

} // namespace
} // namespace ringwell::testing
