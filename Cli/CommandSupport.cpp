#include "Cli/CommandSupport.h"

#include <fstream>
#include <ostream>
#include <sstream>

namespace ringwell::cli {

int usageError(CommandContext& context, std::string_view command, std::string_view message) {
    context.err << "ringwell " << command << ": " << message << "\n"
                << "Run 'ringwell " << command << " --help' for usage.\n";
    return exitUsage;
}

std::optional<Arguments> parseCommand(CommandContext& context, std::string_view command,
                                      std::span<const std::string> args,
                                      std::span<const OptionSpec> options,
                                      std::size_t minPositionals, std::size_t maxPositionals) {
    auto parsed = parseArguments(args, options);
    if (!parsed) {
        usageError(context, command, parsed.error().message);
        return std::nullopt;
    }
    const auto& positionals = parsed.value().positionals;
    if (positionals.size() > maxPositionals) {
        usageError(context, command, "unexpected argument " + positionals[maxPositionals]);
        return std::nullopt;
    }
    if (positionals.size() < minPositionals) {
        usageError(context, command, "missing argument");
        return std::nullopt;
    }
    return std::move(parsed).value();
}

Result<std::string> readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return Error{"cannot read " + path};
    std::ostringstream contents;
    contents << file.rdbuf();
    if (file.bad())
        return Error{"cannot read " + path};
    return contents.str();
}

} // namespace ringwell::cli
