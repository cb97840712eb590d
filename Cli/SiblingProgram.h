#pragma once

#include "Cli/Command.h"

#include <span>
#include <string>
#include <string_view>

namespace ringwell::cli {

// Replaces this process with `program`, one of Ringwell's own executables
// (beside `ringwell` in the build tree, in libexec/ringwell when installed), run with `leading` and
// then `args` as its arguments. Work that needs heavy libraries (the daemon's audio and D-Bus, the
// rule tools' ICU) lives in such programs so that ordinary commands start without loading them.
// Returns only on failure, after reporting it as "ringwell COMMAND: ...".
int execSibling(CommandContext& context, std::string_view command, std::string_view program,
                std::span<const std::string> leading, std::span<const std::string> args);

} // namespace ringwell::cli
