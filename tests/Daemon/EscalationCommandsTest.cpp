#include "Core/Json.h"
#include "DaemonFixture.h"
#include "TestSupport/TemporaryDirectory.h"

namespace ringwell::testing {
namespace {

using EscalationCommandsTest = DaemonTest;

// The channel editor's road through `channel show` and `channel update`: the
// escalation is checked, its header secrets are kept but never shown again.
TEST_F(EscalationCommandsTest, UpdateChecksStepsAndNeverShowsASecretAgain) {
    startDaemon();
    json::Json channel = ringwellJson({"channel", "show", "Urgent", "--json"});
    channel["escalation"] = json::Json::parse(R"([
        {"afterSeconds": 60, "action": "louder"},
        {"afterSeconds": 300, "action": "webhook", "url": "https://ntfy.example.org/partner",
         "headers": {"Title": "{{channel}} rings", "Authorization": "Bearer SECRET-TOKEN-42"},
         "body": "{{title}}: nobody answered. {{stopLink}}"}])");

    auto updated = ringwell({"channel", "update", "--json"}, json::encode(channel));
    ASSERT_EQ(updated.exitCode, 0) << updated.err;
    EXPECT_EQ(updated.out.find("SECRET-TOKEN-42"), std::string::npos);
    json::Json shown = ringwellJson({"channel", "show", "Urgent", "--json"});
    EXPECT_EQ(shown["escalation"][1]["headers"]["Authorization"], "••••");
    EXPECT_EQ(shown["escalation"][1]["body"], "{{title}}: nobody answered. {{stopLink}}");

    // Sent back as shown, the masked value stays what it was.
    shown["escalation"][0]["afterSeconds"] = 30;
    ASSERT_EQ(ringwell({"channel", "update"}, json::encode(shown)).exitCode, 0);

    json::Json wrong = shown;
    wrong["escalation"][1]["afterSeconds"] = 10;
    wrong["escalation"][1]["url"] = "ftp://example.org/";
    EXPECT_EQ(ringwell({"channel", "update"}, json::encode(wrong)).exitCode, 2);

    const std::string report = (root / "Ringwell Diagnostics.txt").string();
    ASSERT_EQ(ringwell({"diagnostics", "--output", report}).exitCode, 0);
    EXPECT_EQ(readFile(report).find("SECRET-TOKEN-42"), std::string::npos);

    ASSERT_EQ(stopDaemon(), 0);
    EXPECT_EQ(daemonLog().find("SECRET-TOKEN-42"), std::string::npos);
    const std::string stored = readFile(root / "data" / "ringwell" / "ringwell.json");
    EXPECT_NE(stored.find("Bearer SECRET-TOKEN-42"), std::string::npos);
    EXPECT_NE(stored.find("\"afterSeconds\":30"), std::string::npos);
}

} // namespace
} // namespace ringwell::testing
