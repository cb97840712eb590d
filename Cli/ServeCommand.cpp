#include "Cli/ServeCommand.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <vector>

namespace ringwell::cli {
namespace {

// The daemon is its own executable, so that ordinary commands do not load the
// audio, D-Bus and journal libraries: beside this one in the build tree,
// in <prefix>/libexec/ringwell when installed.
std::filesystem::path daemonFor(const std::filesystem::path& self) {
    const auto installed = self.parent_path() / ".." / "libexec" / "ringwell" / "ringwell-daemon";
    std::error_code error;
    if (std::filesystem::is_regular_file(installed, error))
        return installed.lexically_normal();
    return self.parent_path() / "ringwell-daemon";
}

int runServe(std::span<const std::string> args, CommandContext& context) {
    std::error_code error;
    auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        context.err << "ringwell serve: cannot find the daemon: " << error.message() << '\n';
        return exitFailure;
    }
    std::string daemon = daemonFor(self).string();
    std::vector<char*> argv;
    argv.push_back(daemon.data());
    std::vector<std::string> copies(args.begin(), args.end());
    for (auto& arg : copies)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    context.out.flush();
    ::execv(daemon.c_str(), argv.data());
    context.err << "ringwell serve: cannot start " << daemon << ": " << std::strerror(errno)
                << '\n';
    return exitFailure;
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
