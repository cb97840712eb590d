#pragma once

#include "Core/JsonFwd.h"

#include <optional>
#include <string_view>

namespace ringwell {

// The app's small key-value settings ("lastSendToRingwell",
// "hasCompletedOnboarding", "lastSetupTestResult"). The daemon keeps them in
// $XDG_CONFIG_HOME/ringwell/settings.json (Platform/SettingsFile), rewritten
// crash-safely on every change; tests use an in-memory map. Main thread only.
// Writes never fail from the caller's point of view: a failed write is logged
// and the value stays in memory.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;
    virtual std::optional<json::Json> value(std::string_view key) const = 0;
    virtual void set(std::string_view key, json::Json value) = 0;
};

namespace DefaultsKey {
inline constexpr std::string_view lastSendToRingwell = "lastSendToRingwell";
inline constexpr std::string_view hasCompletedOnboarding = "hasCompletedOnboarding";
inline constexpr std::string_view lastSetupTestResult = "lastSetupTestResult";
// Whether the desktop's notifications are captured (on unless false), and
// the apps whose notifications are (every app when absent).
inline constexpr std::string_view captureEnabled = "captureEnabled";
inline constexpr std::string_view captureApps = "captureApps";
} // namespace DefaultsKey

} // namespace ringwell
