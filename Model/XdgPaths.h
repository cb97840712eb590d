#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

// The per-user base directories of the XDG base directory rules, which every
// path of the daemon honours (the store, the alarm file, the settings file).
namespace ringwell::XdgPaths {

// The directory an XDG variable names: its value when that is an absolute
// path; otherwise `fallbackUnderHome` inside `home` when that is absolute;
// otherwise none. Null pointers stand for unset variables.
std::optional<std::filesystem::path> resolve(const char* value, const char* home,
                                             std::string_view fallbackUnderHome);

// $XDG_DATA_HOME, else ~/.local/share.
std::optional<std::filesystem::path> dataHome();
// $XDG_CONFIG_HOME, else ~/.config.
std::optional<std::filesystem::path> configHome();

} // namespace ringwell::XdgPaths
