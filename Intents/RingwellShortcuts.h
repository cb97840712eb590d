#pragma once

#include "Core/JsonFwd.h"

#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// The three actions Ringwell offers to automations, with the phrases that
// start them, as data for the command line's help and the web app.
struct AppShortcut {
    std::string intent; // the intent's type name: "SendToRingwellIntent", ...
    // With "${applicationName}" replaced by "Ringwell"; "${channel}" stands
    // for the channel parameter.
    std::vector<std::string> phrases;
    std::string shortTitle;
    std::string systemImageName;

    bool operator==(const AppShortcut&) const = default;
};

namespace RingwellShortcuts {

inline constexpr std::string_view applicationName = "Ringwell";

// Send, Ring Channel, Stop All Alarms, in this order.
const std::vector<AppShortcut>& appShortcuts();

} // namespace RingwellShortcuts

// {"intent", "phrases": [...], "shortTitle", "systemImageName"}
json::Json toJson(const AppShortcut& shortcut);

} // namespace ringwell
