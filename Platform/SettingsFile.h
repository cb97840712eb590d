#pragma once

#include "Alarms/Logger.h"
#include "Alarms/UserDefaults.h"
#include "Core/Json.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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
// Keys given to writeBehind are the exception: a change of one waits for a
// write scheduled later (or for the next change of another key, or the
// object's end), so that a value set on every Send ("lastSendToRingwell")
// costs no flush to disk while the Send waits for its answer.
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

    ~SettingsFile() override;
    SettingsFile(const SettingsFile&) = delete;
    SettingsFile& operator=(const SettingsFile&) = delete;

    std::optional<json::Json> value(std::string_view key) const override;
    void set(std::string_view key, json::Json value) override;

    // Runs `write` later on the main thread (the daemon uses a timer); the
    // write does nothing once the object is gone.
    using WriteScheduler = std::function<void(std::function<void()> write)>;
    // From now on a change of one of `keys` asks `schedule` for one write
    // that every change made before it runs shares, instead of writing at once.
    void writeBehind(std::vector<std::string> keys, WriteScheduler schedule);

    const std::filesystem::path& path() const { return file_; }

private:
    void write();

    std::filesystem::path file_;
    Logger& logger_;
    json::Json values_ = json::Json::object();
    std::vector<std::string> behindKeys_;
    WriteScheduler scheduleWrite_;
    bool unwritten_ = false;
    // Lets a scheduled write that runs after the object is gone do nothing.
    std::shared_ptr<SettingsFile*> self_ = std::make_shared<SettingsFile*>(this);
};

} // namespace ringwell
