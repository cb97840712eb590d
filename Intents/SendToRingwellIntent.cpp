#include "Intents/SendToRingwellIntent.h"

#include "Alarms/NotificationDispatcher.h"
#include "Core/Json.h"

#include <cctype>
#include <optional>
#include <string>
#include <string_view>

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

// A key that names no parameter would drop what the sender meant to forward
// (a "title" lands nowhere), so it is refused, naming the parameters and the
// likely one ("title" for "notificationTitle").
std::optional<std::string> unknownKeyProblem(std::string_view key) {
    std::string known;
    std::optional<std::string_view> likely;
    for (const auto& parameter : SendToRingwellIntent::parameters) {
        if (parameter.property == key)
            return std::nullopt;
        known += (known.empty() ? "" : ", ") + std::string(parameter.property);
        const std::string_view property = parameter.property;
        constexpr std::string_view prefix = "notification";
        if (!key.empty() && key.size() + prefix.size() == property.size() &&
            property.starts_with(prefix) &&
            std::tolower(static_cast<unsigned char>(property[prefix.size()])) == key.front() &&
            property.substr(prefix.size() + 1) == key.substr(1))
            likely = property;
    }
    std::string problem = "unknown field \"" + std::string(key) + "\"";
    if (likely)
        problem += " (did you mean \"" + std::string(*likely) + "\"?)";
    return problem + "; the fields are " + known;
}

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
    for (const auto& [key, ignored] : value.items())
        if (auto problem = unknownKeyProblem(key))
            throw json::DecodeError(*problem);
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
