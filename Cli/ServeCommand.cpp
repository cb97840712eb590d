#include "Cli/ServeCommand.h"

#include "Cli/SiblingProgram.h"

#include "ServeUsage.h"

namespace ringwell::cli {
namespace {

// The daemon is its own executable, so that ordinary commands do not load the
// audio, D-Bus and journal libraries.
int runServe(std::span<const std::string> args, CommandContext& context) {
    return execSibling(context, "serve", "ringwell-daemon", {}, args);
}

} // namespace

const Command serveCommand{"serve", "Run the Ringwell daemon in the foreground", serveUsage,
                           runServe};

} // namespace ringwell::cli
