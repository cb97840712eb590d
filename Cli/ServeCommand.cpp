#include "Cli/ServeCommand.h"

#include "Cli/SiblingProgram.h"

namespace ringwell::cli {
namespace {

// The daemon is its own executable, so that ordinary commands do not load the
// audio, D-Bus and journal libraries.
int runServe(std::span<const std::string> args, CommandContext& context) {
    return execSibling(context, "serve", "ringwell-daemon", {}, args);
}

} // namespace

const Command serveCommand{"serve", "Run the Ringwell daemon in the foreground",
                           R"(Usage: ringwell serve [--port N | --no-web]

Runs Ringwell: it receives forwarded notifications, rings alarms, serves the
local API on $XDG_RUNTIME_DIR/ringwell/ringwell.sock and the web app on
http://127.0.0.1:PORT/ (see `ringwell open`). One daemon runs per user;
Ctrl-C or SIGTERM stops it cleanly. Logs go to the journal (or standard error).

Options:
  --port N    the web app's port (default 7383, or $RINGWELL_WEB_PORT; 0 picks one)
  --no-web    serve the local API only
)",
                           runServe};

} // namespace ringwell::cli
