#include "Platform/SettingsFile.h"

#include "Core/Json.h"
#include "Model/AtomicFile.h"
#include "Model/XdgPaths.h"
#include "Platform/JsonFile.h"

#include <algorithm>

namespace ringwell {
namespace {

json::Json settingsFromJson(const json::Json& value) {
    return json::requireObject(value, "settings");
}

} // namespace

SettingsFile::SettingsFile(std::filesystem::path file, Logger& logger)
    : file_(std::move(file)), logger_(logger) {
    AtomicFile::removeLeftovers(file_);
    auto loaded =
        JsonFile::loadOrQuarantine(file_, settingsFromJson, [this](const std::string& message) {
            logger_.log(LogLevel::error, logCategory, "The settings file " + message);
        });
    if (loaded)
        values_ = std::move(*loaded);
}

std::optional<std::filesystem::path> SettingsFile::defaultPath() {
    auto config = XdgPaths::configHome();
    if (!config)
        return std::nullopt;
    return *config / "ringwell" / fileName;
}

std::optional<json::Json> SettingsFile::value(std::string_view key) const {
    const json::Json* found = json::member(values_, key);
    if (!found)
        return std::nullopt;
    return *found;
}

SettingsFile::~SettingsFile() {
    if (unwritten_)
        write();
}

void SettingsFile::set(std::string_view key, json::Json value) {
    const json::Json* existing = json::member(values_, key);
    if (existing && *existing == value)
        return;
    values_[std::string(key)] = std::move(value);
    const bool behind = scheduleWrite_ &&
                        std::find(behindKeys_.begin(), behindKeys_.end(), key) != behindKeys_.end();
    if (!behind) {
        write();
        return;
    }
    if (unwritten_)
        return; // the write already scheduled takes this change too
    unwritten_ = true;
    std::weak_ptr<SettingsFile*> self = self_;
    scheduleWrite_([self] {
        if (auto alive = self.lock(); alive && (*alive)->unwritten_)
            (*alive)->write();
    });
}

void SettingsFile::writeBehind(std::vector<std::string> keys, WriteScheduler schedule) {
    behindKeys_ = std::move(keys);
    scheduleWrite_ = std::move(schedule);
}

void SettingsFile::write() {
    unwritten_ = false;
    auto written = JsonFile::write(file_, values_);
    if (!written)
        logger_.log(LogLevel::error, logCategory,
                    "Saving the settings failed: " + written.error().message);
}

} // namespace ringwell
