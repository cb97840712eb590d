#include "Cli/ChannelCommands.h"

#include "Cli/CommandSupport.h"
#include "Cli/DaemonCall.h"
#include "Cli/TerminalText.h"
#include "Core/Json.h"
#include "Core/PercentEncoding.h"

#include <charconv>
#include <iostream>
#include <iterator>

namespace ringwell::cli {
namespace {

constexpr OptionSpec jsonOnly[] = {{"json", false}};

constexpr OptionSpec channelsOptions[] = {{"json", false}, {"full", false}};

// The whole channels (as GET /v1/channels gives them) of the listed entities,
// in the entities' order.
json::Json wholeChannels(const json::Json& entities, const json::Json& channels) {
    json::Json chosen = json::Json::array();
    for (const auto& entity : entities) {
        for (const auto& channel : channels) {
            if (channel["id"] == entity["id"])
                chosen.push_back(channel);
        }
    }
    return chosen;
}

int runChannels(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "channels", args, channelsOptions, 0, 1);
    if (!arguments)
        return exitUsage;
    const bool full = arguments->has("full");
    if (full && !arguments->has("json"))
        return usageError(context, "channels", "--full goes with --json");
    std::string target = "/v1/channel-entities";
    if (!arguments->positionals.empty())
        target += "?matching=" + PercentEncoding::encode(arguments->positionals[0]);
    auto answer = callDaemon(context, "channels", "GET", target);
    if (answer.exitCode)
        return *answer.exitCode;
    if (full) {
        auto channels = callDaemon(context, "channels", "GET", "/v1/channels");
        if (channels.exitCode)
            return *channels.exitCode;
        printJson(context, wholeChannels(answer.json, channels.json));
        return exitSuccess;
    }
    if (arguments->has("json")) {
        printJson(context, answer.json);
        return exitSuccess;
    }
    if (answer.json.empty())
        context.out << (arguments->positionals.empty() ? "No channels.\n"
                                                       : "No channel matches.\n");
    for (const auto& entity : answer.json) {
        context.out << entity["id"].get<std::string>() << "  " << entity["name"].get<std::string>()
                    << "\n    " << entity["ruleSummary"].get<std::string>() << '\n';
    }
    return exitSuccess;
}

int runChannelShow(std::span<const std::string> args, CommandContext& context) {
    // The channel is printed in its JSON form either way; --json is accepted
    // like every other command that prints a record.
    auto arguments = parseCommand(context, "channel show", args, jsonOnly, 1, 1);
    if (!arguments)
        return exitUsage;
    auto answer = callDaemon(context, "channel show", "GET",
                             "/v1/channels/" + PercentEncoding::encode(arguments->positionals[0]));
    if (answer.exitCode)
        return *answer.exitCode;
    printJson(context, answer.json);
    return exitSuccess;
}

constexpr OptionSpec addOptions[] = {
    {"name", true}, {"template", true}, {"rule", true}, {"like", true}, {"json", false}};

int runChannelAdd(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "channel add", args, addOptions, 0, 0);
    if (!arguments)
        return exitUsage;
    json::Json body = json::Json::object();
    int sources = 0;
    if (auto name = arguments->value("name"))
        body["name"] = *name;
    if (auto templateId = arguments->value("template")) {
        body["template"] = *templateId;
        ++sources;
    }
    if (auto rule = arguments->value("rule")) {
        auto parsed = json::parse(*rule);
        if (!parsed)
            return usageError(context, "channel add", "--rule: " + parsed.error().message);
        body["rule"] = parsed.value();
        ++sources;
    }
    if (auto like = arguments->value("like")) {
        body["likeEvent"] = *like;
        ++sources;
    }
    if (sources > 1)
        return usageError(context, "channel add", "give only one of --template, --rule and --like");
    auto answer = callDaemon(context, "channel add", "POST", "/v1/channels", body);
    if (answer.exitCode)
        return *answer.exitCode;
    if (arguments->has("json"))
        printJson(context, answer.json);
    else
        context.out << "Added " << answer.json["name"].get<std::string>() << " ("
                    << answer.json["id"].get<std::string>() << ")\n";
    return exitSuccess;
}

int runChannelUpdate(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "channel update", args, jsonOnly, 0, 0);
    if (!arguments)
        return exitUsage;
    std::string input(std::istreambuf_iterator<char>(std::cin), {});
    auto parsed = json::parse(input);
    if (!parsed)
        return usageError(context, "channel update", "standard input: " + parsed.error().message);
    if (!parsed.value().is_object() || !parsed.value().contains("id") ||
        !parsed.value()["id"].is_string())
        return usageError(context, "channel update",
                          "standard input must be a channel object with its \"id\"");
    std::string id = parsed.value()["id"].get<std::string>();
    auto answer = callDaemon(context, "channel update", "PUT",
                             "/v1/channels/" + PercentEncoding::encode(id), parsed.value());
    if (answer.exitCode)
        return *answer.exitCode;
    if (arguments->has("json"))
        printJson(context, answer.json);
    return exitSuccess;
}

int runChannelDelete(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "channel delete", args, {}, 1, 1);
    if (!arguments)
        return exitUsage;
    auto answer = callDaemon(context, "channel delete", "DELETE",
                             "/v1/channels/" + PercentEncoding::encode(arguments->positionals[0]));
    return answer.exitCode.value_or(exitSuccess);
}

int runChannelMove(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "channel move", args, {}, 2, 2);
    if (!arguments)
        return exitUsage;
    const std::string& position = arguments->positionals[1];
    long long value = 0;
    auto [end, error] = std::from_chars(position.data(), position.data() + position.size(), value);
    if (error != std::errc() || end != position.data() + position.size() || value < 1)
        return usageError(context, "channel move",
                          "POSITION must be a whole number from 1 (the top of the list)");
    auto answer =
        callDaemon(context, "channel move", "POST",
                   "/v1/channels/" + PercentEncoding::encode(arguments->positionals[0]) + "/move",
                   json::Json{{"position", value}});
    return answer.exitCode.value_or(exitSuccess);
}

std::string verdictText(const json::Json& verdict) {
    std::string kind = verdict["kind"].get<std::string>();
    if (kind == "shadowed")
        return "shadowed by " + verdict.value("byName", verdict["by"].get<std::string>());
    if (kind == "cooledDown")
        return "cooldown";
    if (kind == "noMatch")
        return "no match";
    return kind;
}

constexpr OptionSpec previewOptions[] = {{"at", true}, {"json", false}};

int runPreview(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "preview", args, previewOptions, 1, 1);
    if (!arguments)
        return exitUsage;
    std::string target =
        "/v1/preview?channel=" + PercentEncoding::encode(arguments->positionals[0]);
    if (auto at = arguments->value("at"))
        target += "&at=" + PercentEncoding::encode(*at);
    auto answer = callDaemon(context, "preview", "GET", target);
    if (answer.exitCode)
        return *answer.exitCode;
    if (arguments->has("json")) {
        printJson(context, answer.json);
        return exitSuccess;
    }
    const json::Json& entries = answer.json["entries"];
    context.out << answer.json["ringCount"].get<int>() << " of " << entries.size()
                << " recent notifications would ring "
                << answer.json["channelName"].get<std::string>() << ".\n";
    for (const auto& entry : entries) {
        const json::Json& notification = entry["notification"];
        std::string verdict = verdictText(entry["verdict"]);
        verdict.resize(std::max<size_t>(verdict.size(), 12), ' ');
        context.out << verdict << "  " << localTime(notification["date"]) << "  "
                    << notification["app"].get<std::string>() << " · "
                    << notification["title"].get<std::string>() << '\n';
    }
    return exitSuccess;
}

} // namespace

const Command channelsCommand{"channels", "List channels, or find them by name",
                              R"(Usage: ringwell channels [TEXT] [--json [--full]]

Lists every channel in priority order (the first matching channel rings), or
those whose name contains TEXT (ignoring case and accents), with its ID and
rule summary. --json prints each as its ID, name and rule summary; with
--full, as the whole channel.
)",
                              runChannels};

const Command channelShowCommand{"channel show", "Print a channel in its JSON form",
                                 R"(Usage: ringwell channel show CHANNEL [--json]

Prints the whole channel (CHANNEL: an ID or a name that identifies one
channel) in its JSON form, ready to edit and give to `ringwell channel update`.
)",
                                 runChannelShow};

const Command channelAddCommand{"channel add", "Add a channel",
                                R"(Usage: ringwell channel add [--name NAME] [--json]
                            [--template ID | --rule JSON | --like EVENT]

Adds a channel at the end of the list. Without --name it is named after its
rule and follows it. The rule comes from a template (see `ringwell templates`),
a rule in its JSON form, or the notification of a history event ("Create
Channel from This"; EVENT as `ringwell why` takes it); without any, the channel
matches every notification.
)",
                                runChannelAdd};

const Command channelUpdateCommand{"channel update", "Replace a channel with one read as JSON",
                                   R"(Usage: ringwell channel update [--json] < channel.json

Reads a whole channel object in its JSON form (as `ringwell channel add --json`
or the API print it) from standard input and stores it in place of the channel
with the same "id". Its "escalation" lists what happens while the alarm rings
unanswered (see the README); header values shown as "••••" keep their
stored value.
)",
                                   runChannelUpdate};

const Command channelDeleteCommand{"channel delete", "Delete a channel",
                                   R"(Usage: ringwell channel delete CHANNEL

CHANNEL is the channel's ID or its whole name (a part of a name is refused,
so that no other channel is deleted by mistake).
)",
                                   runChannelDelete};

const Command channelMoveCommand{"channel move", "Move a channel to a position in the list",
                                 R"(Usage: ringwell channel move CHANNEL POSITION

Moves the channel (its ID or its whole name) to POSITION (1 is the top: the
first channel checked).
)",
                                 runChannelMove};

const Command previewCommand{"preview", "Show what a channel would have done recently",
                             R"(Usage: ringwell preview CHANNEL [--at MOMENT] [--json]

Replays the recent notifications of the history through the channel's rule and
the channel list, newest first: whether each would ring, stay quiet in
cooldown, be taken by an earlier channel, or not match. CHANNEL is an ID or a
name that identifies one channel. --at judges each notification as if it had
arrived on that weekday and time ("sun 03:00", or an ISO 8601 date-time), as
`ringwell trace` does.
)",
                             runPreview};

} // namespace ringwell::cli
