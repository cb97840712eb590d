#include "Cli/OpenCommand.h"

#include "Cli/CommandSupport.h"
#include "Cli/DaemonCall.h"

#include <spawn.h>
#include <sys/wait.h>

#include <iostream>

extern char** environ;

namespace ringwell::cli {
namespace {

constexpr OptionSpec openOptions[] = {{"print", false}};

int runOpen(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "open", args, openOptions, 0, 0);
    if (!arguments)
        return exitUsage;
    auto answer = callDaemon(context, "open", "GET", "/v1/status");
    if (answer.exitCode)
        return *answer.exitCode;
    std::string address = answer.json.value("webAddress", "");
    if (address.empty()) {
        context.err << "The web app is off (the daemon runs with --no-web).\n";
        return exitFailure;
    }
    context.out << address << '\n';
    if (arguments->has("print"))
        return exitSuccess;
    context.out.flush();
    std::string program = "xdg-open";
    char* argv[] = {program.data(), address.data(), nullptr};
    pid_t child = 0;
    if (::posix_spawnp(&child, "xdg-open", nullptr, nullptr, argv, environ) != 0) {
        context.err << "Cannot run xdg-open; open the address above in a browser.\n";
        return exitFailure;
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        context.err << "xdg-open could not open a browser; open the address above yourself.\n";
        return exitFailure;
    }
    return exitSuccess;
}

} // namespace

const Command openCommand{"open", "Open the web app in the browser",
                          R"(Usage: ringwell open [--print]

Opens Ringwell's web app (served by the daemon on 127.0.0.1) in the default
browser with xdg-open. The address carries the secret that lets the browser
in; --print only prints it.
)",
                          runOpen};

} // namespace ringwell::cli
