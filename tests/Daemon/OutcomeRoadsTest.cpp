#include "Core/Json.h"
#include "DaemonFixture.h"
#include "TestSupport/TemporaryDirectory.h"

namespace ringwell::testing {
namespace {

// The outcomes that need the real daemon: its permission, its settings file
// and its alarm limit. The dispatcher's own cases are its unit tests.
class OutcomeRoadsTest : public DaemonTest {
protected:
    void SetUp() override {
        DaemonTest::SetUp();
        startDaemon();
    }

    json::Json send(std::vector<std::string> args) {
        args.insert(args.begin(), "send");
        args.push_back("--json");
        return ringwellJson(args);
    }

    void allowAlarms() { ASSERT_EQ(ringwell({"permission", "alarms", "allow"}).exitCode, 0); }
};

TEST_F(OutcomeRoadsTest, NotAuthorisedFailsThenFiresOnceAllowed) {
    auto failed = send({"--app", "Messages", "--title", "Mom", "--body", "call me"});
    EXPECT_EQ(failed["outcome"], "failed");
    EXPECT_NE(failed.value("errorMessage", "").find("allow Alarms"), std::string::npos);
    EXPECT_NE(daemonLog().find("Ringwell couldn't ring Urgent"), std::string::npos);

    allowAlarms();
    auto fired = send({"--app", "Messages", "--title", "Mom", "--body", "call me"});
    EXPECT_EQ(fired["outcome"], "fired");
    EXPECT_EQ(fired["channelName"], "Urgent");
    ASSERT_TRUE(fired.contains("alarmID"));

    auto alarms = ringwellJson({"alarms", "--json"});
    ASSERT_EQ(alarms.size(), 1u);
    EXPECT_EQ(alarms[0]["id"], fired["alarmID"]);
    // `alarms` shows the start of the ID, which the alarm commands take.
    const std::string start = std::string(fired["alarmID"]).substr(0, 8);
    EXPECT_EQ(ringwell({"alarms"}).out.rfind(start + "  ", 0), 0u);
    EXPECT_EQ(ringwell({"alarm", "stop", start}).exitCode, 0);
    EXPECT_TRUE(ringwellJson({"alarms", "--json"}).empty());
}

TEST_F(OutcomeRoadsTest, SetupTestTakesTheNextNotificationInsteadOfRinging) {
    allowAlarms();
    auto waiting = ringwellJson({"setup-test", "start", "--json"});
    EXPECT_EQ(waiting["state"], "waiting");
    auto event = send({"--notification", "Alarm\nServer down", "--title", "Alarm", "--subtitle",
                       "prod", "--body", "Server down", "--app", "Grafana", "--time-sensitive",
                       "yes", "--sender", "Ops"});
    EXPECT_EQ(event["outcome"], "setupTest");
    EXPECT_TRUE(ringwellJson({"alarms", "--json"}).empty());

    auto result = ringwellJson({"setup-test", "status", "--json"});
    EXPECT_EQ(result["state"], "received");
    EXPECT_EQ(result["allPassed"], true);

    // A badly mapped automation: the same value fed to two fields.
    ringwell({"setup-test", "start"});
    send({"--title", "Alarm", "--body", "Alarm", "--app", "Grafana"});
    auto bad = ringwellJson({"setup-test", "status", "--json"});
    EXPECT_EQ(bad["allPassed"], false);
    auto text = ringwell({"setup-test", "status"});
    EXPECT_NE(text.out.find("Set Body from the notification with --body"), std::string::npos)
        << text.out;

    const std::string saved = readFile(root / "config" / "ringwell" / "settings.json");
    EXPECT_NE(saved.find("failed: Body, Is Time Sensitive ("), std::string::npos) << saved;
}

TEST_F(OutcomeRoadsTest, RingingADeletedChannelSaysItNoLongerExists) {
    allowAlarms();
    std::string id = ringwellJson({"channel", "show", "Urgent", "--json"})["id"];
    ASSERT_EQ(ringwell({"channel", "delete", id}).exitCode, 0);
    auto refused = ringwell({"ring", id});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(
        refused.err.find("Channel no longer exists. Pick a different channel in this automation."),
        std::string::npos)
        << refused.err;
    EXPECT_TRUE(ringwellJson({"events", "--json"}).empty());
}

TEST_F(OutcomeRoadsTest, TheAlarmLimitFailsWithItsMessage) {
    allowAlarms();
    ASSERT_EQ(ringwell({"channel", "delete", "Urgent"}).exitCode, 0);
    // Each ring of a channel with ten reminders holds eleven alarms.
    std::vector<std::string> ids;
    for (int i = 0; i < 7; ++i) {
        auto channel =
            ringwellJson({"channel", "add", "--name", "C" + std::to_string(i), "--rule",
                          R"({"keywords":["k)" + std::to_string(i) + R"("]})", "--json"});
        channel["repeatEnabled"] = true;
        channel["repeatCount"] = 10;
        ASSERT_EQ(ringwell({"channel", "update"}, json::encode(channel)).exitCode, 0);
        ids.push_back(channel["id"]);
    }
    for (int i = 0; i < 6; ++i)
        ASSERT_EQ(ringwell({"ring", ids[static_cast<size_t>(i)]}).exitCode, 0);
    auto refused = ringwell({"ring", ids[6]});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.err.find("Too many alarms are already scheduled."), std::string::npos)
        << refused.err;

    // The same limit reached by a forwarded notification fails its event too.
    auto event = send({"--app", "Mail", "--title", "k6"});
    EXPECT_EQ(event["outcome"], "failed");
    EXPECT_EQ(event["channelName"], "C6");
    EXPECT_EQ(ringwellJson({"alarms", "--json"}).size(), 64u);
}

} // namespace
} // namespace ringwell::testing
