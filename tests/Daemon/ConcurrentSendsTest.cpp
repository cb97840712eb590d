#include "Core/Json.h"
#include "DaemonFixture.h"
#include "TestSupport/TemporaryDirectory.h"

#include <spawn.h>
#include <sys/wait.h>

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

    std::vector<std::string> environmentStrings;
    environmentStrings.reserve(environment.size());
    for (const auto& [name, value] : environment)
        environmentStrings.emplace_back(name).append("=").append(value);
    std::vector<char*> envp;
    envp.reserve(environmentStrings.size() + 1);
    for (auto& entry : environmentStrings)
        envp.push_back(entry.data());
    envp.push_back(nullptr);

    constexpr int sends = 200;
    std::vector<pid_t> children;
    for (int i = 0; i < sends; ++i) {
        std::vector<std::string> args = {RINGWELL_BINARY, "send",    "--app",
                                         "Pager",         "--title", "page " + std::to_string(i)};
        std::vector<char*> argv;
        argv.reserve(args.size() + 1);
        for (auto& arg : args)
            argv.push_back(arg.data());
        argv.push_back(nullptr);
        pid_t pid = 0;
        ASSERT_EQ(::posix_spawn(&pid, RINGWELL_BINARY, nullptr, nullptr, argv.data(), envp.data()),
                  0);
        children.push_back(pid);
        if (i == sends / 2) {
            EXPECT_EQ(ringwell({"channels"}).exitCode, 0); // responsive mid-burst
        }
    }
    int failures = 0;
    for (pid_t child : children) {
        int status = 0;
        ::waitpid(child, &status, 0);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
            ++failures;
    }
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(titlesOnDisk(root).size(), static_cast<size_t>(sends));

    auto events = ringwellJson({"events", "--json"});
    ASSERT_EQ(events.size(), static_cast<size_t>(sends));
    std::set<std::string> titles;
    int fired = 0;
    for (const auto& event : events) {
        titles.insert(event["title"].get<std::string>());
        fired += event["outcome"] == "fired";
        EXPECT_TRUE(event["outcome"] == "fired" || event["outcome"] == "coalesced")
            << event["outcome"];
    }
    EXPECT_EQ(titles.size(), static_cast<size_t>(sends));
    EXPECT_EQ(fired, 1);
    EXPECT_EQ(ringwellJson({"alarms", "--json"}).size(), 1u);
}

} // namespace
} // namespace ringwell::testing
