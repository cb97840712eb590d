#pragma once

#include "Core/CapturedNotification.h"
#include "Core/NotificationInfo.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace ringwell {

// What a notification source tells about itself.
struct CaptureStatus {
    // Connected to the session bus, and the bus accepted the monitor.
    bool active = false;
    // The desktop's notification server, as it names itself; empty when
    // unknown.
    std::string server;
    std::string serverVersion;
    // Notifications captured since the daemon started (each counted once).
    std::uint64_t seen = 0;
    // Why it is not active; empty when it is.
    std::string problem;
};

// One captured notification: the ten texts of its Send, and the phone bridge
// that mirrored it, if any.
struct CapturedNotice {
    ShortcutInputFields fields;
    std::optional<PhoneBridge> bridge;
};

// Other programs' notifications as they reach the desktop, each already
// turned into the ten texts of a Send. The daemon's is
// Platform/NotificationCapture (a monitor on the session bus); tests use
// testing::FakeNotificationSource.
//
// Main thread only: the listener is called on the io_context's thread, once
// per notification, and never after `stop`.
class NotificationSource {
public:
    using Listener = std::function<void(CapturedNotice)>;

    virtual ~NotificationSource() = default;
    // Starts capturing, and keeps trying while there is no bus to capture on.
    virtual void start(Listener listener) = 0;
    virtual void stop() = 0;
    virtual CaptureStatus status() const = 0;
};

} // namespace ringwell
