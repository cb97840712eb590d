#pragma once

#include "Alarms/Logger.h"
#include "Alarms/NotificationSource.h"
#include "Core/CapturedNotification.h"
#include "Platform/BusPump.h"
#include "Shared/Asio.h"

#include <boost/asio/steady_timer.hpp>

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

struct sd_bus;
struct sd_bus_message;

namespace ringwell {

// Captures the desktop's notifications from the session bus: a connection of
// its own becomes a monitor (`BecomeMonitor`) of the calls that show a
// notification (freedesktop `Notify`, GTK's and the portal's
// `AddNotification`) and of the notification server's answers. The monitor
// never sends; the server's name and version are asked over a second,
// ordinary connection, on connecting and, while unknown, with the next
// notification.
//
// Each call is counted and handed on once: a call seen twice (addressed to
// the well-known and to the unique name) by its sender and serial, a
// replacement only when its text changed, and never Ringwell's own notices.
//
// Without a session bus, or when the bus goes away, it says why in its status
// and the log and tries again every `retryInterval`. Connecting never blocks
// the io_context: the handshake and BecomeMonitor run on its loop, and a bus
// that has not accepted the monitor within two seconds counts as unreachable.
//
// Main thread only (the io_context's thread).
class NotificationCapture final : public NotificationSource {
public:
    static constexpr const char* logCategory = "Capture";

    NotificationCapture(asio::io_context& context, Logger& logger,
                        std::chrono::milliseconds retryInterval = std::chrono::seconds(5));
    ~NotificationCapture() override;
    NotificationCapture(const NotificationCapture&) = delete;
    NotificationCapture& operator=(const NotificationCapture&) = delete;

    void start(Listener listener) override;
    void stop() override;
    CaptureStatus status() const override;
    // Called whenever the status changes by itself (the bus accepted the
    // monitor, went away, the server named itself), for the live feed.
    void onStatusChange(std::function<void()> observer) { onStatusChange_ = std::move(observer); }

private:
    using CallKey = std::pair<std::string, std::uint64_t>; // sender, serial

    void connect();
    void connectMonitor(const std::string& address);
    void askServer(const std::string& address);
    void close();
    void lost(const std::string& problem);
    void retryLater();
    void onMessage(sd_bus_message* message);
    void onCall(sd_bus_message* message);
    void onReturn(sd_bus_message* message);
    bool isNew(const BusNotification& notification);
    void remember(const CallKey& call);
    void serverAnswered(sd_bus_message* reply);
    void closeOrdinarySoon();
    void statusChanged();

    asio::io_context& context_;
    Logger& logger_;
    std::chrono::milliseconds retryInterval_;
    Listener listener_;
    std::function<void()> onStatusChange_;
    asio::steady_timer retry_;

    sd_bus* monitor_ = nullptr;
    std::unique_ptr<BusPump> monitorPump_;
    sd_bus* ordinary_ = nullptr;
    std::unique_ptr<BusPump> ordinaryPump_;
    // The serial of this connection's BecomeMonitor, to recognise its refusal.
    std::uint64_t becomeMonitorCookie_ = 0;
    asio::steady_timer connectDeadline_;
    std::string address_;
    // Counts connections, so that a close meant for a lost one spares the next.
    std::uint64_t generation_ = 0;
    bool retrying_ = false;
    // Ask the server again once the question now out has been answered.
    bool askAgain_ = false;

    CaptureStatus status_;
    // Calls already handled, oldest first, to tell a second sighting apart.
    std::deque<CallKey> recentCalls_;
    std::set<CallKey> recentCallSet_;
    // The text of each Notify awaiting the server's id, and of each id.
    std::map<CallKey, std::string> awaitingId_;
    std::map<std::uint32_t, std::string> textById_;
    // The text of each GTK and portal notification by app and id.
    std::map<std::string, std::string> textByGtkId_;
    std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

} // namespace ringwell
