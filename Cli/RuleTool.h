#pragma once

#include "Cli/Command.h"

#include <span>
#include <string>
#include <string_view>

// The rule commands' work, done locally without the daemon: `ringwell-rules`
// runs it, so that only these commands load ICU.
namespace ringwell::cli {

// The first argument `ringwell-rules` takes: which command to run.
inline constexpr std::string_view ruleExplainTool = "explain";
inline constexpr std::string_view ruleDescribeTool = "describe";
inline constexpr std::string_view templatesTool = "templates";

// Runs the tool named by args[0] with the remaining arguments; its exit status.
int runRuleTool(std::span<const std::string> args, CommandContext& context);

} // namespace ringwell::cli
