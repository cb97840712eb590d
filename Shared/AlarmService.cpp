#include "Shared/AlarmService.h"
#include "Core/Json.h"

namespace ringwell {
namespace {

template <typename Enum, size_t N>
std::optional<Enum> fromRaw(std::string_view raw, const Enum (&cases)[N]) {
    for (Enum value : cases) {
        if (rawValue(value) == raw)
            return value;
    }
    return std::nullopt;
}

constexpr AlarmAuthorizationState allAuthorizationStates[] = {
    AlarmAuthorizationState::notDetermined, AlarmAuthorizationState::denied,
    AlarmAuthorizationState::authorized};
constexpr AlarmState allAlarmStates[] = {AlarmState::countdown, AlarmState::alerting,
                                         AlarmState::paused};

void putOptional(json::Json& object, const char* key, const std::optional<AlarmButton>& button) {
    if (button)
        object[key] = toJson(*button);
}

std::optional<AlarmButton> optionalButton(const json::Json& object, const char* key) {
    const json::Json* value = json::member(object, key);
    if (!value)
        return std::nullopt;
    json::requireObject(*value, key);
    return AlarmButton{json::requireString(*value, "text"),
                       json::requireString(*value, "textColor"),
                       json::requireString(*value, "systemImageName")};
}

std::optional<double> optionalSeconds(const json::Json& object, const char* key) {
    const json::Json* value = json::member(object, key);
    if (!value)
        return std::nullopt;
    if (!value->is_number())
        throw json::DecodeError(std::string("\"") + key + "\": expected a number of seconds");
    return value->get<double>();
}

AlarmPresentation presentationFromJson(const json::Json& value) {
    json::requireObject(value, "presentation");
    AlarmPresentation presentation;
    const json::Json& alert = json::requireObject(value.at("alert"), "alert");
    presentation.alert.title = json::requireString(alert, "title");
    presentation.alert.stopButton = optionalButton(alert, "stopButton");
    presentation.alert.secondaryButton = optionalButton(alert, "secondaryButton");
    if (auto behavior = json::optionalString(alert, "secondaryButtonBehavior")) {
        if (*behavior != "countdown" && *behavior != "custom")
            throw json::DecodeError("\"secondaryButtonBehavior\": unknown value " + *behavior);
        presentation.alert.secondaryButtonBehavior = *behavior == "countdown"
                                                         ? SecondaryButtonBehavior::countdown
                                                         : SecondaryButtonBehavior::custom;
    }
    const json::Json& countdown = json::requireObject(value.at("countdown"), "countdown");
    presentation.countdown.title = json::requireString(countdown, "title");
    presentation.countdown.pauseButton = optionalButton(countdown, "pauseButton");
    const json::Json& paused = json::requireObject(value.at("paused"), "paused");
    presentation.paused.title = json::requireString(paused, "title");
    presentation.paused.resumeButton = optionalButton(paused, "resumeButton");
    return presentation;
}

} // namespace

std::string_view rawValue(AlarmAuthorizationState state) {
    switch (state) {
    case AlarmAuthorizationState::notDetermined:
        return "notDetermined";
    case AlarmAuthorizationState::denied:
        return "denied";
    case AlarmAuthorizationState::authorized:
        return "authorized";
    }
    return "notDetermined";
}

std::optional<AlarmAuthorizationState> authorizationStateFromRaw(std::string_view raw) {
    return fromRaw(raw, allAuthorizationStates);
}

std::string_view rawValue(AlarmState state) {
    switch (state) {
    case AlarmState::countdown:
        return "countdown";
    case AlarmState::alerting:
        return "alerting";
    case AlarmState::paused:
        return "paused";
    }
    return "countdown";
}

std::optional<AlarmState> alarmStateFromRaw(std::string_view raw) {
    return fromRaw(raw, allAlarmStates);
}

json::Json toJson(const AlarmButton& button) {
    return json::Json{{"text", button.text},
                      {"textColor", button.textColor},
                      {"systemImageName", button.systemImageName}};
}

json::Json toJson(const AlarmPresentation& presentation) {
    json::Json alert{{"title", presentation.alert.title}};
    putOptional(alert, "stopButton", presentation.alert.stopButton);
    putOptional(alert, "secondaryButton", presentation.alert.secondaryButton);
    if (presentation.alert.secondaryButtonBehavior) {
        alert["secondaryButtonBehavior"] =
            *presentation.alert.secondaryButtonBehavior == SecondaryButtonBehavior::countdown
                ? "countdown"
                : "custom";
    }
    json::Json countdown{{"title", presentation.countdown.title}};
    putOptional(countdown, "pauseButton", presentation.countdown.pauseButton);
    json::Json paused{{"title", presentation.paused.title}};
    putOptional(paused, "resumeButton", presentation.paused.resumeButton);
    return json::Json{{"alert", std::move(alert)},
                      {"countdown", std::move(countdown)},
                      {"paused", std::move(paused)}};
}

json::Json toJson(const AlarmConfiguration& configuration) {
    json::Json duration = json::Json::object();
    if (configuration.countdownDuration.preAlert)
        duration["preAlert"] = *configuration.countdownDuration.preAlert;
    if (configuration.countdownDuration.postAlert)
        duration["postAlert"] = *configuration.countdownDuration.postAlert;
    json::Json sound = json::Json::object();
    if (configuration.sound.named)
        sound["named"] = *configuration.sound.named;
    return json::Json{{"countdownDuration", std::move(duration)},
                      {"presentation", toJson(configuration.attributes.presentation)},
                      {"metadata", toJson(configuration.attributes.metadata)},
                      {"tintHex", configuration.attributes.tintHex},
                      {"stopIntent", toJson(configuration.stopIntent)},
                      {"sound", std::move(sound)}};
}

json::Json toJson(const Alarm& alarm) {
    json::Json out{{"id", alarm.id.toString()}, {"state", rawValue(alarm.state)}};
    if (alarm.fireDate)
        out["fireDate"] = json::dateValue(*alarm.fireDate);
    if (alarm.remainingSeconds)
        out["remainingSeconds"] = *alarm.remainingSeconds;
    out["configuration"] = toJson(alarm.configuration);
    return out;
}

AlarmConfiguration alarmConfigurationFromJson(const json::Json& value) {
    json::requireObject(value, "configuration");
    AlarmConfiguration configuration;
    const json::Json& duration =
        json::requireObject(value.at("countdownDuration"), "countdownDuration");
    configuration.countdownDuration.preAlert = optionalSeconds(duration, "preAlert");
    configuration.countdownDuration.postAlert = optionalSeconds(duration, "postAlert");
    configuration.attributes.presentation = presentationFromJson(value.at("presentation"));
    configuration.attributes.metadata = alarmMetadataFromJson(value.at("metadata"));
    configuration.attributes.tintHex = json::requireString(value, "tintHex");
    configuration.stopIntent = stopIntentFromJson(value.at("stopIntent"));
    const json::Json& sound = json::requireObject(value.at("sound"), "sound");
    configuration.sound.named = json::optionalString(sound, "named");
    return configuration;
}

Alarm alarmFromJson(const json::Json& value) {
    json::requireObject(value, "alarm");
    Alarm alarm;
    alarm.id = json::requireUuid(value, "id");
    auto state = alarmStateFromRaw(json::requireString(value, "state"));
    if (!state)
        throw json::DecodeError("\"state\": expected countdown, alerting or paused");
    alarm.state = *state;
    alarm.fireDate = json::optionalDate(value, "fireDate");
    alarm.remainingSeconds = optionalSeconds(value, "remainingSeconds");
    alarm.configuration = alarmConfigurationFromJson(value.at("configuration"));
    return alarm;
}

} // namespace ringwell
