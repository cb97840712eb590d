#include "Cli/DaemonCall.h"

#include "Cli/DaemonClient.h"
#include "Core/Json.h"
#include "Daemon/RuntimePaths.h"

#include <iostream>

namespace ringwell::cli {

DaemonAnswer callDaemon(CommandContext& context, std::string_view command,
                        const std::string& method, const std::string& target,
                        const json::Json& body) {
    DaemonAnswer answer;
    DaemonClient client(socketPath());
    auto outcome = client.request(method, target, body.is_null() ? "" : json::encode(body));
    if (!outcome.reachable) {
        context.err << "Ringwell isn't running. Start it with `ringwell serve`.\n";
        answer.exitCode = exitUnreachable;
        return answer;
    }
    if (!outcome.reply) {
        context.err << "ringwell " << command << ": " << outcome.failure << '\n';
        answer.exitCode = exitFailure;
        return answer;
    }
    const DaemonReply& reply = *outcome.reply;
    answer.text = reply.body;
    if (reply.contentType.rfind("application/json", 0) == 0 && !reply.body.empty()) {
        auto parsed = json::parse(reply.body);
        if (parsed)
            answer.json = parsed.value();
    }
    if (reply.status >= 400) {
        std::string message = answer.json.is_object() && answer.json.contains("error") &&
                                      answer.json["error"].is_string()
                                  ? answer.json["error"].get<std::string>()
                                  : "the daemon answered " + std::to_string(reply.status);
        context.err << message << '\n';
        // The daemon says 400 when the input itself is wrong: a usage error.
        answer.exitCode = reply.status == 400 ? exitUsage : exitFailure;
    }
    return answer;
}

json::Json recordForm(json::Json event) {
    event.erase("label");
    event.erase("icon");
    return event;
}

void printJson(CommandContext& context, const json::Json& value) {
    context.out << json::encodePretty(value) << '\n';
}

} // namespace ringwell::cli
