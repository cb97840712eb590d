#include "Core/SetupTest.h"

#include "Core/Json.h"
#include "Core/TextFolding.h"
#include "Core/Whitespace.h"

#include <algorithm>

namespace ringwell {
namespace {

using Field = SetupCheck::Field;
using Status = SetupCheck::Status;

constexpr std::string_view notificationLabel = "Notification";

// The value the automation passed for one field. Once the action reports the
// values it received, that report alone counts: a field missing from it is
// empty even when a direct value exists, because the direct values have
// already been through fallbacks (sender from Name, title from the
// notification text) that would hide a broken mapping.
std::string lookUp(const ShortcutInputFields& fields, std::string_view name,
                   const std::optional<std::string>& direct) {
    std::string value;
    if (!fields.received.empty()) {
        auto entry = std::find_if(fields.received.begin(), fields.received.end(),
                                  [&](const ReceivedField& field) { return field.name == name; });
        if (entry != fields.received.end())
            value = entry->value;
    } else if (direct) {
        value = *direct;
    }
    return text::trimmed(value);
}

// The captured notification's own text: its title on the first line, its text after.
// A piece that is missing gives no reference for its field, which is not the
// same as an empty reference.
struct NotificationText {
    std::optional<std::string> title;
    std::optional<std::string> text;
};

// Splits at the first line feed that is a character of its own, as the intake
// does: a carriage return followed by a line feed is one character.
NotificationText splitNotification(const std::string& value) {
    for (std::size_t position = value.find('\n'); position != std::string::npos;
         position = value.find('\n', position + 1)) {
        if (position > 0 && value[position - 1] == '\r')
            continue;
        return {text::trimmedHorizontal(value.substr(0, position)),
                text::trimmed(value.substr(position + 1))};
    }
    return {text::trimmedHorizontal(value), std::nullopt};
}

bool differs(const std::optional<std::string>& reference, const std::string& value) {
    return reference && !reference->empty() && *reference != value;
}

// The command line's option and the local API's JSON field that carry a
// field, as `ringwell send` and POST /v1/send name them.
std::string_view sendOption(Field field) {
    switch (field) {
    case Field::app:
        return "--app";
    case Field::sender:
        return "--sender";
    case Field::title:
        return "--title";
    case Field::subtitle:
        return "--subtitle";
    case Field::body:
        return "--body";
    case Field::timeSensitive:
        return "--time-sensitive";
    }
    return "--app";
}

std::string_view sendJsonField(Field field) {
    switch (field) {
    case Field::app:
        return "app";
    case Field::sender:
        return "sender";
    case Field::title:
        return "notificationTitle";
    case Field::subtitle:
        return "notificationSubtitle";
    case Field::body:
        return "notificationBody";
    case Field::timeSensitive:
        return "timeSensitive";
    }
    return "app";
}

std::string setAdvice(Field field) {
    return "Set " + std::string(label(field)) + " from the notification with " +
           std::string(sendOption(field)) + " or the JSON field \"" +
           std::string(sendJsonField(field)) + "\".";
}

std::string sameValueAdvice(Field field) {
    return "Has the same value as another field. " + setAdvice(field);
}

SetupCheck passed(Field field, const std::string& received) {
    return {field, Status::passed, received, std::nullopt};
}

SetupCheck with(Field field, Status status, const std::string& received, std::string hint) {
    return {field, status, received, std::move(hint)};
}

} // namespace

std::string_view rawValue(SetupCheck::Field field) {
    switch (field) {
    case Field::app:
        return "app";
    case Field::sender:
        return "sender";
    case Field::title:
        return "title";
    case Field::subtitle:
        return "subtitle";
    case Field::body:
        return "body";
    case Field::timeSensitive:
        return "timeSensitive";
    }
    return "app";
}

std::optional<SetupCheck::Field> setupFieldFromRaw(std::string_view raw) {
    for (Field field : allSetupFields) {
        if (rawValue(field) == raw)
            return field;
    }
    return std::nullopt;
}

std::string_view label(SetupCheck::Field field) {
    switch (field) {
    case Field::app:
        return "App";
    case Field::sender:
        return "Sender";
    case Field::title:
        return "Title";
    case Field::subtitle:
        return "Subtitle";
    case Field::body:
        return "Body";
    case Field::timeSensitive:
        return "Is Time Sensitive";
    }
    return "App";
}

std::string_view rawValue(SetupCheck::Status status) {
    switch (status) {
    case Status::passed:
        return "passed";
    case Status::failed:
        return "failed";
    case Status::unverifiable:
        return "unverifiable";
    }
    return "passed";
}

json::Json toJson(const SetupCheck& check) {
    json::Json out{{"field", rawValue(check.field)},
                   {"label", label(check.field)},
                   {"status", rawValue(check.status)},
                   {"received", check.received}};
    if (check.hint)
        out["hint"] = *check.hint;
    return out;
}

std::vector<SetupCheck> SetupTest::evaluate(const ShortcutInputFields& fields) const {
    const std::string app = lookUp(fields, label(Field::app), fields.app);
    const std::string title = lookUp(fields, label(Field::title), fields.title);
    const std::string subtitle = lookUp(fields, label(Field::subtitle), fields.subtitle);
    const std::string body = lookUp(fields, label(Field::body), fields.body);
    const std::string sender = lookUp(fields, label(Field::sender), fields.sender);
    const std::string timeSensitive =
        lookUp(fields, label(Field::timeSensitive), fields.timeSensitive);
    const NotificationText reference =
        splitNotification(lookUp(fields, notificationLabel, std::nullopt));

    std::vector<SetupCheck> checks;

    if (app.empty())
        checks.push_back(with(Field::app, Status::failed, app, setAdvice(Field::app)));
    else
        checks.push_back(passed(Field::app, app));

    if (title.empty()) {
        checks.push_back(with(Field::title, Status::failed, title, setAdvice(Field::title)));
    } else if (differs(reference.title, title)) {
        checks.push_back(with(Field::title, Status::failed, title,
                              "Doesn't match the notification's title (" + *reference.title +
                                  "). " + setAdvice(Field::title)));
    } else {
        checks.push_back(passed(Field::title, title));
    }

    if (subtitle.empty()) {
        checks.push_back(with(Field::subtitle, Status::unverifiable, subtitle,
                              "This notification had no subtitle."));
    } else if (subtitle == title || subtitle == body) {
        checks.push_back(
            with(Field::subtitle, Status::failed, subtitle, sameValueAdvice(Field::subtitle)));
    } else {
        checks.push_back(passed(Field::subtitle, subtitle));
    }

    // The notification's own text is consulted first: an empty body is only
    // unverifiable when the notification really had no text.
    if (differs(reference.text, body)) {
        checks.push_back(with(Field::body, Status::failed, body,
                              "Doesn't match the notification's text. " + setAdvice(Field::body)));
    } else if (body.empty()) {
        checks.push_back(
            with(Field::body, Status::unverifiable, body, "This notification had no text."));
    } else if (body == title || body == subtitle) {
        checks.push_back(with(Field::body, Status::failed, body, sameValueAdvice(Field::body)));
    } else {
        checks.push_back(passed(Field::body, body));
    }

    // Only the form is judged: either truth value shows a working mapping.
    static constexpr std::string_view truthValues[] = {"yes", "no", "true", "false", "1", "0"};
    const std::string lowered = text::lowercased(timeSensitive);
    if (std::find(std::begin(truthValues), std::end(truthValues), lowered) != std::end(truthValues))
        checks.push_back(passed(Field::timeSensitive, timeSensitive));
    else
        checks.push_back(with(Field::timeSensitive, Status::failed, timeSensitive,
                              setAdvice(Field::timeSensitive)));

    // The sender is compared with the body only: many apps rightly use the
    // sender's name as the title.
    if (sender.empty()) {
        checks.push_back(
            with(Field::sender, Status::unverifiable, sender, "This app didn't report a sender."));
    } else if (sender == body) {
        checks.push_back(
            with(Field::sender, Status::failed, sender, sameValueAdvice(Field::sender)));
    } else {
        checks.push_back(passed(Field::sender, sender));
    }

    return checks;
}

bool SetupTest::allPassed(const std::vector<SetupCheck>& checks) {
    return !checks.empty() && std::none_of(checks.begin(), checks.end(), [](const SetupCheck& c) {
        return c.status == Status::failed;
    });
}

namespace SetupDiagnostics {

std::optional<std::string> warning(const ShortcutInputFields& fields) {
    auto value = [](const std::optional<std::string>& direct) {
        return direct ? text::trimmed(*direct) : std::string();
    };
    const std::string app = value(fields.app);
    const bool nothing = app.empty() && value(fields.sender).empty() &&
                         value(fields.title).empty() && value(fields.subtitle).empty() &&
                         value(fields.body).empty();
    if (nothing)
        return "Your automation isn't passing any notification details. Map each field of the "
               "captured desktop notification to ringwell send's options or the JSON fields.";
    if (app.empty())
        return "Your automation isn't passing the app, so rules that name apps can't match. " +
               setAdvice(Field::app);
    return std::nullopt;
}

} // namespace SetupDiagnostics
} // namespace ringwell
