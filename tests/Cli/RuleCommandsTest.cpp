#include "Core/ChannelRule.h"
#include "Core/Json.h"

#include "TestSupport/Process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

namespace ringwell {
namespace {

using testing::runRingwell;

const std::string urgentMail = R"({"apps":["Mail"],"keywords":["urgent"]})";

TEST(RuleExplainTest, ExitsZeroOnAMatchAndOneOtherwiseExplainingEachCheck) {
    auto matching = runRingwell(
        {"rule", "explain", "--rule", urgentMail, "--app", "mail", "--body", "URGENT: call me"});
    EXPECT_EQ(matching.exitCode, 0) << matching.err;
    EXPECT_EQ(matching.out, "passed  app: \"mail\" is one of Mail\n"
                            "passed  keywords: Text contains \"urgent\"\n"
                            "Verdict: matches\n");

    auto other = runRingwell({"rule", "explain", "--rule", urgentMail, "--app", "Slack", "--json"});
    EXPECT_EQ(other.exitCode, 1);
    auto output = json::Json::parse(other.out);
    EXPECT_EQ(output["matches"], false);
    ASSERT_EQ(output["checks"].size(), 2u);
    EXPECT_EQ(output["checks"][0]["condition"], "app");
    EXPECT_EQ(output["checks"][0]["detail"], "\"Slack\" isn't one of Mail");
    EXPECT_EQ(output["checks"][1]["passed"], false);
}

TEST(RuleExplainTest, HistoryFeedsTheRepeatedCondition) {
    std::string path = ::testing::TempDir() + "/history.json";
    std::ofstream(path) << R"([{"app":"Mon","sender":"","title":"a","subtitle":"","body":"",)"
                           R"("date":757382340,"isTimeSensitive":false},)"
                           R"({"app":"Mon","sender":"","title":"b","subtitle":"","body":"",)"
                           R"("date":757382350,"isTimeSensitive":false}])";
    // 757382400 seconds after 2001 is 2025-01-01T00:00:00Z.
    auto result = runRingwell({"rule", "explain", "--rule",
                               R"({"frequency":{"count":3,"windowSeconds":600}})", "--app", "Mon",
                               "--date", "2025-01-01T00:00:00Z", "--history", path});
    EXPECT_EQ(result.exitCode, 0) << result.out << result.err;
    EXPECT_NE(result.out.find("3 matching in the last 10 min, rule wants 3"), std::string::npos);
    std::remove(path.c_str());
}

TEST(RuleExplainTest, ActiveHoursFollowTZ) {
    const std::string rule =
        R"({"activeHours":{"weekdays":[1,2,3,4,5,6,7],"startMinute":540,"endMinute":1020}})";
    const std::vector<std::string> args = {"rule", "explain", "--rule",
                                           rule,   "--date",  "2025-01-06T12:00:00Z"};
    EXPECT_EQ(runRingwell(args, {{"TZ", "Europe/Berlin"}}).exitCode, 0);
    EXPECT_EQ(runRingwell(args, {{"TZ", "Asia/Tokyo"}}).exitCode, 1); // 21:00 there
}

TEST(RuleExplainTest, BadInputExitsTwoNamingTheProblem) {
    const std::string badHistory = ::testing::TempDir() + "/bad-history.json";
    std::ofstream(badHistory) << R"([{"app":"Mon","sender":"","title":"a","subtitle":"","body":"",)"
                                 R"("date":1,"isTimeSensitive":false},{"app":"Mon"}])";
    struct Case {
        std::vector<std::string> args;
        std::string message;
    };
    const std::vector<Case> cases = {
        {{"rule", "explain"}, "--rule JSON is required"},
        {{"rule", "explain", "--rule", "{"}, "--rule: invalid JSON"},
        {{"rule", "explain", "--rule", R"({"calls":"sometimes"})"}, "unknown value \"sometimes\""},
        {{"rule", "explain", "--rule", "{}", "--history", "/nonexistent/h.json"},
         "cannot read /nonexistent/h.json"},
        {{"rule", "explain", "--rule", "{}", "--history", badHistory}, "entry 1: \"sender\""},
        {{"rule", "explain", "--rule", "{\"apps\":[\"\xFF\"]}"}, "--rule: invalid JSON"},
    };
    for (const auto& c : cases) {
        auto result = runRingwell(c.args);
        EXPECT_EQ(result.exitCode, 2) << c.message;
        EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
        EXPECT_TRUE(result.out.empty());
    }
    std::remove(badHistory.c_str());
}

TEST(RuleDescribeTest, ReportsSummaryNameAndInvalidPatterns) {
    auto result =
        runRingwell({"rule", "describe", "--rule",
                     R"({"apps":["Slack"],"keywords":["(","ok"],"usesRegex":true})", "--json"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    auto output = json::Json::parse(result.out);
    EXPECT_EQ(output["summary"], "Slack · contains (, ok");
    EXPECT_EQ(output["suggestedName"], "\u201C(\u201D +1");
    EXPECT_EQ(output["invalidPatterns"], json::Json::parse(R"(["("])"));

    auto text = runRingwell({"rule", "describe", "--rule", "{}"});
    EXPECT_EQ(text.exitCode, 0);
    EXPECT_NE(text.out.find("Suggested name: All Notifications\n"), std::string::npos);
    EXPECT_EQ(runRingwell({"rule", "describe"}).exitCode, 2);
}

TEST(CommandLineTest, HelpVersionAndUnknownCommands) {
    auto help = runRingwell({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.out.find("rule explain"), std::string::npos);
    // The help, and every command's, fits a terminal of 80 columns.
    const auto expectFits = [](const std::string& text) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            const auto columns =
                std::count_if(line.begin(), line.end(), [](char c) { return (c & 0xC0) != 0x80; });
            EXPECT_LE(columns, 80) << line;
        }
    };
    expectFits(help.out);
    std::istringstream listing(help.out.substr(help.out.find("Commands:\n") + 10));
    int commands = 0;
    for (std::string line; std::getline(listing, line) && !line.empty(); ++commands) {
        std::istringstream words(line.substr(2, 17));
        std::vector<std::string> command{std::istream_iterator<std::string>(words), {}};
        command.push_back("--help");
        auto commandHelp = runRingwell(command);
        EXPECT_EQ(commandHelp.exitCode, 0) << line;
        expectFits(commandHelp.out);
    }
    EXPECT_GT(commands, 30);
    EXPECT_NE(runRingwell({"serve", "--help"}).out.find("--lan-port N"), std::string::npos);
    EXPECT_NE(runRingwell({"templates", "-h"}).out.find("Usage: ringwell templates"),
              std::string::npos);
    auto version = runRingwell({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.out.rfind("ringwell ", 0), 0u);
    auto unknown = runRingwell({"frobnicate"});
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_NE(unknown.err.find("unknown command 'frobnicate'"), std::string::npos);
    EXPECT_EQ(runRingwell({}).exitCode, 2);

    // A group word lists its commands: alone as a usage error, with --help
    // as help, and after a word that is none of them.
    auto group = runRingwell({"channel", "--help"});
    EXPECT_EQ(group.exitCode, 0);
    EXPECT_NE(group.out.find("channel delete"), std::string::npos) << group.out;
    EXPECT_EQ(runRingwell({"alarm"}).exitCode, 2);
    auto wrong = runRingwell({"channel", "edit", "x"});
    EXPECT_EQ(wrong.exitCode, 2);
    EXPECT_NE(wrong.err.find("ringwell channel: unknown command 'edit'"), std::string::npos)
        << wrong.err;
    EXPECT_NE(wrong.err.find("channel update"), std::string::npos);
}

TEST(CommandLineTest, OrdinaryCommandsDoNotLoadIcuAndTemplatesListAsJsonOrText) {
    // The dynamic loader lists every library it loads; ICU comes only with
    // the rule commands, which run ringwell-rules.
    auto version = runRingwell({"--version"}, {{"LD_DEBUG", "libs"}});
    ASSERT_EQ(version.exitCode, 0);
    EXPECT_NE(version.err.find("libstdc++"), std::string::npos) << version.err;
    EXPECT_EQ(version.err.find("libicu"), std::string::npos) << version.err;
    auto templates = runRingwell({"templates", "--json"}, {{"LD_DEBUG", "libs"}});
    ASSERT_EQ(templates.exitCode, 0);
    EXPECT_NE(templates.err.find("libicu"), std::string::npos);
    auto listed = json::Json::parse(templates.out);
    EXPECT_EQ(ruleFromJson(listed[0]["rule"]).calls, ChannelRule::CallFilter::incoming);
    EXPECT_NE(runRingwell({"templates"}).out.find("night: Only at night"), std::string::npos);
}

} // namespace
} // namespace ringwell
