#include "Model/XdgPaths.h"

#include <cstdlib>

namespace ringwell::XdgPaths {
namespace fs = std::filesystem;

std::optional<fs::path> resolve(const char* value, const char* home,
                                std::string_view fallbackUnderHome) {
    // Relative values are invalid by the base directory rules and must be
    // ignored, not resolved against whatever the working directory is.
    if (value && fs::path(value).is_absolute())
        return fs::path(value);
    if (home && fs::path(home).is_absolute())
        return fs::path(home) / fallbackUnderHome;
    return std::nullopt;
}

std::optional<fs::path> dataHome() {
    return resolve(std::getenv("XDG_DATA_HOME"), std::getenv("HOME"), ".local/share");
}

std::optional<fs::path> configHome() {
    return resolve(std::getenv("XDG_CONFIG_HOME"), std::getenv("HOME"), ".config");
}

} // namespace ringwell::XdgPaths
