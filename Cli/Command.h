#pragma once

#include <iosfwd>
#include <span>
#include <string>
#include <string_view>

namespace ringwell::cli {

// Exit codes shared by every command.
enum ExitCode : int {
    exitSuccess = 0,
    exitFailure = 1, // the action failed, or a rule did not match
    exitUsage = 2,   // bad arguments or bad input
};

struct CommandContext {
    std::ostream& out;
    std::ostream& err;
};

// One `ringwell` command: its words ("rule explain"), a one-line summary for
// the overview, its full help, and what it runs with the remaining arguments.
struct Command {
    std::string_view name;
    std::string_view summary;
    std::string_view help;
    int (*run)(std::span<const std::string> args, CommandContext& context);
};

// Writes "ringwell <command>: <message>" and the hint to see the help; returns exitUsage.
int usageError(CommandContext& context, std::string_view command, std::string_view message);

} // namespace ringwell::cli
