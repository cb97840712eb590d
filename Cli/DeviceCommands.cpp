#include "Cli/DeviceCommands.h"

#include "Cli/CommandSupport.h"
#include "Cli/DaemonCall.h"
#include "Cli/TerminalText.h"
#include "Core/PercentEncoding.h"

#include <ostream>

namespace ringwell::cli {
namespace {

constexpr OptionSpec jsonOnly[] = {{"json", false}};

void printDevices(CommandContext& context, const json::Json& state) {
    const json::Json& devices = state.contains("devices") ? state["devices"] : json::Json();
    if (!devices.is_array() || devices.empty()) {
        context.out << "No devices; the LAN listener is off. Add one with `ringwell devices add "
                       "NAME`.\n";
        return;
    }
    context.out << "LAN listener: "
                << (state.value("listening", false)
                        ? state.value("url", "")
                        : "not listening (" + state.value("problem", "") + ")")
                << '\n';
    for (const auto& device : devices)
        context.out << "  " << device.value("name", "") << "  (added "
                    << localTime(device.value("addedAt", json::Json())) << ")\n";
}

void printNewDevice(CommandContext& context, const json::Json& device) {
    std::ostream& out = context.out;
    out << "Added \"" << device.value("name", "") << "\". Its token is shown only now:\n\n"
        << "  URL:    " << device.value("url", "") << '\n'
        << "  Header: Authorization: Bearer " << device.value("token", "") << "\n\n"
        << "The phone POSTs the Send's JSON ({\"app\": ..., \"notificationTitle\": ..., "
           "\"notificationBody\": ...}) to that URL with that header.\n";
    const std::string problem = device.value("problem", "");
    if (!problem.empty())
        out << "But the LAN listener is not listening: " << problem << '\n';
    if (device.value("url", "").rfind("http:", 0) == 0)
        out << "Without TLS (--lan-cert, --lan-key) the token crosses the network in clear.\n";
}

int runDevices(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "devices", args, jsonOnly, 0, 2);
    if (!arguments)
        return exitUsage;
    const auto& words = arguments->positionals;
    const std::string action = words.empty() ? "list" : words[0];
    if ((action == "add" || action == "remove") != (words.size() == 2))
        return usageError(context, "devices",
                          action == "list" ? "list takes no name" : action + " takes one NAME");
    DaemonAnswer answer;
    if (action == "list")
        answer = callDaemon(context, "devices", "GET", "/v1/devices");
    else if (action == "add")
        answer =
            callDaemon(context, "devices", "POST", "/v1/devices", json::Json{{"name", words[1]}});
    else if (action == "remove")
        answer = callDaemon(context, "devices", "DELETE",
                            "/v1/devices/" + PercentEncoding::encode(words[1]));
    else
        return usageError(context, "devices", "expected list, add or remove");
    if (answer.exitCode)
        return *answer.exitCode;
    if (arguments->has("json")) {
        if (action != "remove")
            printJson(context, answer.json);
        return exitSuccess;
    }
    if (action == "add")
        printNewDevice(context, answer.json);
    else if (action == "remove")
        context.out << "Removed \"" << words[1] << "\"; its token no longer works.\n";
    else
        printDevices(context, answer.json);
    return exitSuccess;
}

} // namespace

const Command devicesCommand{"devices", "Show, add or remove the phones that send over the network",
                             R"(Usage: ringwell devices [list | add NAME | remove NAME] [--json]

A phone's automation (an iPhone's "Get Contents of URL", an Android HTTP
request) can send notifications to Ringwell over the local network. Each
device has its own token; the listener (`ringwell serve --lan-port`, default
7384) is on only while there is a device.
  list         the devices and the address they send to
  add NAME     add a device; prints its URL and token (shown only this once;
               --json gives {"name", "token", "url"})
  remove NAME  revoke a device's token at once
)",
                             runDevices};

} // namespace ringwell::cli
