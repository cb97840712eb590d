#include "Alarms/AlarmPlan.h"

#include "Core/AlertTitle.h"

#include <algorithm>
#include <limits>

namespace ringwell::AlarmPlan {
namespace {

constexpr std::string_view white = "#FFFFFF";

AlarmButton button(std::string_view text, std::string_view symbol) {
    return {std::string(text), std::string(white), std::string(symbol)};
}

// Seconds before the first alarm alerts. An immediate alarm still counts down
// one second, so that it goes through the same states as every other alarm.
std::int64_t baseSeconds(const Channel& channel) {
    return channel.mode == FiringMode::countdown ? channel.countdownSeconds : 1;
}

std::optional<double> postAlert(const Channel& channel) {
    if (!channel.snoozeEnabled)
        return std::nullopt;
    return static_cast<double>(channel.snoozeSeconds);
}

// base + interval × steps in 64-bit integers. The values come from the
// channel file, so absurd ones saturate instead of overflowing.
std::int64_t reminderSeconds(std::int64_t base, std::int64_t interval, std::int64_t steps) {
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
    std::int64_t product = 0;
    if (__builtin_mul_overflow(interval, steps, &product))
        product = (interval < 0) == (steps < 0) ? largest : smallest;
    std::int64_t sum = 0;
    if (__builtin_add_overflow(base, product, &sum))
        sum = product > 0 ? largest : smallest;
    return sum;
}

AlarmConfiguration configuration(const Channel& channel, const NotificationInfo& payload,
                                 std::string_view prefix, double preAlert, AlarmTone tone,
                                 StopRingwellAlarmIntent stopIntent) {
    std::string title = AlertTitle::make(channel.name, payload.title, payload.body,
                                         channel.showNotificationText, prefix);
    AlarmConfiguration result;
    result.countdownDuration = {preAlert, postAlert(channel)};
    result.attributes = {presentation(channel, std::move(title)), metadata(channel, payload),
                         channel.tintHex};
    result.stopIntent = std::move(stopIntent);
    result.sound = {AlarmTones::alertSoundName(tone)};
    return result;
}

} // namespace

std::int64_t followUpCount(const Channel& channel) {
    if (!channel.repeatEnabled)
        return 0;
    return std::clamp<std::int64_t>(channel.repeatCount, 0, followUpLimit);
}

AlarmPresentation presentation(const Channel& channel, std::string title) {
    AlarmPresentation result;
    result.alert.title = std::move(title);
    result.alert.stopButton = button("Stop", "stop.circle");
    if (channel.snoozeEnabled) {
        result.alert.secondaryButton = button("Snooze", "zzz");
        result.alert.secondaryButtonBehavior = SecondaryButtonBehavior::countdown;
    }
    result.countdown = {channel.name, button("Pause", "pause.fill")};
    result.paused = {"Paused", button("Resume", "play.fill")};
    return result;
}

RingwellAlarmMetadata metadata(const Channel& channel, const NotificationInfo& payload) {
    RingwellAlarmMetadata result{channel.id, channel.name, payload.app, {}, {}, {}};
    if (channel.showNotificationText) {
        result.title = payload.title;
        result.subtitle = payload.subtitle;
        result.body = payload.body;
    }
    return result;
}

AlarmConfiguration firstAlarm(const Channel& channel, const NotificationInfo& payload,
                              const Uuid& alarmID, const std::vector<Uuid>& followUpIDs) {
    return configuration(channel, payload, "", static_cast<double>(baseSeconds(channel)),
                         channel.sound, StopRingwellAlarmIntent::make(alarmID, followUpIDs));
}

AlarmConfiguration followUp(const Channel& channel, const NotificationInfo& payload,
                            std::size_t index, const std::vector<Uuid>& followUpIDs) {
    const auto steps = static_cast<std::int64_t>(index) + 1;
    const std::int64_t seconds =
        reminderSeconds(baseSeconds(channel), channel.repeatIntervalSeconds, steps);
    const std::vector<Uuid> later(followUpIDs.begin() + static_cast<std::ptrdiff_t>(index) + 1,
                                  followUpIDs.end());
    return configuration(channel, payload, reminderPrefix, static_cast<double>(seconds),
                         channel.followUpSound(),
                         StopRingwellAlarmIntent::make(followUpIDs.at(index), later));
}

} // namespace ringwell::AlarmPlan
