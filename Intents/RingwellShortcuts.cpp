#include "Intents/RingwellShortcuts.h"
#include "Core/Json.h"

namespace ringwell {
namespace {

std::string phrase(std::string_view pattern) {
    static constexpr std::string_view placeholder = "${applicationName}";
    std::string out(pattern);
    const std::string_view name = RingwellShortcuts::applicationName;
    for (auto at = out.find(placeholder); at != std::string::npos;
         at = out.find(placeholder, at + name.size()))
        out.replace(at, placeholder.size(), name);
    return out;
}

} // namespace

namespace RingwellShortcuts {

const std::vector<AppShortcut>& appShortcuts() {
    static const std::vector<AppShortcut> shortcuts = {
        {"SendToRingwellIntent",
         {phrase("Send notification to ${applicationName}")},
         "Send to Ringwell",
         "bell.and.waves.left.and.right"},
        {"RingChannelIntent",
         {phrase("Ring ${channel} in ${applicationName}"),
          phrase("Sound ${applicationName} ${channel}")},
         "Ring Channel",
         "alarm.waves.left.and.right"},
        {"StopAllAlarmsIntent",
         {phrase("Stop ${applicationName} alarms")},
         "Stop All Alarms",
         "stop.circle"},
    };
    return shortcuts;
}

} // namespace RingwellShortcuts

json::Json toJson(const AppShortcut& shortcut) {
    return json::Json{{"intent", shortcut.intent},
                      {"phrases", shortcut.phrases},
                      {"shortTitle", shortcut.shortTitle},
                      {"systemImageName", shortcut.systemImageName}};
}

} // namespace ringwell
