#include "Cli/ActivityCommands.h"

#include "Cli/CommandSupport.h"
#include "Cli/DaemonCall.h"
#include "Cli/TerminalText.h"
#include "Core/Json.h"
#include "Core/PercentEncoding.h"

#include <fstream>
#include <iostream>

namespace ringwell::cli {
namespace {

constexpr OptionSpec jsonOnly[] = {{"json", false}};

std::string optionalText(const json::Json& object, const char* key) {
    return object.contains(key) && object[key].is_string() ? object[key].get<std::string>() : "";
}

std::string eventLine(const json::Json& event) {
    std::string who = optionalText(event, "channelName");
    if (who.empty())
        who = optionalText(event, "app");
    if (who.empty())
        who = "Unknown";
    std::string line = idStart(event["id"].get<std::string>()) + "  " +
                       localTime(event["receivedAt"]) + "  " + event["label"].get<std::string>();
    if (event["isTest"] == true)
        line += " (test)";
    line += "  " + oneLine(who);
    std::string what = optionalText(event, "title");
    std::string body = optionalText(event, "body");
    if (!body.empty())
        what += (what.empty() ? "" : ": ") + body;
    // One row per event: line breaks inside the texts become spaces.
    if (!what.empty())
        line += "  " + oneLine(what);
    if (event.contains("errorMessage"))
        line += "  [" + event["errorMessage"].get<std::string>() + "]";
    if (event.contains("escalations") && event["escalations"].is_array()) {
        std::string steps;
        for (const auto& record : event["escalations"])
            steps += (steps.empty() ? "" : "; ") + std::string("step ") +
                     std::to_string(record.value("step", 0)) + " " +
                     record.value("action", std::string()) +
                     (record.value("ok", false) ? " ok" : " failed") + " (" +
                     record.value("detail", std::string()) + ")";
        line += "  [escalation: " + steps + "]";
    }
    return line;
}

constexpr OptionSpec eventsOptions[] = {{"channel", true}, {"json", false}};

int runEvents(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "events", args, eventsOptions, 0, 0);
    if (!arguments)
        return exitUsage;
    std::string target = "/v1/events";
    if (auto channel = arguments->value("channel"))
        target += "?channel=" + PercentEncoding::encode(*channel);
    auto answer = callDaemon(context, "events", "GET", target);
    if (answer.exitCode)
        return *answer.exitCode;
    if (arguments->has("json")) {
        json::Json events = json::Json::array();
        for (const auto& event : answer.json)
            events.push_back(recordForm(event));
        printJson(context, events);
        return exitSuccess;
    }
    if (answer.json.empty())
        context.out << "No History\nForwarded notifications show up here.\n";
    for (const auto& event : answer.json)
        context.out << eventLine(event) << '\n';
    return exitSuccess;
}

int runClearHistory(std::span<const std::string> args, CommandContext& context) {
    if (!parseCommand(context, "clear-history", args, {}, 0, 0))
        return exitUsage;
    return callDaemon(context, "clear-history", "DELETE", "/v1/events")
        .exitCode.value_or(exitSuccess);
}

void printCounts(CommandContext& context, const char* heading, const json::Json& counts,
                 const char* empty) {
    context.out << '\n' << heading << '\n';
    if (counts.empty())
        context.out << "  " << empty << '\n';
    for (const auto& count : counts)
        context.out << "  " << count["name"].get<std::string>() << "  " << count["count"] << '\n';
}

int runStats(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "stats", args, jsonOnly, 0, 0);
    if (!arguments)
        return exitUsage;
    auto answer = callDaemon(context, "stats", "GET", "/v1/stats");
    if (answer.exitCode)
        return *answer.exitCode;
    const json::Json& stats = answer.json;
    if (arguments->has("json")) {
        printJson(context, stats);
        return exitSuccess;
    }
    context.out << "Last 7 days\n  Received " << stats["received"] << "  Rang " << stats["rang"]
                << '\n';
    for (const auto& day : stats["days"]) {
        std::string date = localTime(day["start"]).substr(0, 10);
        int rang = day["rang"].get<int>();
        int quiet = day["received"].get<int>() - rang;
        context.out << "  " << date << "  " << std::string(static_cast<size_t>(rang), '#')
                    << std::string(static_cast<size_t>(quiet), '.') << "  " << day["received"]
                    << " received, " << rang << " rang\n";
    }
    context.out << "  Last 200 notifications, not counting tests.\n";
    printCounts(context, "Top apps", stats["topApps"], "No notifications yet.");
    printCounts(context, "Channels that rang", stats["topChannels"],
                "No channel has rung this week.");
    printCounts(context, "Outcomes", stats["outcomes"], "Nothing to show yet.");
    return exitSuccess;
}

constexpr OptionSpec diagnosticsOptions[] = {{"output", true}};

int runDiagnostics(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "diagnostics", args, diagnosticsOptions, 0, 0);
    if (!arguments)
        return exitUsage;
    auto answer = callDaemon(context, "diagnostics", "GET", "/v1/diagnostics");
    if (answer.exitCode)
        return *answer.exitCode;
    auto output = arguments->value("output");
    if (!output) {
        context.out << answer.text << '\n';
        return exitSuccess;
    }
    std::ofstream file(*output, std::ios::binary | std::ios::trunc);
    file << answer.text;
    file.close();
    if (!file) {
        context.err << "ringwell diagnostics: cannot write " << *output << '\n';
        return exitFailure;
    }
    return exitSuccess;
}

std::string statusSymbol(const std::string& status) {
    if (status == "passed")
        return "passed      ";
    if (status == "failed")
        return "FAILED      ";
    return "unverifiable";
}

void printSetupTest(CommandContext& context, const json::Json& test) {
    std::string state = test["state"].get<std::string>();
    if (state == "idle") {
        context.out << "Checks your automation with the next notification it sends to Ringwell.\n"
                       "Start it with `ringwell setup-test start`.\n";
    } else if (state == "waiting") {
        context.out << "Waiting for a notification…\n"
                       "Get a notification from an app selected in your automation. The test "
                       "uses that notification, so it won't ring.\n"
                       "Nothing after a minute? Check that the automation is on and that the app "
                       "is selected in it.\n";
    } else {
        context.out << "Checked a notification from " << test["app"].get<std::string>() << '\n'
                    << (test["allPassed"] == true ? "Your automation is set up correctly.\n"
                                                  : "Some fields need fixing.\n");
        for (const auto& check : test["checks"]) {
            context.out << "  " << statusSymbol(check["status"].get<std::string>()) << "  "
                        << check["label"].get<std::string>() << ": \""
                        << check["received"].get<std::string>() << "\"\n";
            if (check.contains("hint"))
                context.out << "      " << check["hint"].get<std::string>() << '\n';
        }
    }
}

int runSetupTest(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "setup-test", args, jsonOnly, 1, 1);
    if (!arguments)
        return exitUsage;
    const std::string& action = arguments->positionals[0];
    DaemonAnswer answer;
    if (action == "status")
        answer = callDaemon(context, "setup-test", "GET", "/v1/setup-test");
    else if (action == "start" || action == "cancel")
        answer = callDaemon(context, "setup-test", "POST", "/v1/setup-test/" + action);
    else
        return usageError(context, "setup-test", "expected start, cancel or status");
    if (answer.exitCode)
        return *answer.exitCode;
    if (arguments->has("json"))
        printJson(context, answer.json);
    else
        printSetupTest(context, answer.json);
    return exitSuccess;
}

} // namespace

const Command eventsCommand{"events", "Show the history of forwarded notifications",
                            R"(Usage: ringwell events [--channel CHANNEL] [--json]

Lists the history, newest first: the start of each event's ID (which
`ringwell why` and `ringwell channel add --like` take), when the notification
arrived, what happened to it and which channel took it. --channel shows only
that channel's events (an ID or a name).
)",
                            runEvents};

const Command clearHistoryCommand{"clear-history", "Clear the history",
                                  "Usage: ringwell clear-history\n\nDeletes every event of the "
                                  "history.\n",
                                  runClearHistory};

const Command statsCommand{"stats", "Show the statistics of the last 7 days",
                           R"(Usage: ringwell stats [--json]

Notifications received and rung per day over the last 7 days, the top apps,
the channels that rang and the outcomes (setup tests not counted).
)",
                           runStats};

const Command diagnosticsCommand{"diagnostics", "Print or save the diagnostics report",
                                 R"(Usage: ringwell diagnostics [--output FILE]

Prints the diagnostics report (no channel names, people, keywords or
notification text), or writes it to FILE, e.g. "Ringwell Diagnostics.txt".
)",
                                 runDiagnostics};

const Command setupTestCommand{"setup-test", "Check the automation with the next notification",
                               R"(Usage: ringwell setup-test start|cancel|status [--json]

start: the next forwarded notification is checked field by field instead of
ringing. status: shows the result. cancel: stops waiting.
)",
                               runSetupTest};

} // namespace ringwell::cli
