#include "Cli/Arguments.h"

namespace ringwell::cli {

std::optional<std::string> Arguments::value(std::string_view name) const {
    auto found = values.find(name);
    if (found == values.end() || found->second.empty())
        return std::nullopt;
    return found->second.back();
}

std::vector<std::string> Arguments::allValues(std::string_view name) const {
    auto found = values.find(name);
    return found == values.end() ? std::vector<std::string>{} : found->second;
}

Result<Arguments> parseArguments(std::span<const std::string> args,
                                 std::span<const OptionSpec> options) {
    Arguments parsed;
    bool optionsEnded = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (optionsEnded || arg.size() < 3 || arg.compare(0, 2, "--") != 0) {
            if (arg == "--" && !optionsEnded) {
                optionsEnded = true;
                continue;
            }
            parsed.positionals.push_back(arg);
            continue;
        }
        std::string name = arg.substr(2);
        std::optional<std::string> inlineValue;
        if (auto equals = name.find('='); equals != std::string::npos) {
            inlineValue = name.substr(equals + 1);
            name.resize(equals);
        }
        const OptionSpec* option = nullptr;
        for (const auto& candidate : options) {
            if (candidate.name == name)
                option = &candidate;
        }
        if (!option)
            return Error{"unknown option --" + name};
        if (!option->takesValue) {
            if (inlineValue)
                return Error{"option --" + name + " takes no value"};
            parsed.flags.insert(name);
            continue;
        }
        if (inlineValue) {
            parsed.values[name].push_back(*inlineValue);
        } else if (i + 1 < args.size()) {
            parsed.values[name].push_back(args[++i]);
        } else {
            return Error{"option --" + name + " needs a value"};
        }
    }
    return parsed;
}

} // namespace ringwell::cli
