#include "Cli/WatchCommands.h"

#include "Cli/CommandSupport.h"
#include "Cli/DaemonCall.h"
#include "Cli/TerminalText.h"
#include "Cli/WatchArguments.h"
#include "Core/PercentEncoding.h"

#include <ostream>

namespace ringwell::cli {
namespace {

constexpr OptionSpec options[] = {{"json", false}, {"every", true}, {"weekdays", true},
                                  {"from", true},  {"to", true},    {"ring", true}};

void printWatch(CommandContext& context, const json::Json& watch) {
    std::ostream& out = context.out;
    out << "  " << watch.value("app", "") << "  " << watch.value("summary", "");
    if (watch.contains("ring"))
        out << ", rings a channel";
    out << "\n    ";
    if (watch.value("isSilent", false))
        out << "SILENT since " << localTime(watch.value("silentSince", json::Json())) << " (told)";
    else if (watch.contains("lastHeard"))
        out << "last heard " << localTime(watch["lastHeard"]);
    else
        out << "not heard from since the watch began, "
            << localTime(watch.value("since", json::Json()));
    if (!watch.value("isSilent", false) && watch.contains("dueAt"))
        out << "; silent if nothing by " << localTime(watch["dueAt"]);
    out << '\n';
}

void printWatches(CommandContext& context, const json::Json& answer) {
    const json::Json& watches = answer.contains("watches") ? answer["watches"] : json::Json();
    if (answer.contains("captureSilentSince"))
        context.out << "Desktop capture stopped working after "
                    << localTime(answer["captureSilentSince"]) << ".\n";
    if (!watches.is_array() || watches.empty()) {
        context.out << "No watches. Add one with `ringwell watch add APP --every 3h`.\n";
        return;
    }
    for (const auto& watch : watches)
        printWatch(context, watch);
}

int runWatch(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "watch", args, options, 0, 2);
    if (!arguments)
        return exitUsage;
    const auto& words = arguments->positionals;
    const std::string action = words.empty() ? "list" : words[0];
    if (action != "list" && action != "add" && action != "remove")
        return usageError(context, "watch", "expected list, add or remove");
    if ((action == "add" || action == "remove") != (words.size() == 2))
        return usageError(context, "watch",
                          action == "list" ? "list takes no app" : action + " takes one APP");
    const bool adding = action == "add";
    for (const char* option : {"every", "weekdays", "from", "to", "ring"}) {
        if (!adding && arguments->value(option))
            return usageError(context, "watch", std::string("--") + option + " belongs to add");
    }
    DaemonAnswer answer;
    if (adding) {
        auto every = arguments->value("every");
        if (!every)
            return usageError(context, "watch", "add needs --every DURATION (like 3h)");
        auto body =
            watchBody(words[1], *every, arguments->value("weekdays"), arguments->value("from"),
                      arguments->value("to"), arguments->value("ring"));
        if (!body)
            return usageError(context, "watch", body.error().message);
        answer = callDaemon(context, "watch", "POST", "/v1/watches", body.value());
    } else if (action == "remove") {
        answer = callDaemon(context, "watch", "DELETE",
                            "/v1/watches/" + PercentEncoding::encode(words[1]));
    } else {
        answer = callDaemon(context, "watch", "GET", "/v1/watches");
    }
    if (answer.exitCode)
        return *answer.exitCode;
    if (arguments->has("json")) {
        if (action != "remove")
            printJson(context, answer.json);
        return exitSuccess;
    }
    if (adding) {
        context.out << "Watching " << answer.json.value("app", "") << ": "
                    << answer.json.value("summary", "");
        if (answer.json.contains("dueAt"))
            context.out << "; silent if nothing by " << localTime(answer.json["dueAt"]);
        context.out << ".\n";
    } else if (action == "remove") {
        context.out << "No longer watching " << words[1] << ".\n";
    } else {
        printWatches(context, answer.json);
    }
    return exitSuccess;
}

} // namespace

const Command watchCommand{"watch", "Watch that an app's notifications keep arriving",
                           R"(Usage: ringwell watch [list] [--json]
       ringwell watch add APP --every DURATION [--weekdays DAYS]
                          [--from HH:MM --to HH:MM] [--ring CHANNEL] [--json]
       ringwell watch remove APP

Forwarding can stop without a sound: a phone's automation switched off, a
bridge that lost its connection. A watch expects at least one notification
from APP every DURATION of watched time; when that much passes in silence,
Ringwell posts "No notifications from APP since TIME — is forwarding still
working?" once, and records a `silent` event. The next notification from APP
ends the silence.
  list        the watches: when each app was last heard from, and when its
              silence will be told
  add APP     watch APP (or replace its watch). APP "device:NAME" watches
              the LAN device NAME (`ringwell devices`), whatever app it sends
  remove APP  stop watching APP

Options of add:
  --every DURATION    90m, 3h, 1d (1 minute to 7 days)
  --weekdays DAYS     only these days count: mon,tue,... or weekdays, weekends
  --from HH:MM --to HH:MM
                      only these hours count (--to before --from runs past
                      midnight)
  --ring CHANNEL      ring that channel's alarm instead of posting the notice

When the desktop's capture stops working (the session bus went away, the
monitor was refused), the same notice is posted without any watch.
)",
                           runWatch};

} // namespace ringwell::cli
