#pragma once

#include "Cli/Command.h"
#include "Core/Json.h"

#include <optional>
#include <string>
#include <string_view>

namespace ringwell::cli {

inline constexpr int exitUnreachable = 3;

// What a call to the daemon gave: the answer's JSON (null for an empty or
// non-JSON answer) and its raw text, or the exit code to end with. Failures
// are reported on standard error here: an unreachable daemon, an error answer
// (its message), a broken exchange.
struct DaemonAnswer {
    std::optional<int> exitCode; // set when the command must end now
    json::Json json;
    std::string text;
};

DaemonAnswer callDaemon(CommandContext& context, std::string_view command,
                        const std::string& method, const std::string& target,
                        const json::Json& body = nullptr);

// An API answer's event in the record's own JSON form, without the display
// label and icon the API adds.
json::Json recordForm(json::Json event);

// Prints JSON for --json output, indented.
void printJson(CommandContext& context, const json::Json& value);

} // namespace ringwell::cli
