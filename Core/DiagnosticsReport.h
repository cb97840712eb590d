#pragma once

#include "Core/ChannelRule.h"
#include "Core/Date.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// The privacy-safe diagnostics report a person can share with support: how
// Ringwell is set up, how each channel is configured, and what happened to
// the most recent notifications. It never carries channel names, senders,
// keywords or notification text; app names are kept. The rendering is pure;
// gathering the fields is the app layer's job.
struct DiagnosticsReport {
    // One channel, deliberately without its name.
    struct ChannelInfo {
        bool isEnabled = true;
        std::string mode; // "immediate" or "countdown"
        ChannelRule rule;

        bool operator==(const ChannelInfo&) const = default;
    };

    // One activity-log event, deliberately without sender or text.
    struct EventInfo {
        Date date; // when it was received
        std::optional<std::string> app;
        std::string outcome;                       // the outcome's display label
        std::optional<std::int64_t> channelNumber; // 1-based position in `channels`
        bool isTest = false;
        std::optional<std::string> error;

        bool operator==(const EventInfo&) const = default;
    };

    // The rendering lists at most this many events, the newest ones.
    static constexpr std::size_t eventLimit = 30;

    std::string appVersion;
    std::string osVersion;
    std::string device;
    std::string alarmsPermission;
    std::string notificationsPermission;
    std::string lastSetupTest;
    std::optional<std::string> setupWarning;
    // Why the store's last save failed; none when its history is on disk.
    std::optional<std::string> saveError;
    std::vector<ChannelInfo> channels; // in the person's channel order
    std::vector<EventInfo> events;     // newest first, all of them
    std::vector<std::string> performanceReports;
    Date generatedAt;

    // The report as plain text: lines joined with "\n", no final line break,
    // dates in ISO 8601 UTC with whole seconds.
    std::string text() const;

    // A one-line summary of a rule that names its apps but only counts its
    // senders, keywords and invalid patterns: "apps: Mail, 2 senders, cooldown 300s".
    static std::string redacted(const ChannelRule& rule);

    // "Ringwell can't save its history: REASON", the one wording of a failed
    // save for the report, `ringwell status` and the web app's banner.
    static std::string saveProblem(std::string_view reason);

    bool operator==(const DiagnosticsReport&) const = default;
};

} // namespace ringwell
