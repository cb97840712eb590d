#pragma once

#include "Alarms/Logger.h"
#include "Alarms/UserDefaults.h"
#include "Core/Json.h"

#include <filesystem>
#include <optional>
#include <string_view>

namespace ringwell {

// The user defaults kept in "$XDG_CONFIG_HOME/ringwell/settings.json" (by
// default ~/.config/ringwell/), one JSON object of key and value.
//
// The file is loaded when the object is created; a file that cannot be read
// or is not a JSON object is moved aside to "settings.corrupt.json", logged,
// and the settings start empty. Every change rewrites the whole file
// crash-safely (AtomicFile); the directory is created with mode 0700 and the
// file gets mode 0600. Setting a key to the value it has writes nothing. A
// failed write is logged and the value stays in memory.
//
// Main thread only. The logger must outlive the object.
class SettingsFile final : public UserDefaults {
public:
    static constexpr const char* fileName = "settings.json";
    static constexpr const char* logCategory = "Settings";

    SettingsFile(std::filesystem::path file, Logger& logger);

    // "$XDG_CONFIG_HOME/ringwell/settings.json", else under ~/.config; none
    // when neither gives an absolute path.
    static std::optional<std::filesystem::path> defaultPath();

    std::optional<json::Json> value(std::string_view key) const override;
    void set(std::string_view key, json::Json value) override;

    const std::filesystem::path& path() const { return file_; }

private:
    std::filesystem::path file_;
    Logger& logger_;
    json::Json values_ = json::Json::object();
};

} // namespace ringwell
