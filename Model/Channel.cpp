#include "Model/Channel.h"
#include "Core/Json.h"

#include <utility>

namespace ringwell {

Channel Channel::make(const std::optional<std::string>& name, ChannelRule rule, std::string tintHex,
                      Date now) {
    Channel channel;
    channel.id = Uuid::random();
    channel.usesAutomaticName = !name.has_value();
    channel.name = name ? *name : rule.suggestedName();
    channel.tintHex = std::move(tintHex);
    channel.rule = std::move(rule);
    channel.createdAt = now;
    return channel;
}

json::Json toJson(const Channel& channel) {
    json::Json out{{"id", channel.id.toString()},
                   {"name", channel.name},
                   {"usesAutomaticName", channel.usesAutomaticName},
                   {"tintHex", channel.tintHex},
                   {"isEnabled", channel.isEnabled},
                   {"mode", toJson(channel.mode)},
                   {"countdownSeconds", channel.countdownSeconds},
                   {"snoozeEnabled", channel.snoozeEnabled},
                   {"snoozeSeconds", channel.snoozeSeconds},
                   {"showNotificationText", channel.showNotificationText},
                   {"repeatEnabled", channel.repeatEnabled},
                   {"repeatIntervalSeconds", channel.repeatIntervalSeconds},
                   {"repeatCount", channel.repeatCount},
                   {"sound", toJson(channel.sound)}};
    if (channel.reminderSound)
        out["reminderSound"] = toJson(*channel.reminderSound);
    out["rule"] = toJson(channel.rule);
    out["createdAt"] = json::dateValue(channel.createdAt);
    if (!channel.escalation.empty())
        out["escalation"] = toJson(channel.escalation);
    return out;
}

Channel channelFromJson(const json::Json& value, Date now) {
    json::requireObject(value, "channel");
    Channel channel;
    channel.id = json::requireUuid(value, "id");
    channel.name = json::requireString(value, "name");
    auto read = [&](auto& field, auto reader, const char* key) {
        if (auto decoded = reader(value, key))
            field = *decoded;
    };
    read(channel.usesAutomaticName, json::optionalBool, "usesAutomaticName");
    read(channel.tintHex, json::optionalString, "tintHex");
    read(channel.isEnabled, json::optionalBool, "isEnabled");
    if (const auto* mode = json::member(value, "mode"))
        channel.mode = firingModeFromJson(*mode, "mode");
    read(channel.countdownSeconds, json::optionalInt, "countdownSeconds");
    read(channel.snoozeEnabled, json::optionalBool, "snoozeEnabled");
    read(channel.snoozeSeconds, json::optionalInt, "snoozeSeconds");
    read(channel.showNotificationText, json::optionalBool, "showNotificationText");
    read(channel.repeatEnabled, json::optionalBool, "repeatEnabled");
    read(channel.repeatIntervalSeconds, json::optionalInt, "repeatIntervalSeconds");
    read(channel.repeatCount, json::optionalInt, "repeatCount");
    if (const auto* sound = json::member(value, "sound"))
        channel.sound = alarmToneFromJson(*sound, "sound");
    if (const auto* reminder = json::member(value, "reminderSound"))
        channel.reminderSound = alarmToneFromJson(*reminder, "reminderSound");
    if (const auto* rule = json::member(value, "rule"))
        channel.rule = ruleFromJson(*rule);
    channel.createdAt = json::optionalDate(value, "createdAt").value_or(now);
    channel.escalation = escalationFromJson(json::member(value, "escalation"));
    return channel;
}

} // namespace ringwell
