#include "Core/DiagnosticsReport.h"

#include "Core/Iso8601.h"
#include "Core/Joined.h"

#include <algorithm>

namespace ringwell {
namespace {

// "1 sender", "3 senders": a plain plural, "s" unless the number is exactly one.
std::string counted(std::size_t number, std::string_view noun) {
    std::string out = std::to_string(number) + " " + std::string(noun);
    if (number != 1)
        out += "s";
    return out;
}

std::string channelLine(std::size_t number, const DiagnosticsReport::ChannelInfo& channel) {
    return "  " + std::to_string(number) + ". " + (channel.isEnabled ? "on" : "off") + ", " +
           channel.mode + ", " + DiagnosticsReport::redacted(channel.rule);
}

std::string eventLine(const DiagnosticsReport::EventInfo& event) {
    std::string line = "  " + formatIso8601(event.date) + " ";
    if (event.isTest)
        line += "test";
    else
        line += event.app ? *event.app : "(no app)";
    line += " \u2192 " + event.outcome;
    if (event.channelNumber)
        line += " [channel " + std::to_string(*event.channelNumber) + "]";
    if (event.error)
        line += " error: " + *event.error;
    return line;
}

} // namespace

std::string DiagnosticsReport::saveProblem(std::string_view reason) {
    return "Ringwell can't save its history: " + std::string(reason);
}

std::string DiagnosticsReport::text() const {
    std::vector<std::string> lines;
    lines.push_back("Ringwell diagnostics");
    lines.push_back("Generated: " + formatIso8601(generatedAt));
    lines.push_back("");
    lines.push_back("App: " + appVersion);
    lines.push_back("System: " + osVersion);
    lines.push_back("Device: " + device);
    lines.push_back("Alarms permission: " + alarmsPermission);
    lines.push_back("Notifications permission: " + notificationsPermission);
    lines.push_back("Last setup test: " + lastSetupTest);
    lines.push_back("Setup warning: " + setupWarning.value_or("none"));
    if (saveError)
        lines.push_back(saveProblem(*saveError));
    lines.push_back("");

    lines.push_back("Channels (" + std::to_string(channels.size()) + "):");
    for (std::size_t i = 0; i < channels.size(); ++i)
        lines.push_back(channelLine(i + 1, channels[i]));
    lines.push_back("");

    const std::size_t shown = std::min(eventLimit, events.size());
    lines.push_back("Recent events (" + std::to_string(shown) + " of " +
                    std::to_string(events.size()) + "):");
    for (std::size_t i = 0; i < shown; ++i)
        lines.push_back(eventLine(events[i]));
    lines.push_back("");

    lines.push_back("Crash and hang reports (" + std::to_string(performanceReports.size()) + "):");
    if (performanceReports.empty())
        lines.push_back("  none");
    for (const auto& report : performanceReports)
        lines.push_back("  " + report);

    return text::joined(lines, "\n");
}

std::string DiagnosticsReport::redacted(const ChannelRule& rule) {
    std::vector<std::string> parts;
    parts.push_back(rule.apps.empty() ? "any app" : "apps: " + text::joined(rule.apps, ", "));
    if (!rule.senders.empty())
        parts.push_back(counted(rule.senders.size(), "sender"));
    if (!rule.keywords.empty())
        parts.push_back(counted(rule.keywords.size(), "keyword"));
    if (rule.usesRegex)
        parts.push_back("regex");
    if (auto invalid = rule.invalidPatterns(); !invalid.empty())
        parts.push_back(counted(invalid.size(), "invalid pattern"));
    if (rule.calls != ChannelRule::CallFilter::any)
        parts.push_back(std::string(rawValue(rule.calls)) + " calls");
    if (rule.cooldownSeconds >= 1)
        parts.push_back("cooldown " + std::to_string(rule.cooldownSeconds) + "s");
    if (rule.activeHours)
        parts.push_back("active " + rule.activeHours->summary());
    if (rule.frequency)
        parts.push_back(rule.frequency->summary());
    return text::joined(parts, ", ");
}

} // namespace ringwell
