#include "Cli/ReplayCommands.h"

#include "Cli/CommandSupport.h"
#include "Cli/DaemonCall.h"
#include "Cli/TerminalText.h"
#include "Core/Json.h"
#include "Core/PercentEncoding.h"

#include <charconv>
#include <iostream>

namespace ringwell::cli {
namespace {

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string roleText(const std::string& role) {
    if (role == "wins")
        return "wins";
    if (role == "disabledMatch")
        return "matches, but is off";
    if (role == "notReached")
        return "not reached (an earlier channel wins)";
    return "no match";
}

std::string notificationLine(const json::Json& notification) {
    std::string what = notification["app"].get<std::string>();
    const std::string from = notification["sender"].get<std::string>();
    if (!from.empty())
        what += " · " + from;
    if (const std::string title = notification["title"].get<std::string>(); !title.empty())
        what += " · " + title;
    return localTime(notification["date"]) + "  " + oneLine(what);
}

// A replay whose matching budget ran out counted the patterns it did not
// check as not matching.
void printCutShort(CommandContext& context, const json::Json& answer) {
    if (answer.value("cutShort", false))
        context.out << "Cut short: the rules’ patterns took too long to check; those left "
                       "unchecked count as not matching.\n";
}

constexpr OptionSpec whyOptions[] = {{"json", false}};

int runWhy(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "why", args, whyOptions, 0, 1);
    if (!arguments)
        return exitUsage;
    const std::string event = arguments->positionals.empty() ? "latest" : arguments->positionals[0];
    auto answer =
        callDaemon(context, "why", "GET", "/v1/events/" + PercentEncoding::encode(event) + "/why");
    if (answer.exitCode)
        return *answer.exitCode;
    const json::Json& why = answer.json;
    if (arguments->has("json")) {
        printJson(context, why);
        return exitSuccess;
    }
    if (why["channels"].empty())
        context.out << "There are no channels.\n";
    int position = 1;
    for (const auto& channel : why["channels"]) {
        std::string name = channel["name"].get<std::string>();
        if (channel["isEnabled"] == false)
            name += " (off)";
        context.out << position++ << ". " << padded(oneLine(name), 24) << "  "
                    << roleText(channel["role"].get<std::string>()) << '\n';
        if (channel["checks"].empty())
            context.out << "     no conditions: matches every notification\n";
        for (const auto& check : channel["checks"])
            context.out << "     " << (check["passed"] == true ? "passed  " : "failed  ")
                        << check["condition"].get<std::string>() << ": "
                        << check["detail"].get<std::string>() << '\n';
    }
    context.out << "Decided by: " << why["step"]["text"].get<std::string>() << '\n';
    if (why.contains("difference"))
        context.out << why["difference"].get<std::string>()
                    << " Changed: " << why["changedChannel"].get<std::string>() << ".\n";
    printCutShort(context, why);
    return exitSuccess;
}

std::string traceVerdict(const json::Json& line) {
    const std::string kind = line["kind"].get<std::string>();
    const std::string channel = line.value("channelName", "");
    if (kind == "rings")
        return "rings      " + channel;
    if (kind == "cooledDown")
        return "cooldown   " + channel;
    if (kind == "disabled")
        return "off        " + channel;
    return "no match";
}

constexpr OptionSpec traceOptions[] = {
    {"at", true}, {"last", true}, {"channel-file", true}, {"json", false}};

int runTrace(std::span<const std::string> args, CommandContext& context) {
    constexpr std::string_view name = "trace";
    auto arguments = parseCommand(context, name, args, traceOptions, 0, 0);
    if (!arguments)
        return exitUsage;
    json::Json body = json::Json::object();
    if (auto at = arguments->value("at"))
        body["at"] = *at;
    if (auto last = arguments->value("last")) {
        int count = 0;
        auto [end, error] = std::from_chars(last->data(), last->data() + last->size(), count);
        if (error != std::errc() || end != last->data() + last->size())
            return usageError(context, name, "--last: \"" + *last + "\" is not a number");
        body["last"] = count;
    }
    if (auto path = arguments->value("channel-file")) {
        auto contents = readFile(*path);
        if (!contents)
            return usageError(context, name, "--channel-file: " + contents.error().message);
        auto channel = json::parse(contents.value());
        if (!channel)
            return usageError(context, name,
                              "--channel-file " + *path + ": " + channel.error().message);
        body["channel"] = channel.value();
    }
    auto answer = callDaemon(context, name, "POST", "/v1/trace", body);
    if (answer.exitCode)
        return *answer.exitCode;
    if (arguments->has("json")) {
        printJson(context, answer.json);
        return exitSuccess;
    }
    // Oldest first, so the summary closes the list it sums up.
    const json::Json& lines = answer.json["lines"];
    for (auto line = lines.rbegin(); line != lines.rend(); ++line)
        context.out << padded(traceVerdict(*line), 30) << "  "
                    << notificationLine((*line)["notification"]) << '\n';
    context.out << answer.json["summary"].get<std::string>() << '\n';
    printCutShort(context, answer.json);
    return exitSuccess;
}

} // namespace

const Command whyCommand{"why", "Explain why an event rang or stayed quiet",
                         R"(Usage: ringwell why [EVENT] [--json]

Replays the routing of one event of the history with the notification, the
history before it and today's channels: every channel in priority order with
each condition passed or failed, the channel that wins, and the step that
decided the outcome (disabled, cooldown with the earlier ring, alarm already
active, not authorised, limit). When today's channels would decide differently
from what happened, it says so and names the channel that changed.

EVENT is the start of the event's ID as `ringwell events` shows it, or the
whole ID; without it, the newest event is explained.
)",
                         runWhy};

const Command traceCommand{"trace", "Replay recent notifications through the channels",
                           R"(Usage: ringwell trace [--at "sun 03:00" | --at ISO8601] [--last N]
                      [--channel-file FILE] [--json]

Replays the last N notifications (default 50, at most 200) through every
channel, oldest first, and prints the channel that would ring for each or why
none would, then a summary ("7 would ring: 5 Prod incidents, 2 Calls from Mom;
43 stay quiet").

  --at MOMENT          judge each notification as if it had arrived on that
                       weekday at that time in your time zone: "sun 03:00",
                       "monday 9:30", or an ISO 8601 date-time such as
                       2025-03-30T01:30:00Z (its local weekday and time count).
                       Frequency windows and cooldowns keep the real dates.
  --last N             how many notifications to replay
  --channel-file FILE  a channel in its JSON form (`ringwell channel show`,
                       edited) that replaces the stored channel with its ID
                       for this trace only
)",
                           runTrace};

} // namespace ringwell::cli
