#include "Alarms/EventRecord.h"

namespace ringwell::EventRecord {
namespace {

std::optional<std::string> unlessEmpty(const std::string& text) {
    if (text.empty())
        return std::nullopt;
    return text;
}

} // namespace

FireEvent make(const NotificationInfo& notification, FireOutcome outcome, Date firedAt) {
    FireEvent event;
    event.id = Uuid::random();
    event.followUpAlarmIDs = std::vector<Uuid>{};
    event.app = unlessEmpty(notification.app);
    event.sender = unlessEmpty(notification.sender);
    event.title = unlessEmpty(notification.title);
    event.subtitle = unlessEmpty(notification.subtitle);
    event.body = unlessEmpty(notification.body);
    event.isTimeSensitive = notification.isTimeSensitive;
    event.received = notification.received;
    event.receivedAt = notification.date;
    event.firedAt = firedAt;
    event.outcome = outcome;
    return event;
}

FireEvent make(const NotificationInfo& notification, FireOutcome outcome, Date firedAt,
               const Channel& channel) {
    FireEvent event = make(notification, outcome, firedAt);
    event.channelID = channel.id;
    event.channelName = channel.name;
    return event;
}

} // namespace ringwell::EventRecord
