#pragma once

#include "Alarms/AppContext.h"
#include "Core/JsonFwd.h"
#include "Core/NotificationInfo.h"
#include "Model/FireEvent.h"
#include "Shared/Asio.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace ringwell {

// "Send to Ringwell": the action the person's notification automation runs,
// with up to ten texts mapped from the forwarded notification. Reached through
// `ringwell send` and the local API.
struct SendToRingwellIntent {
    static constexpr std::string_view title = "Send to Ringwell";
    static constexpr std::string_view parameterSummary = "Send notification to Ringwell";
    // The label of the received field that names a LAN device.
    static constexpr std::string_view deviceLabel = "Device";

    // Each parameter's property name (also its JSON key) and the title the
    // person sees; the titles double as the labels of the received fields.
    struct Parameter {
        std::string_view property;
        std::string_view title;
    };
    static constexpr std::array<Parameter, 10> parameters = {{
        {"notification", "Notification"},
        {"notificationTitle", "Title"},
        {"notificationSubtitle", "Subtitle"},
        {"notificationBody", "Body"},
        {"app", "App"},
        {"timeSensitive", "Is Time Sensitive"},
        {"sender", "Sender"},
        {"recipients", "Recipients"},
        {"associatedContent", "Associated Content"},
        {"name", "Name"},
    }};

    std::optional<std::string> notification;
    std::optional<std::string> notificationTitle;
    std::optional<std::string> notificationSubtitle;
    std::optional<std::string> notificationBody;
    std::optional<std::string> app;
    std::optional<std::string> timeSensitive;
    std::optional<std::string> sender;
    std::optional<std::string> recipients;
    std::optional<std::string> associatedContent;
    std::optional<std::string> name;
    // The LAN device the Send came from; not a parameter of the automation.
    // The history keeps it as the received field "Device".
    std::optional<std::string> device;

    // The raw input as the dispatcher receives it.
    ShortcutInputFields fields() const;

    // Hands the input to the dispatcher and returns the event it recorded. It
    // does not fail for an alarm that could not ring (the person gets a
    // notice instead). The intent is copied, so it need not outlive the
    // awaitable; `ctx` must.
    Awaitable<FireEvent> perform(AppContext& ctx) const;

    bool operator==(const SendToRingwellIntent&) const = default;
};

// An object whose keys are the property names, each optional (null reads as
// absent); any other value that is not a string, and any other key, throws
// json::DecodeError.
SendToRingwellIntent sendIntentFromJson(const json::Json& value);
// The present parameters under their property names.
json::Json toJson(const SendToRingwellIntent& intent);

} // namespace ringwell
