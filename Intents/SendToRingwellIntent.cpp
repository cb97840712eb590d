#include "Intents/SendToRingwellIntent.h"

#include "Alarms/NotificationDispatcher.h"
#include "Core/Json.h"

namespace ringwell {
namespace {

// The members in parameter order, so that the JSON forms follow the table.
using Member = std::optional<std::string> SendToRingwellIntent::*;
constexpr std::array<Member, 10> members = {
    &SendToRingwellIntent::notification,
    &SendToRingwellIntent::notificationTitle,
    &SendToRingwellIntent::notificationSubtitle,
    &SendToRingwellIntent::notificationBody,
    &SendToRingwellIntent::app,
    &SendToRingwellIntent::timeSensitive,
    &SendToRingwellIntent::sender,
    &SendToRingwellIntent::recipients,
    &SendToRingwellIntent::associatedContent,
    &SendToRingwellIntent::name,
};

} // namespace

ShortcutInputFields SendToRingwellIntent::fields() const {
    auto fields = ShortcutInputFields::fromShortcutInput(
        notification, notificationTitle, notificationSubtitle, notificationBody, app, timeSensitive,
        sender, recipients, associatedContent, name);
    if (device)
        fields.received.push_back({std::string(deviceLabel), *device});
    return fields;
}

Awaitable<FireEvent> SendToRingwellIntent::perform(AppContext& ctx) const {
    return NotificationDispatcher::handle(ctx, fields());
}

SendToRingwellIntent sendIntentFromJson(const json::Json& value) {
    json::requireObject(value, "send");
    SendToRingwellIntent intent;
    for (std::size_t i = 0; i < members.size(); ++i)
        intent.*members[i] =
            json::optionalString(value, SendToRingwellIntent::parameters[i].property);
    return intent;
}

json::Json toJson(const SendToRingwellIntent& intent) {
    json::Json out = json::Json::object();
    for (std::size_t i = 0; i < members.size(); ++i) {
        if (const auto& member = intent.*members[i])
            out[std::string(SendToRingwellIntent::parameters[i].property)] = *member;
    }
    return out;
}

} // namespace ringwell
