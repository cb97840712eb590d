#pragma once

#include "Cli/Arguments.h"
#include "Cli/Command.h"
#include "Core/Result.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace ringwell::cli {

// Parses a command's arguments and checks the number of positionals; on a
// problem reports the usage error and gives no value (the command then
// returns exitUsage).
std::optional<Arguments> parseCommand(CommandContext& context, std::string_view command,
                                      std::span<const std::string> args,
                                      std::span<const OptionSpec> options,
                                      std::size_t minPositionals, std::size_t maxPositionals);

// The whole file, or "cannot read PATH".
Result<std::string> readFile(const std::string& path);

} // namespace ringwell::cli
