#pragma once

#include "Core/Date.h"
#include "Core/JsonFwd.h"
#include "Core/NotificationInfo.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// The verdict of the setup test on one field of the "Send to Ringwell" action:
// whether the automation maps it to the matching part of the Shortcut Input.
struct SetupCheck {
    // The fields the test judges, in declaration order (`allFields`).
    enum class Field { app, sender, title, subtitle, body, timeSensitive };
    // `unverifiable`: the test notification did not carry the field, so the
    // mapping could not be judged; it is not a failure.
    enum class Status { passed, failed, unverifiable };

    Field field = Field::app;
    Status status = Status::passed;
    // The value that arrived for the field, trimmed; empty when nothing did.
    std::string received;
    // What to change in the automation; absent when the check passed.
    std::optional<std::string> hint;

    // A list of checks holds each field at most once.
    Field id() const { return field; }

    bool operator==(const SetupCheck&) const = default;
};

inline constexpr SetupCheck::Field allSetupFields[] = {
    SetupCheck::Field::app,      SetupCheck::Field::sender, SetupCheck::Field::title,
    SetupCheck::Field::subtitle, SetupCheck::Field::body,   SetupCheck::Field::timeSensitive};

// "app", "sender", ..., "timeSensitive".
std::string_view rawValue(SetupCheck::Field field);
std::optional<SetupCheck::Field> setupFieldFromRaw(std::string_view raw);
// The action's parameter name as the person sees it: "App", ..., "Is Time Sensitive".
// The action also records the received values under these names.
std::string_view label(SetupCheck::Field field);
// "passed", "failed", "unverifiable".
std::string_view rawValue(SetupCheck::Status status);

// {"field", "label", "status", "received", "hint"?}
json::Json toJson(const SetupCheck& check);

// One running setup test. Two tests are equal when they started at the same
// moment; nothing else reads `startedAt`, and a test never times out.
struct SetupTest {
    Date startedAt;

    // The six checks of the forwarded input, always in the order app, title,
    // subtitle, body, timeSensitive, sender. Once the action reports what it
    // received, only those recorded values are judged, never the direct ones.
    // Pure; the test's own start time is not consulted.
    std::vector<SetupCheck> evaluate(const ShortcutInputFields& fields) const;

    // True when there is at least one check and none failed.
    static bool allPassed(const std::vector<SetupCheck>& checks);

    bool operator==(const SetupTest&) const = default;
};

// The one-line setup warning refreshed by every ordinary forwarded
// notification, from the direct values only.
namespace SetupDiagnostics {

// A warning when the automation passes none of app, sender, title, subtitle
// and body, or passes no app; none otherwise.
std::optional<std::string> warning(const ShortcutInputFields& fields);

} // namespace SetupDiagnostics
} // namespace ringwell
