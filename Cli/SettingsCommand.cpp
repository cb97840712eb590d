#include "Cli/SettingsCommand.h"

#include "Cli/CommandSupport.h"
#include "Cli/DaemonCall.h"
#include "Core/SoundSettings.h"

#include <ostream>

namespace ringwell::cli {
namespace {

constexpr OptionSpec jsonOnly[] = {{"json", false}};

std::string shown(const json::Json& value) {
    if (value.is_boolean())
        return value.get<bool>() ? "on" : "off";
    return value.dump();
}

// What the person typed, as the JSON value the daemon checks: on/off and the
// like as true/false, numbers (a trailing % allowed) as numbers, anything
// else as text, which the daemon refuses with what it expects.
json::Json typedValue(std::string text) {
    if (text == "on" || text == "true" || text == "yes")
        return true;
    if (text == "off" || text == "false" || text == "no")
        return false;
    if (!text.empty() && text.back() == '%')
        text.pop_back();
    auto parsed = json::parse(text);
    if (parsed && parsed.value().is_number())
        return parsed.value();
    return text;
}

int runSettings(std::span<const std::string> args, CommandContext& context) {
    auto arguments = parseCommand(context, "settings", args, jsonOnly, 0, 2);
    if (!arguments)
        return exitUsage;
    const auto& words = arguments->positionals;
    const bool asJson = arguments->has("json");
    if (words.empty()) {
        auto answer = callDaemon(context, "settings", "GET", "/v1/settings");
        if (answer.exitCode)
            return *answer.exitCode;
        json::Json settings = json::Json::object();
        for (auto key : SoundSettings::keys()) {
            if (answer.json.contains(key))
                settings[std::string(key)] = answer.json[std::string(key)];
        }
        if (asJson) {
            printJson(context, settings);
            return exitSuccess;
        }
        for (const auto& [key, value] : settings.items())
            context.out << key << ": " << shown(value) << '\n';
        return exitSuccess;
    }
    const std::string target = "/v1/settings/" + words[0];
    auto answer = words.size() == 1 ? callDaemon(context, "settings", "GET", target)
                                    : callDaemon(context, "settings", "PUT", target,
                                                 json::Json{{"value", typedValue(words[1])}});
    if (answer.exitCode)
        return *answer.exitCode;
    if (asJson)
        printJson(context, answer.json);
    else
        context.out << answer.json.value("key", "") << ": " << shown(answer.json["value"]) << '\n';
    return exitSuccess;
}

} // namespace

const Command settingsCommand{"settings", "Show or change the sound settings",
                              R"(Usage: ringwell settings [KEY [VALUE]] [--json]

Without arguments, lists every setting; with KEY, shows that one; with KEY
and VALUE, changes it.

Settings:
  ringThroughMute  on or off (default on): while an alarm rings, the output it
                   plays on is unmuted and faded up to the alarm volume; when
                   the alarm stops or snoozes, the output's mute and volume go
                   back to what they were, unless you changed them meanwhile
  alarmVolume      10 to 100 (default 70): the volume, in percent, that the
                   output is raised to while an alarm rings (headphones: at
                   most 50); a louder output is never turned down
)",
                              runSettings};

} // namespace ringwell::cli
