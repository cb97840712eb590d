#pragma once

#include "Core/ChannelRule.h"
#include "Core/Date.h"
#include "Core/Escalation.h"
#include "Core/JsonFwd.h"
#include "Core/Uuid.h"
#include "Model/AlarmTone.h"
#include "Model/ChannelPalette.h"
#include "Model/FiringMode.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace ringwell {

// One user channel: a named, coloured entry of the store's ordered list with
// the rule that selects notifications and everything needed to ring for them.
// A plain value: copied, compared field by field (the whole rule included; the
// store relies on it to skip writes), identified by `id`.
//
// The member initialisers are the defaults of a decoded channel whose file
// leaves a key out; `make` gives the defaults of a channel created now.
struct Channel {
    Uuid id;
    std::string name;
    bool usesAutomaticName =
        false; // while true, the store keeps `name` = the rule's suggested name
    std::string tintHex{ChannelPalette::defaultTint};
    bool isEnabled = true;
    FiringMode mode = FiringMode::immediate;
    std::int64_t countdownSeconds = 30;
    bool snoozeEnabled = false;
    std::int64_t snoozeSeconds = 300;
    bool showNotificationText = true;
    bool repeatEnabled = false;
    std::int64_t repeatIntervalSeconds = 120;
    std::int64_t repeatCount = 3;
    AlarmTone sound = AlarmTone::system;
    std::optional<AlarmTone> reminderSound; // the follow-ups' tone; absent means `sound`
    ChannelRule rule;
    Date createdAt;
    // What happens while the alarm rings unanswered, in order; empty: nothing.
    std::vector<EscalationStep> escalation;

    // A new channel: a fresh id; the given name, or the rule's suggested name
    // with automatic naming on when no name is given; every other field at its
    // default. The store picks the tint from the palette.
    static Channel make(const std::optional<std::string>& name, ChannelRule rule,
                        std::string tintHex, Date now);

    // The tone of the follow-up alarms.
    AlarmTone followUpSound() const { return reminderSound.value_or(sound); }
    // "Immediate", "Countdown 1m 30s".
    std::string modeBadge() const { return ringwell::modeBadge(mode, countdownSeconds); }

    bool operator==(const Channel&) const = default;
};

// The keys in declaration order; `reminderSound` only when present,
// `escalation` only when it has steps.
json::Json toJson(const Channel& channel);
// `id` and `name` are required; every other key may be missing and takes the
// member default above, `createdAt` the moment `now` of decoding. A key with a
// value of the wrong type (null included) or an unknown `mode` throws
// json::DecodeError; an unknown tone reads as `system`. An absent or null
// `escalation` reads as no steps.
Channel channelFromJson(const json::Json& value, Date now);

} // namespace ringwell

// Consistent with equality: equal channels share their id.
template <> struct std::hash<ringwell::Channel> {
    std::size_t operator()(const ringwell::Channel& channel) const noexcept {
        return std::hash<ringwell::Uuid>()(channel.id);
    }
};
