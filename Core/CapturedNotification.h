#pragma once

#include "Core/NotificationInfo.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>

namespace ringwell {

// One notification as another program asked the desktop's notification
// server to show it, read off the session bus. Plain data; the bus reading
// lives in Platform/NotificationCapture.
struct BusNotification {
    // Which of the three ways in the call came through.
    enum class Door {
        // org.freedesktop.Notifications.Notify
        freedesktop,
        // org.gtk.Notifications.AddNotification (GLib's GNotification)
        gtk,
        // org.freedesktop.impl.portal.Notification.AddNotification
        portal,
    };
    // A hint's value, or an entry of a GTK notification: texts, numbers (every
    // integer type, widened) and truth values; other types are left out.
    using Value = std::variant<std::string, std::int64_t, bool>;

    Door door = Door::freedesktop;
    // Notify: the app name. GTK and portal: the application id.
    std::string app;
    // Notify: the summary. GTK and portal: the "title" entry.
    std::string title;
    std::string body;
    // Notify: the hints. GTK and portal: the notification's entries.
    std::map<std::string, Value> hints;
    // Notify: replaces_id. GTK and portal: 0.
    std::uint32_t replacesId = 0;
    // GTK and portal: the notification's id within its app.
    std::string id;
};

// A phone bridge that mirrored a notification, and from which phone.
struct PhoneBridge {
    // "KDE Connect" or "GSConnect".
    std::string kind;
    // The phone's name; empty when the bridge did not say.
    std::string device;
};

// How a notification read off the bus becomes a Send: the same ten texts the
// person's automation would pass, so that a captured notification takes
// exactly the road of `ringwell send`. Pure; documented in docs/capture.md.
namespace CapturedNotification {

// The hint that marks Ringwell's own notices, which are never captured.
inline constexpr const char* ownNoticeHint = "x-ringwell-notice";

// Whether the notification is one of Ringwell's own notices.
bool isOwnNotice(const BusNotification& notification);

// The app the notification is from: for a phone bridge the phone's app (or
// "Phone" for a call), else the app name, the "desktop-entry" hint, or the
// last part of the application id.
std::string appName(const BusNotification& notification);

// The Send this notification amounts to: app as above; title, body and the
// whole notification text; time-sensitive for critical urgency (GTK and
// portal: priority "urgent"); for a phone bridge the device under
// "Recipients".
ShortcutInputFields fields(const BusNotification& notification);

// The bridge the notification came through, when it is a phone's.
std::optional<PhoneBridge> bridge(const BusNotification& notification);

// What a replacement must differ in to count as a new notification.
std::string contentKey(const BusNotification& notification);

} // namespace CapturedNotification
} // namespace ringwell
