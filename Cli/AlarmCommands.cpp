#include "Cli/AlarmCommands.h"

#include "Cli/CommandSupport.h"
#include "Cli/DaemonCall.h"
#include "Cli/TerminalText.h"
#include "Core/Json.h"
#include "Core/PercentEncoding.h"
#include "Core/Uuid.h"

#include <iostream>

namespace ringwell::cli {
namespace {

// The Send intent's ten fields: option name and API key, in the intent's order.
constexpr std::pair<std::string_view, std::string_view> sendFields[] = {
    {"notification", "notification"},
    {"title", "notificationTitle"},
    {"subtitle", "notificationSubtitle"},
    {"body", "notificationBody"},
    {"app", "app"},
    {"time-sensitive", "timeSensitive"},
    {"sender", "sender"},
    {"recipients", "recipients"},
    {"associated-content", "associatedContent"},
    {"name", "name"},
};

constexpr OptionSpec sendOptions[] = {
    {"notification", true}, {"title", true},      {"subtitle", true},
    {"body", true},         {"app", true},        {"time-sensitive", true},
    {"sender", true},       {"recipients", true}, {"associated-content", true},
    {"name", true},         {"json", false}};

int runSend(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "send", args, sendOptions, 0, 0);
    if (!arguments)
        return exitUsage;
    json::Json body = json::Json::object();
    for (const auto& [option, key] : sendFields) {
        if (auto value = arguments->value(option))
            body[std::string(key)] = *value;
    }
    auto answer = callDaemon(context, "send", "POST", "/v1/send", body);
    if (answer.exitCode)
        return *answer.exitCode;
    if (arguments->has("json"))
        printJson(context, recordForm(answer.json));
    else if (answer.json.is_object() && answer.json.value("outcome", "") == "setupTest")
        context.out << "The waiting setup test took this notification; see `ringwell setup-test "
                       "status`.\n";
    return exitSuccess;
}

constexpr OptionSpec ringOptions[] = {
    {"title", true}, {"subtitle", true}, {"body", true}, {"received-at", true}, {"json", false}};

int runRing(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "ring", args, ringOptions, 1, 1);
    if (!arguments)
        return exitUsage;
    json::Json body{{"channel", arguments->positionals[0]}};
    for (const char* field : {"title", "subtitle", "body"}) {
        if (auto value = arguments->value(field))
            body[field] = *value;
    }
    // The daemon checks the date and answers 400 with the reason.
    if (auto receivedAt = arguments->value("received-at"))
        body["receivedAt"] = *receivedAt;
    auto answer = callDaemon(context, "ring", "POST", "/v1/ring", body);
    if (answer.exitCode)
        return *answer.exitCode;
    if (arguments->has("json"))
        printJson(context, recordForm(answer.json));
    return exitSuccess;
}

int runStopAll(std::span<const std::string> args, CommandContext& context) {
    if (!parseCommand(context, "stop-all", args, {}, 0, 0))
        return exitUsage;
    auto answer = callDaemon(context, "stop-all", "POST", "/v1/stop-all");
    return answer.exitCode.value_or(exitSuccess);
}

std::string alarmLine(const json::Json& alarm) {
    const json::Json& configuration = alarm["configuration"];
    std::string title = configuration["presentation"]["alert"]["title"].get<std::string>();
    std::string line =
        idStart(alarm["id"].get<std::string>()) + "  " + alarm["state"].get<std::string>();
    if (alarm.contains("fireDate"))
        line +=
            (alarm["state"] == "alerting" ? " since " : " until ") + localTime(alarm["fireDate"]);
    line += "  " + title;
    const json::Json& sound = configuration["sound"];
    line += "  (" + (sound.contains("named") ? sound["named"].get<std::string>() : "default tone") +
            ")";
    return line;
}

constexpr OptionSpec jsonOnly[] = {{"json", false}};

int runAlarms(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "alarms", args, jsonOnly, 0, 0);
    if (!arguments)
        return exitUsage;
    auto answer = callDaemon(context, "alarms", "GET", "/v1/alarms");
    if (answer.exitCode)
        return *answer.exitCode;
    if (arguments->has("json")) {
        printJson(context, answer.json);
        return exitSuccess;
    }
    if (answer.json.empty())
        context.out << "No alarms.\n";
    for (const auto& alarm : answer.json)
        context.out << alarmLine(alarm) << '\n';
    return exitSuccess;
}

int runAlarmAction(std::span<const std::string> args, CommandContext& context,
                   std::string_view action, std::span<const OptionSpec> options) {
    std::string command = "alarm " + std::string(action);
    auto arguments = parseCommand(context, command, args, options, 1, 1);
    if (!arguments)
        return exitUsage;
    const std::string& alarm = arguments->positionals[0];
    json::Json body = nullptr;
    auto followUps = arguments->allValues("follow-up");
    if (!followUps.empty()) {
        for (const auto& followUp : followUps) {
            if (!Uuid::parse(followUp))
                return usageError(context, command, "\"" + followUp + "\" is not an alarm ID");
        }
        body = json::Json{{"followUpIDs", followUps}};
    }
    auto answer = callDaemon(
        context, command, "POST",
        "/v1/alarms/" + PercentEncoding::encode(alarm) + "/" + std::string(action), body);
    return answer.exitCode.value_or(exitSuccess);
}

constexpr OptionSpec stopOptions[] = {{"follow-up", true}};

int runAlarmStop(std::span<const std::string> args, CommandContext& context) {
    return runAlarmAction(args, context, "stop", stopOptions);
}
int runAlarmPause(std::span<const std::string> args, CommandContext& context) {
    return runAlarmAction(args, context, "pause", {});
}
int runAlarmResume(std::span<const std::string> args, CommandContext& context) {
    return runAlarmAction(args, context, "resume", {});
}
int runAlarmSnooze(std::span<const std::string> args, CommandContext& context) {
    return runAlarmAction(args, context, "snooze", {});
}

std::string permissionLabel(const json::Json& state) {
    if (state == "notDetermined")
        return "not requested";
    if (state == "authorized")
        return "allowed";
    if (state == "unreachable")
        return "no notification server is reachable (notices go to the log)";
    return state.is_string() ? state.get<std::string>() : "unknown";
}

int runPermission(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "permission", args, jsonOnly, 0, 2);
    if (!arguments)
        return exitUsage;
    const auto& words = arguments->positionals;
    DaemonAnswer answer;
    if (words.empty()) {
        answer = callDaemon(context, "permission", "GET", "/v1/permissions");
    } else {
        if (words.size() != 2 || words[0] != "alarms" ||
            (words[1] != "allow" && words[1] != "deny"))
            return usageError(context, "permission", "expected 'alarms allow' or 'alarms deny'");
        answer = callDaemon(context, "permission", "PUT", "/v1/permissions/alarms",
                            json::Json{{"state", words[1] == "allow" ? "authorized" : "denied"}});
    }
    if (answer.exitCode)
        return *answer.exitCode;
    if (arguments->has("json")) {
        printJson(context, answer.json);
    } else {
        context.out << "Alarms: " << permissionLabel(answer.json["alarms"]) << '\n'
                    << "Notifications: " << permissionLabel(answer.json["notifications"]) << '\n';
    }
    return exitSuccess;
}

} // namespace

const Command sendCommand{"send", "Forward one notification to Ringwell (the Send intent)",
                          R"(Usage: ringwell send [options]

Forwards one notification, as an automation does: it is recorded in the
history and rings the first matching channel. Every field is optional.

Options:
  --notification TEXT        the whole notification text (title, line break,
                             body)
  --title TEXT               its title
  --subtitle TEXT            its subtitle
  --body TEXT                its body
  --app TEXT                 the app that posted it
  --time-sensitive TEXT      "yes", "true" or "1" when time-sensitive
  --sender TEXT              its sender
  --recipients TEXT          its recipients
  --associated-content TEXT  associated content
  --name TEXT                a name (used as the sender when there is none)
  --json                     print the recorded event

Otherwise prints nothing, or one line when a waiting setup test took the
notification instead of the channels. Exit status: 0 recorded (whatever the
outcome), 2 usage error, 3 the daemon is not running.
)",
                          runSend};

const Command ringCommand{"ring", "Ring a channel now (the Ring Channel intent)",
                          R"(Usage: ringwell ring CHANNEL [options]

Rings a channel directly. CHANNEL is a channel ID or a name (or part of one)
that identifies one channel.

Options:
  --title TEXT           the alarm's notification title
  --subtitle TEXT        its subtitle
  --body TEXT            its body
  --received-at ISO8601  when the notification arrived (default: now)
  --json                 print the recorded event

Exit status: 0 rung (or skipped because the channel is disabled), 1 the alarm
could not be scheduled or the channel does not exist, 2 usage error (a name
that several channels match included: the message lists their IDs), 3 the
daemon is not running.
)",
                          runRing};

const Command stopAllCommand{"stop-all", "Stop every Ringwell alarm",
                             "Usage: ringwell stop-all\n\nStops every ringing and scheduled "
                             "alarm of Ringwell.\n",
                             runStopAll};

const Command alarmsCommand{"alarms", "List the alarms counting down, paused or ringing",
                            R"(Usage: ringwell alarms [--json]

Lists every alarm the alarm service holds: the start of its ID (which the
alarm commands take), its state (countdown, paused, alerting), title and tone.
--json prints each alarm with its pre-alert and post-alert seconds,
presentation, tint, metadata and the IDs its stop cancels.
)",
                            runAlarms};

const Command alarmStopCommand{"alarm stop", "Stop an alarm (and its reminders)",
                               R"(Usage: ringwell alarm stop ALARM [--follow-up ID ...]

Stops the alarm. Without --follow-up, its own reminders are cancelled too, as
its Stop button does; with --follow-up only the given reminders (whole IDs)
are. ALARM is the start of the alarm's ID as `ringwell alarms` shows it, or
the whole ID; so for the other alarm commands.
)",
                               runAlarmStop};

const Command alarmPauseCommand{"alarm pause", "Pause an alarm's countdown",
                                "Usage: ringwell alarm pause ALARM\n", runAlarmPause};
const Command alarmResumeCommand{"alarm resume", "Resume a paused alarm",
                                 "Usage: ringwell alarm resume ALARM\n", runAlarmResume};
const Command alarmSnoozeCommand{"alarm snooze", "Snooze a ringing alarm",
                                 "Usage: ringwell alarm snooze ALARM\n\nSilences a ringing alarm "
                                 "whose channel allows snooze and rings it again later.\n",
                                 runAlarmSnooze};

const Command permissionCommand{"permission", "Show or answer the alarm permission",
                                R"(Usage: ringwell permission [alarms allow|deny] [--json]

Without arguments, shows whether Ringwell may schedule alarms and whether
desktop notifications reach you. "alarms allow" gives Ringwell permission to
ring alarms; "alarms deny" withdraws it.
)",
                                runPermission};

} // namespace ringwell::cli
