#include "Cli/CaptureCommands.h"

#include "Cli/CommandSupport.h"
#include "Cli/DaemonCall.h"
#include "Cli/TerminalText.h"

#include <ostream>

namespace ringwell::cli {
namespace {

constexpr OptionSpec captureOptions[] = {{"json", false}, {"all", false}};
constexpr OptionSpec jsonOnly[] = {{"json", false}};

// One line per app seen since start, most recent first, with its count.
void printSeenApps(std::ostream& out, const json::Json& capture) {
    const json::Json* apps = json::member(capture, "seenApps");
    if (!apps || !apps->is_array())
        return;
    out << "Apps seen since start:" << (apps->empty() ? " none yet" : "") << '\n';
    for (const auto& app : *apps)
        out << "  " << oneLine(app.value("name", "")) << "  " << app.value("count", 0) << "  (last "
            << localTime(app.value("lastSeen", json::Json())) << ")\n";
}

// Each phone bridge seen, or that none was.
void printBridges(std::ostream& out, const json::Json& capture) {
    const json::Json* bridges = json::member(capture, "bridges");
    if (!bridges || !bridges->is_array())
        return;
    if (bridges->empty()) {
        out << "Phone bridge: none seen since start (KDE Connect or GSConnect)\n";
        return;
    }
    for (const auto& bridge : *bridges) {
        const std::string device = oneLine(bridge.value("device", ""));
        out << "Phone bridge: " << bridge.value("kind", "")
            << (device.empty() ? std::string(", device unnamed") : " from " + device) << "  (last "
            << localTime(bridge.value("lastSeen", json::Json())) << ")\n";
    }
}

void printCapture(CommandContext& context, const json::Json& capture) {
    std::ostream& out = context.out;
    const bool enabled = capture.value("enabled", false);
    const bool active = capture.value("active", false);
    out << "Capture: " << (!enabled ? "off" : active ? "on, active" : "on, not active");
    const std::string problem = capture.value("problem", "");
    if (enabled && !active && !problem.empty())
        out << " (" << problem << ")";
    out << '\n';
    const std::string server = capture.value("server", "");
    out << "Notification server: "
        << (server.empty() ? "unknown" : server + " " + capture.value("serverVersion", "")) << '\n';
    out << "Seen since start: " << capture.value("seen", 0) << " (handed on "
        << capture.value("forwarded", 0) << ")\n";
    out << "Apps taken: ";
    const json::Json& apps = capture.contains("apps") ? capture["apps"] : json::Json();
    if (!apps.is_array())
        out << "every app";
    else if (apps.empty())
        out << "none";
    for (std::size_t i = 0; apps.is_array() && i < apps.size(); ++i)
        out << (i ? ", " : "") << apps[i].get<std::string>();
    out << '\n';
    printSeenApps(out, capture);
    printBridges(out, capture);
}

int runCapture(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "capture", args, captureOptions, 0, SIZE_MAX);
    if (!arguments)
        return exitUsage;
    const auto& words = arguments->positionals;
    const std::string action = words.empty() ? "status" : words[0];
    const bool all = arguments->has("all");
    if (action != "apps" && (words.size() > 1 || all))
        return usageError(context, "capture", "only `apps` takes names or --all");
    DaemonAnswer answer;
    if (action == "status") {
        answer = callDaemon(context, "capture", "GET", "/v1/capture");
    } else if (action == "on" || action == "off") {
        answer = callDaemon(context, "capture", "PUT", "/v1/capture",
                            json::Json{{"enabled", action == "on"}});
    } else if (action == "apps") {
        if (all && words.size() > 1)
            return usageError(context, "capture", "give app names or --all, not both");
        if (!all && words.size() == 1)
            answer = callDaemon(context, "capture", "GET", "/v1/capture");
        else
            answer = callDaemon(context, "capture", "PUT", "/v1/capture",
                                json::Json{{"apps", all ? json::Json()
                                                        : json::Json(std::vector<std::string>(
                                                              words.begin() + 1, words.end()))}});
    } else {
        return usageError(context, "capture", "expected status, on, off or apps");
    }
    if (answer.exitCode)
        return *answer.exitCode;
    if (arguments->has("json"))
        printJson(context, answer.json);
    else
        printCapture(context, answer.json);
    return exitSuccess;
}

// "Alarm notices: shown by NAME (do-not-disturb on ...)", or where they go instead.
void printNotificationServer(CommandContext& context, const json::Json& notifications) {
    const json::Json* server = json::member(notifications, "server");
    if (!server || !server->is_object()) {
        // Just after the daemon starts (say by its socket), the server has
        // not been asked yet: that is not the same as no server.
        const json::Json* permission = json::member(notifications, "permission");
        if (permission && *permission == "unknown")
            context.out << "Alarm notices: not known yet (the notification server has not "
                           "answered)\n";
        else
            context.out << "Alarm notices: no notification server answers (they go to the log)\n";
        return;
    }
    context.out << "Alarm notices: shown by " << server->value("name", "unnamed");
    const json::Json* quiet = json::member(*server, "doNotDisturb");
    if (quiet && quiet->is_boolean())
        context.out << (quiet->get<bool>() ? " (do-not-disturb on: alarms ask to pass it)"
                                           : " (do-not-disturb off)");
    context.out << '\n';
}

int runStatus(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "status", args, jsonOnly, 0, 0);
    if (!arguments)
        return exitUsage;
    auto answer = callDaemon(context, "status", "GET", "/v1/status");
    if (answer.exitCode)
        return *answer.exitCode;
    if (arguments->has("json")) {
        printJson(context, answer.json);
        return exitSuccess;
    }
    const json::Json& status = answer.json;
    context.out << "Ringwell " << status.value("version", "") << " is running.\n"
                << "Channels: " << status.value("channels", 0)
                << ", events: " << status.value("events", 0)
                << ", alarms: " << status.value("alarms", 0) << '\n';
    const std::string web = status.value("webAddress", "");
    context.out << "Web app: " << (web.empty() ? "off" : web) << '\n';
    if (status.contains("saveProblem") && status["saveProblem"].is_string())
        context.out << status["saveProblem"].get<std::string>() << '\n';
    if (status.contains("sound")) {
        const json::Json& sound = status["sound"];
        const std::string server = sound.value("server", "");
        const std::string problem = sound.value("problem", "");
        // Unreachable without a reason: the daemon has not reached out yet.
        std::string line = server.empty() ? "audio server reachable" : server;
        if (!sound.value("reachable", false))
            line = problem.empty() ? "not checked yet"
                                   : "none (" + problem + "); alarms alert without sound";
        context.out << "Sound: " << line << '\n';
    }
    if (status.contains("notifications"))
        printNotificationServer(context, status["notifications"]);
    if (status.contains("capture"))
        printCapture(context, status["capture"]);
    return exitSuccess;
}

} // namespace

const Command captureCommand{
    "capture", "Show or change the capture of desktop notifications",
    R"(Usage: ringwell capture [status | on | off | apps [NAME... | --all]] [--json]

Ringwell captures the notifications shown on this desktop (and those a phone
bridge such as KDE Connect or GSConnect mirrors) and handles each like
`ringwell send`.
  status        whether capture is on and active, the notification server,
                how many notifications it saw since the daemon started, the
                apps they came from (with a count each, most recent first) and
                the phone bridges seen
  on, off       turn capture on or off (remembered)
  apps          the apps whose notifications are taken
  apps NAME...  take only these apps' notifications (names ignore case)
  apps --all    take every app's notifications (the default)
)",
    runCapture};

const Command statusCommand{"status", "Show whether the daemon runs and captures",
                            R"(Usage: ringwell status [--json]

The daemon's version, its channels, events and alarms, the web app's address,
the desktop's notification server (and whether it is in do-not-disturb, where
the server tells), the audio server alarms ring through (or why there is no
sound) and the capture of desktop notifications; says so when the daemon cannot
save its history.
)",
                            runStatus};

} // namespace ringwell::cli
