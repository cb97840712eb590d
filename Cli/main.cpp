#include "Cli/ActivityCommands.h"
#include "Cli/AlarmCommands.h"
#include "Cli/CaptureCommands.h"
#include "Cli/ChannelCommands.h"
#include "Cli/Command.h"
#include "Cli/DeviceCommands.h"
#include "Cli/ManPage.h"
#include "Cli/OpenCommand.h"
#include "Cli/ReplayCommands.h"
#include "Cli/RuleCommands.h"
#include "Cli/ServeCommand.h"
#include "Cli/SettingsCommand.h"
#include "Cli/WatchCommands.h"

#include "Version.h"

#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace ringwell::cli {

namespace {

const Command* const commands[] = {
    &serveCommand,         &openCommand,          &sendCommand,         &ringCommand,
    &stopAllCommand,       &channelsCommand,      &channelShowCommand,  &channelAddCommand,
    &channelUpdateCommand, &channelDeleteCommand, &channelMoveCommand,  &previewCommand,
    &eventsCommand,        &whyCommand,           &traceCommand,        &clearHistoryCommand,
    &statsCommand,         &alarmsCommand,        &alarmStopCommand,    &alarmPauseCommand,
    &alarmResumeCommand,   &alarmSnoozeCommand,   &permissionCommand,   &setupTestCommand,
    &diagnosticsCommand,   &ruleExplainCommand,   &ruleDescribeCommand, &templatesCommand,
    &statusCommand,        &captureCommand,       &settingsCommand,     &devicesCommand,
    &watchCommand};

void printOverview(std::ostream& out) {
    out << "Usage: ringwell <command> [options]\n\n"
           "Ringwell turns the few notifications you must not miss into alarms that ring\n"
           "through silence and do-not-disturb.\n\n"
           "Commands:\n";
    for (const Command* command : commands) {
        std::string name(command->name);
        name.resize(17, ' ');
        out << "  " << name << command->summary << '\n';
    }
    out << "\nOptions:\n"
           "  -h, --help      show this help; 'ringwell <command> --help' shows a command's\n"
           "                  options\n"
           "  --version       show the version\n\n"
           "Exit status: 0 success, 1 the action failed (or the rule did not match),\n"
           "2 usage error or bad input, 3 the daemon is not running.\n";
}

bool wantsHelp(const std::vector<std::string>& args) {
    for (const auto& arg : args) {
        if (arg == "--")
            return false;
        if (arg == "--help" || arg == "-h")
            return true;
    }
    return false;
}

// Finds the command whose words start the argument list, longest name first.
const Command* findCommand(const std::vector<std::string>& args, size_t& consumed) {
    const Command* best = nullptr;
    for (const Command* command : commands) {
        std::vector<std::string> words;
        std::string_view rest = command->name;
        while (!rest.empty()) {
            auto space = rest.find(' ');
            words.emplace_back(rest.substr(0, space));
            rest = space == std::string_view::npos ? "" : rest.substr(space + 1);
        }
        if (words.size() > args.size())
            continue;
        if (std::equal(words.begin(), words.end(), args.begin()) &&
            (!best || words.size() > consumed)) {
            best = command;
            consumed = words.size();
        }
    }
    return best;
}

// The commands named "GROUP something" ("channel add", "alarm stop"), for a
// group word given alone, with --help, or with a word that is none of them.
std::vector<const Command*> groupCommands(std::string_view group) {
    std::vector<const Command*> found;
    for (const Command* command : commands) {
        const std::string_view name = command->name;
        if (name.size() > group.size() && name.starts_with(group) && name[group.size()] == ' ')
            found.push_back(command);
    }
    return found;
}

void printGroup(std::ostream& out, std::string_view group,
                const std::vector<const Command*>& members) {
    out << "Usage: ringwell " << group << " <command> [options]\n\nCommands:\n";
    for (const Command* command : members) {
        std::string name(command->name);
        name.resize(17, ' ');
        out << "  " << name << command->summary << '\n';
    }
    out << "\n'ringwell " << group << " <command> --help' shows a command's options.\n";
}

int runGroup(const std::vector<std::string>& args, const std::vector<const Command*>& members) {
    if (args.size() == 1 || args[1] == "--help" || args[1] == "-h") {
        printGroup(args.size() == 1 ? std::cerr : std::cout, args[0], members);
        return args.size() == 1 ? exitUsage : exitSuccess;
    }
    std::cerr << "ringwell " << args[0] << ": unknown command '" << args[1] << "'\n";
    printGroup(std::cerr, args[0], members);
    return exitUsage;
}

int run(const std::vector<std::string>& args) {
    CommandContext context{std::cout, std::cerr};
    // The manual page, written by the build from the help texts below.
    if (args.size() == 2 && args[0] == "help" && args[1] == "--man") {
        std::cout << manPage(commands, version::shortVersion);
        return exitSuccess;
    }
    if (args.empty() || args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
        printOverview(std::cout);
        return args.empty() ? exitUsage : exitSuccess;
    }
    if (args[0] == "--version") {
        std::cout << "ringwell " << version::shortVersion << " (" << version::buildNumber << ")\n";
        return exitSuccess;
    }
    size_t consumed = 0;
    const Command* command = findCommand(args, consumed);
    if (!command) {
        if (auto members = groupCommands(args[0]); !members.empty())
            return runGroup(args, members);
        std::cerr << "ringwell: unknown command '" << args[0] << "'\n"
                  << "Run 'ringwell --help' for the list of commands.\n";
        return exitUsage;
    }
    std::vector<std::string> rest(args.begin() + static_cast<long>(consumed), args.end());
    if (wantsHelp(rest)) {
        std::cout << command->help;
        return exitSuccess;
    }
    return command->run(rest, context);
}

} // namespace
} // namespace ringwell::cli

int main(int argc, char** argv) {
    // Whatever escapes a command (a malformed answer, an exhausted machine)
    // ends with a message and the failure status, never with an abort.
    try {
        std::vector<std::string> args(argv + 1, argv + argc);
        return ringwell::cli::run(args);
    } catch (const std::exception& error) {
        std::cerr << "ringwell: " << error.what() << '\n';
    } catch (...) {
        std::cerr << "ringwell: unexpected failure\n";
    }
    return ringwell::cli::exitFailure;
}
