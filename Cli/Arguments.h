#pragma once

#include "Core/Result.h"

#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell::cli {

// An option a command accepts: "--name VALUE" (or "--name=VALUE") when it
// takes a value, else a flag "--name".
struct OptionSpec {
    std::string_view name;
    bool takesValue = false;
};

// A command's arguments after parsing; "--" ends the options.
struct Arguments {
    std::vector<std::string> positionals;
    // Every value given for each option, in order; `value` reads the last one.
    std::map<std::string, std::vector<std::string>, std::less<>> values;
    std::set<std::string, std::less<>> flags;

    bool has(std::string_view flag) const { return flags.contains(flag); }
    std::optional<std::string> value(std::string_view name) const;
    std::vector<std::string> allValues(std::string_view name) const;
};

// Fails with a message naming the offending argument: an unknown option, or
// an option without its value.
Result<Arguments> parseArguments(std::span<const std::string> args,
                                 std::span<const OptionSpec> options);

} // namespace ringwell::cli
