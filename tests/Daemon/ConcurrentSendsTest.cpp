#include "Core/Json.h"
#include "DaemonFixture.h"
#include "TestSupport/TemporaryDirectory.h"

#include <set>

namespace ringwell::testing {
namespace {

using ConcurrentSendsTest = DaemonTest;

// The titles of the events in the store file as it is on disk now.
std::set<std::string> titlesOnDisk(const std::filesystem::path& root) {
    const json::Json store =
        json::Json::parse(readFile(root / "data" / "ringwell" / "ringwell.json"));
    std::set<std::string> titles;
    for (const auto& event : store["events"])
        titles.insert(event["title"].get<std::string>());
    return titles;
}

// 200 automations firing at once: every send is recorded exactly once and is
// on disk by the time it is acknowledged, one of them rings and the rest
// coalesce into that alarm, and the daemon keeps answering.
TEST_F(ConcurrentSendsTest, BurstOfSendsLosesNothing) {
    startDaemon();
    ASSERT_EQ(ringwell({"permission", "alarms", "allow"}).exitCode, 0);

    // The shell starts every send before it waits for any, asks for the
    // channels halfway, and prints how many sends failed.
    const std::string burst =
        "pids=; for i in $(seq 0 199); do \"$0\" send --app Pager --title \"page $i\" >/dev/null & "
        "pids=\"$pids $!\"; if [ $i = 100 ]; then \"$0\" channels >/dev/null || echo deaf; fi; "
        "done; failed=0; for pid in $pids; do wait $pid || failed=$((failed + 1)); done; "
        "echo $failed";
    constexpr std::size_t sends = 200;
    auto result = runProcess({"/bin/sh", "-c", burst, RINGWELL_BINARY}, environment);
    EXPECT_EQ(result.out, "0\n") << result.err;
    EXPECT_EQ(titlesOnDisk(root).size(), sends);

    auto events = ringwellJson({"events", "--json"});
    ASSERT_EQ(events.size(), sends);
    std::set<std::string> titles;
    int fired = 0;
    for (const auto& event : events) {
        titles.insert(event["title"].get<std::string>());
        fired += event["outcome"] == "fired";
        EXPECT_TRUE(event["outcome"] == "fired" || event["outcome"] == "coalesced")
            << event["outcome"];
    }
    EXPECT_EQ(titles.size(), sends);
    EXPECT_EQ(fired, 1);
    EXPECT_EQ(ringwellJson({"alarms", "--json"}).size(), 1u);
}

} // namespace
} // namespace ringwell::testing
