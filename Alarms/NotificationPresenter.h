#pragma once

#include "Alarms/NoticeCenter.h"

namespace ringwell {

// How a notice is shown. A Linux desktop shows notices whether or not a
// Ringwell window is open, so the one decision left is what a shown notice
// does: the notifier on the session bus reads these options for every notice
// it sends.
struct PresentationOptions {
    bool banner = false; // pops up on screen
    bool list = false;   // stays in the notification list until dismissed
    bool sound = false;  // may play the desktop's notification sound
    bool badge = false;  // marks an application icon

    bool operator==(const PresentationOptions&) const = default;
};

namespace NotificationPresenter {

// Banner, list and sound, never a badge: the same for every notice.
inline PresentationOptions options(const NoticeRequest&) {
    return {.banner = true, .list = true, .sound = true, .badge = false};
}

} // namespace NotificationPresenter
} // namespace ringwell
