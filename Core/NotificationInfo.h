#pragma once

#include "Core/Date.h"
#include "Core/JsonFwd.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// The phone app's name as it arrives in a forwarded notification.
namespace PhoneApp {
inline constexpr std::string_view name = "Phone";
}

// A phone-call notification: ringing now, or missed.
enum class CallKind { incoming, missed };
inline constexpr CallKind allCallKinds[] = {CallKind::incoming, CallKind::missed};
std::string_view rawValue(CallKind kind);
std::optional<CallKind> callKindFromRaw(std::string_view raw);

// One raw value exactly as the automation passed it, under its label.
struct ReceivedField {
    std::string name;
    std::string value;
    bool operator==(const ReceivedField&) const = default;
};

json::Json toJson(const ReceivedField& field);
ReceivedField receivedFieldFromJson(const json::Json& value); // throws json::DecodeError

struct NotificationInfo;

// The raw input of one Send: blank values are absent, surrounding white space
// kept. A value longer than `textLimit` bytes after trimming is trimmed and cut
// to that size at a character boundary, so that no sender can fill the disk.
struct ShortcutInputFields {
    static constexpr std::size_t textLimit = 4096;

    std::optional<std::string> app;
    std::optional<std::string> sender;
    std::optional<std::string> title;
    std::optional<std::string> subtitle;
    std::optional<std::string> body;
    std::optional<std::string> timeSensitive;
    // The ten labelled values; a Send over the LAN adds its "Device".
    std::vector<ReceivedField> received;

    // The ten labels of `received`, in order.
    static const std::vector<std::string>& receivedLabels();

    using Text = std::optional<std::string>;
    static ShortcutInputFields fromShortcutInput(const Text& notification, const Text& title,
                                                 const Text& subtitle, const Text& body,
                                                 const Text& app, const Text& isTimeSensitive,
                                                 const Text& sender, const Text& recipients,
                                                 const Text& associatedContent, const Text& name);

    NotificationInfo notification(Date receivedAt) const;

    bool operator==(const ShortcutInputFields&) const = default;
};

// The normalised notification that rules are evaluated against.
struct NotificationInfo {
    std::string app;
    std::string sender;
    std::string title;
    std::string subtitle;
    std::string body;
    Date date;
    bool isTimeSensitive = false;
    std::optional<std::vector<ReceivedField>> received;

    // The sender, or the title when there is no sender: the identity that
    // cooldowns and sender rules use.
    const std::string& from() const { return sender.empty() ? title : sender; }
    std::optional<CallKind> callKind() const;

    // Texts are bounded as in ShortcutInputFields.
    using Text = std::optional<std::string>;
    static NotificationInfo fromShortcutInput(const Text& app, const Text& sender,
                                              const Text& title, const Text& subtitle,
                                              const Text& body, const Text& date,
                                              const Text& timeSensitive, Date now);
    static std::optional<Date> parseDate(const Text& text);
    static bool parseYesNo(const Text& text);

    bool operator==(const NotificationInfo&) const = default;
};

json::Json toJson(const NotificationInfo& notification);
NotificationInfo notificationFromJson(const json::Json& value); // throws json::DecodeError

} // namespace ringwell
