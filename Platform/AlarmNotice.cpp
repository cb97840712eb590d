#include "Platform/AlarmNotice.h"

#include "Core/Whitespace.h"
#include "Shared/AlarmButtons.h"

#include <cstdio>

namespace ringwell::AlarmNotice {
namespace {

constexpr std::string_view prefix = "alarm-";
// A countdown this short is an immediate alarm's step before it rings.
constexpr double shortestShownCountdown = 5;

std::string label(const std::optional<AlarmButton>& button, std::string_view fallback) {
    return button && !text::isBlank(button->text) ? button->text : std::string(fallback);
}

NoticeAction action(AlarmButtonKey key, std::string label) {
    return {std::string(rawValue(key)), std::move(label)};
}

std::string ringsAt(const Alarm& alarm, const Calendar& calendar) {
    if (!alarm.fireDate)
        return "Counting down";
    auto parts = calendar.components(*alarm.fireDate);
    if (!parts)
        return "Counting down";
    char clock[8];
    std::snprintf(clock, sizeof clock, "%02d:%02d", parts->hour % 100, parts->minute % 100);
    return std::string("Rings at ") + clock;
}

bool isWaitingReminder(const Alarm& alarm, const std::vector<Alarm>& all) {
    const std::string id = alarm.id.toString();
    for (const auto& other : all) {
        for (const auto& followUp : other.configuration.stopIntent.followUpIDs) {
            if (other.id != alarm.id && followUp == id)
                return true;
        }
    }
    return false;
}

} // namespace

std::string identifier(const Uuid& alarm) {
    return std::string(prefix) + alarm.toString();
}

std::optional<Uuid> alarmOf(std::string_view identifier) {
    if (identifier.substr(0, prefix.size()) != prefix)
        return std::nullopt;
    return Uuid::parse(identifier.substr(prefix.size()));
}

bool isShown(const Alarm& alarm, const std::vector<Alarm>& all, const std::set<Uuid>& hasRung) {
    switch (alarm.state) {
    case AlarmState::alerting:
    case AlarmState::paused:
        return true;
    case AlarmState::countdown:
        return !hasRung.count(alarm.id) && !isWaitingReminder(alarm, all) &&
               alarm.configuration.countdownDuration.preAlert.value_or(0) >= shortestShownCountdown;
    }
    return false;
}

NoticeRequest make(const Alarm& alarm, const Calendar& calendar) {
    const auto& attributes = alarm.configuration.attributes;
    const auto& presentation = attributes.presentation;
    const auto& metadata = attributes.metadata;

    NoticeRequest request;
    request.identifier = identifier(alarm.id);
    request.kind = NoticeKind::alarm;
    request.threadIdentifier = threadIdentifier;
    request.title =
        text::isBlank(presentation.alert.title) ? metadata.channelName : presentation.alert.title;
    switch (alarm.state) {
    case AlarmState::countdown:
        request.body = ringsAt(alarm, calendar) + "\n";
        request.actions = {
            action(AlarmButtonKey::pause, label(presentation.countdown.pauseButton, "Pause")),
            action(AlarmButtonKey::stop, "Stop")};
        break;
    case AlarmState::paused:
        request.body = (text::isBlank(presentation.paused.title) ? std::string("Paused")
                                                                 : presentation.paused.title) +
                       "\n";
        request.actions = {
            action(AlarmButtonKey::resume, label(presentation.paused.resumeButton, "Resume")),
            action(AlarmButtonKey::stop, "Stop")};
        break;
    case AlarmState::alerting:
        request.actions = {
            action(AlarmButtonKey::stop, label(presentation.alert.stopButton, "Stop"))};
        if (presentation.alert.secondaryButton &&
            presentation.alert.secondaryButtonBehavior == SecondaryButtonBehavior::countdown &&
            alarm.configuration.countdownDuration.postAlert)
            request.actions.push_back(action(AlarmButtonKey::snooze,
                                             label(presentation.alert.secondaryButton, "Snooze")));
        break;
    }
    request.actions.push_back({openAction, openLabel});

    for (const std::string* part : {&metadata.title, &metadata.subtitle, &metadata.body}) {
        if (!text::isBlank(*part))
            request.body += text::trimmed(*part) + "\n";
    }
    request.body += "Channel " + metadata.channelName;
    if (!text::isBlank(metadata.app))
        request.body += ", from " + metadata.app;
    return request;
}

} // namespace ringwell::AlarmNotice
