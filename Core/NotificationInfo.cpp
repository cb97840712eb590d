#include "Core/NotificationInfo.h"

#include "Core/Iso8601.h"
#include "Core/Json.h"
#include "Core/TextFolding.h"
#include "Core/Utf8.h"
#include "Core/Whitespace.h"

namespace ringwell {
namespace {

std::optional<std::string> unlessBlank(const std::optional<std::string>& text) {
    if (!text || text::isBlank(*text))
        return std::nullopt;
    return text;
}

std::string trimmedOrEmpty(const std::optional<std::string>& text) {
    return text ? text::prefixBytes(text::trimmed(*text), ShortcutInputFields::textLimit)
                : std::string();
}

// A value that fits stays as sent, white space included.
std::optional<std::string> bounded(const std::optional<std::string>& text) {
    if (!text || text->size() <= ShortcutInputFields::textLimit)
        return text;
    std::string trimmed = text::trimmed(*text);
    if (trimmed.size() <= ShortcutInputFields::textLimit)
        return text;
    return text::prefixBytes(trimmed, ShortcutInputFields::textLimit);
}

// Splits at the first line feed that stands alone as a character: a carriage
// return followed by a line feed is one character and does not split.
std::optional<std::pair<std::string, std::string>> splitAtFirstLineFeed(const std::string& text) {
    for (size_t position = text.find('\n'); position != std::string::npos;
         position = text.find('\n', position + 1)) {
        if (position > 0 && text[position - 1] == '\r')
            continue;
        return std::pair{text.substr(0, position), text.substr(position + 1)};
    }
    return std::nullopt;
}

} // namespace

std::string_view rawValue(CallKind kind) {
    return kind == CallKind::incoming ? "incoming" : "missed";
}

std::optional<CallKind> callKindFromRaw(std::string_view raw) {
    for (CallKind kind : allCallKinds) {
        if (rawValue(kind) == raw)
            return kind;
    }
    return std::nullopt;
}

json::Json toJson(const ReceivedField& field) {
    return json::Json{{"name", field.name}, {"value", field.value}};
}

ReceivedField receivedFieldFromJson(const json::Json& value) {
    json::requireObject(value, "received field");
    return {json::requireString(value, "name"), json::requireString(value, "value")};
}

const std::vector<std::string>& ShortcutInputFields::receivedLabels() {
    static const std::vector<std::string> labels = {
        "Notification", "Title",      "Subtitle",           "Body", "App", "Is Time Sensitive",
        "Sender",       "Recipients", "Associated Content", "Name"};
    return labels;
}

ShortcutInputFields ShortcutInputFields::fromShortcutInput(
    const Text& rawNotification, const Text& rawTitle, const Text& rawSubtitle, const Text& rawBody,
    const Text& rawApp, const Text& rawIsTimeSensitive, const Text& rawSender,
    const Text& rawRecipients, const Text& rawAssociatedContent, const Text& rawName) {
    const Text notification = bounded(rawNotification), title = bounded(rawTitle),
               subtitle = bounded(rawSubtitle), body = bounded(rawBody), app = bounded(rawApp),
               isTimeSensitive = bounded(rawIsTimeSensitive), sender = bounded(rawSender),
               recipients = bounded(rawRecipients),
               associatedContent = bounded(rawAssociatedContent), name = bounded(rawName);

    ShortcutInputFields fields;
    fields.app = unlessBlank(app);
    fields.sender = unlessBlank(sender);
    if (!fields.sender)
        fields.sender = unlessBlank(name);
    fields.title = unlessBlank(title);
    fields.subtitle = unlessBlank(subtitle);
    fields.body = unlessBlank(body);
    fields.timeSensitive = unlessBlank(isTimeSensitive);

    const Text* raw[] = {
        &notification, &title,      &subtitle,          &body, &app, &isTimeSensitive,
        &sender,       &recipients, &associatedContent, &name};
    const auto& labels = receivedLabels();
    for (size_t i = 0; i < labels.size(); ++i)
        fields.received.push_back({labels[i], raw[i]->value_or("")});

    // Automations that pass only the whole notification text still give a
    // title and a body: its first line and the rest.
    if (!fields.title && !fields.body && unlessBlank(notification)) {
        if (auto pieces = splitAtFirstLineFeed(*notification)) {
            fields.title = unlessBlank(pieces->first);
            fields.body = unlessBlank(pieces->second);
        } else {
            fields.title = notification;
        }
    }
    return fields;
}

NotificationInfo ShortcutInputFields::notification(Date receivedAt) const {
    NotificationInfo info;
    info.app = trimmedOrEmpty(app);
    info.sender = trimmedOrEmpty(sender);
    info.title = trimmedOrEmpty(title);
    info.subtitle = trimmedOrEmpty(subtitle);
    info.body = trimmedOrEmpty(body);
    info.date = receivedAt;
    info.isTimeSensitive = NotificationInfo::parseYesNo(timeSensitive);
    if (!received.empty())
        info.received = received;
    return info;
}

std::optional<CallKind> NotificationInfo::callKind() const {
    if (!text::equalsIgnoringCase(app, PhoneApp::name))
        return std::nullopt;
    return body.empty() ? CallKind::incoming : CallKind::missed;
}

NotificationInfo NotificationInfo::fromShortcutInput(const Text& app, const Text& sender,
                                                     const Text& title, const Text& subtitle,
                                                     const Text& body, const Text& date,
                                                     const Text& timeSensitive, Date now) {
    NotificationInfo info;
    info.app = trimmedOrEmpty(app);
    info.sender = trimmedOrEmpty(sender);
    info.title = trimmedOrEmpty(title);
    info.subtitle = trimmedOrEmpty(subtitle);
    info.body = trimmedOrEmpty(body);
    info.date = parseDate(date).value_or(now);
    info.isTimeSensitive = parseYesNo(timeSensitive);
    return info;
}

std::optional<Date> NotificationInfo::parseDate(const Text& text) {
    if (!text)
        return std::nullopt;
    return parseIso8601(*text);
}

bool NotificationInfo::parseYesNo(const Text& text) {
    std::string value = text::lowercased(text::trimmed(text.value_or("")));
    return value == "yes" || value == "true" || value == "1";
}

json::Json toJson(const NotificationInfo& notification) {
    json::Json out{{"app", notification.app},
                   {"sender", notification.sender},
                   {"title", notification.title},
                   {"subtitle", notification.subtitle},
                   {"body", notification.body},
                   {"date", json::dateValue(notification.date)},
                   {"isTimeSensitive", notification.isTimeSensitive}};
    if (notification.received) {
        json::Json fields = json::Json::array();
        for (const auto& field : *notification.received)
            fields.push_back(toJson(field));
        out["received"] = std::move(fields);
    }
    return out;
}

NotificationInfo notificationFromJson(const json::Json& value) {
    json::requireObject(value, "notification");
    NotificationInfo info;
    info.app = json::requireString(value, "app");
    info.sender = json::requireString(value, "sender");
    info.title = json::requireString(value, "title");
    info.subtitle = json::requireString(value, "subtitle");
    info.body = json::requireString(value, "body");
    info.date = json::requireDate(value, "date");
    info.isTimeSensitive = json::requireBool(value, "isTimeSensitive");
    if (const json::Json* fields = json::optionalArray(value, "received")) {
        info.received.emplace();
        for (const auto& field : *fields)
            info.received->push_back(receivedFieldFromJson(field));
    }
    return info;
}

} // namespace ringwell
