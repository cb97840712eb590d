#include "Core/Json.h"
#include "DaemonFixture.h"
#include "TestSupport/TemporaryDirectory.h"

namespace ringwell::testing {
namespace {

// `why` and `trace` through the daemon: the replay engines are the core's
// tests; here the history, today's channels and an edited copy reach them.
class ReplayCommandsTest : public DaemonTest {
protected:
    void SetUp() override {
        DaemonTest::SetUp();
        startDaemon();
    }
};

TEST_F(ReplayCommandsTest, WhyAndTraceReplayTheHistoryThroughTodaysChannels) {
    ASSERT_EQ(ringwell({"permission", "alarms", "allow"}).exitCode, 0);
    auto fired = ringwellJson({"send", "--app", "Messages", "--title", "Mom", "--json"});
    ASSERT_EQ(fired["outcome"], "fired");
    const std::string eventId = fired["id"];

    // `events` shows the start of each ID, which `why` takes.
    auto listed = ringwell({"events", "--channel", "urgent"});
    ASSERT_EQ(listed.out.rfind(eventId.substr(0, 8) + "  ", 0), 0u) << listed.out;
    auto why = ringwell({"why", eventId.substr(0, 8)});
    EXPECT_EQ(why.exitCode, 0) << why.err;
    EXPECT_NE(why.out.find("1. Urgent"), std::string::npos) << why.out;
    EXPECT_NE(why.out.find("Decided by: Rang \u201CUrgent\u201D"), std::string::npos) << why.out;
    EXPECT_EQ(why.out.find("differently"), std::string::npos) << why.out;

    // Switched off after the fact: the explanation says today differs.
    json::Json urgent = ringwellJson({"channel", "show", "Urgent", "--json"});
    json::Json off = urgent;
    off["isEnabled"] = false;
    ASSERT_EQ(ringwell({"channel", "update"}, json::encode(off)).exitCode, 0);
    auto changed = ringwellJson({"why", "--json"}); // the newest event
    EXPECT_EQ(changed["step"]["kind"], "rang");
    EXPECT_EQ(changed["changedChannel"], "Urgent");

    auto trace = ringwellJson({"trace", "--last", "1", "--json"});
    EXPECT_EQ(trace["summary"], "0 would ring; 1 stays quiet");
    EXPECT_EQ(trace["lines"][0]["kind"], "disabled");
    // The edited copy counts for this trace only.
    const auto file = root / "urgent.json";
    writeFile(file, json::encode(urgent));
    auto edited = ringwell({"trace", "--at", "sun 03:00", "--channel-file", file.string()});
    EXPECT_EQ(edited.exitCode, 0) << edited.err;
    EXPECT_NE(edited.out.find("1 would ring: 1 Urgent; 0 stay quiet"), std::string::npos)
        << edited.out;
    EXPECT_EQ(ringwellJson({"channel", "show", "Urgent", "--json"})["isEnabled"], false);

    EXPECT_EQ(ringwell({"preview", "Urgent", "--at", "2026-03-29T01:30:00Z"}).exitCode, 0);
}

TEST_F(ReplayCommandsTest, BadInputIsRefusedWithItsReason) {
    auto unknown = ringwell({"why", "6F9619FF-8B86-D011-B42D-00C04FC964FF"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_EQ(unknown.err, "No event has the ID 6F9619FF-8B86-D011-B42D-00C04FC964FF.\n");
    auto moment = ringwell({"trace", "--at", "someday"});
    EXPECT_EQ(moment.exitCode, 2);
    EXPECT_NE(moment.err.find("\"sun 03:00\""), std::string::npos) << moment.err;
    EXPECT_EQ(ringwell({"trace", "--last", "0"}).exitCode, 2);
    EXPECT_EQ(ringwell({"trace", "--channel-file", (root / "missing.json").string()}).exitCode, 2);
    const auto stranger = root / "stranger.json";
    writeFile(stranger, R"({"id": "6F9619FF-8B86-D011-B42D-00C04FC964FF", "name": "X"})");
    auto notStored = ringwell({"trace", "--channel-file", stranger.string()});
    EXPECT_NE(notStored.exitCode, 0);
    EXPECT_NE(notStored.err.find("6F9619FF"), std::string::npos) << notStored.err;
}

} // namespace
} // namespace ringwell::testing
