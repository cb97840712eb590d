#pragma once

#include "Alarms/Logger.h"
#include "Alarms/NoticeCenter.h"
#include "Shared/Asio.h"

#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/steady_timer.hpp>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

struct sd_bus;
struct sd_bus_message;

namespace ringwell {

// Desktop notices through the freedesktop notification server on the session
// bus (sd-bus).
//
// Each notice is one `Notify` call with app name "Ringwell", the title as
// summary, the body, the notice's actions and the hints of its kind. An
// alarm's notice is critical, resident and never expires, names the desktop
// entry "ringwell" and Ringwell's own category, keeps the server's sound off
// (the alarm has its tone) and carries the hints that let it through
// do-not-disturb where a server offers one. Other notices have normal
// urgency and the server's default expiry. The server's id for a notice is
// remembered by the notice's identifier and sent as `replaces_id` with the
// next notice of that identifier, so a newer notice replaces the older one;
// `withdraw` closes it (`CloseNotification`), and so does stopping Ringwell for
// the alarm notices still on show, whose buttons would answer nobody.
//
// The server's `ActionInvoked` and `NotificationClosed` signals for a notice
// on show become responses: a click, a dismissal by the person (reason 2),
// or a close by the desktop (any other reason, and a close that follows a
// click at once, which servers that ignore `resident` send).
//
// The server's name comes from `GetServerInformation`, asked at start and
// whenever the name changes owner; whether it holds notices back is read
// where the server says so (Plasma's `Inhibited`, dunst's pause level) and
// read again when the server announces a property change.
//
// The bus never blocks the main loop: its socket is watched by the
// io_context, calls are asynchronous and time out after a few seconds.
//
// Without a session bus (no address, or the connection fails or breaks),
// notices go to the log instead and `permissionStatus` is "unreachable". With
// a bus it is "unknown" until the server has answered `GetServerInformation`,
// then "allowed", or "unreachable" when nothing answers: no desktop denies
// notices, they only fail to arrive.
//
// Main thread only (the io_context's thread). `add` throws std::runtime_error
// when the server refuses the notice or does not answer in time.
class NotifierDBus final : public NoticeCenter {
public:
    static constexpr const char* appName = "Ringwell";
    static constexpr const char* logCategory = "Notices";

    NotifierDBus(asio::io_context& context, Logger& logger);
    ~NotifierDBus() override;
    NotifierDBus(const NotifierDBus&) = delete;
    NotifierDBus& operator=(const NotifierDBus&) = delete;

    // The category and desktop entry of alarm notices.
    static constexpr const char* alarmCategory = "x-ringwell.alarm";
    static constexpr const char* desktopEntry = "ringwell";

    Awaitable<void> add(NoticeRequest request) override;
    Awaitable<void> withdraw(std::string identifier) override;
    std::string permissionStatus() const override { return status_; }
    std::optional<NoticeServer> server() const override { return server_; }
    bool isConnected() const { return bus_ != nullptr; }

private:
    struct PendingCall;
    using Reply = std::unique_ptr<sd_bus_message, sd_bus_message* (*)(sd_bus_message*)>;

    Awaitable<Reply> call(sd_bus_message* message);
    Awaitable<void> probeServer();
    Awaitable<std::optional<bool>> readDoNotDisturb(std::string serverName);
    Awaitable<std::optional<bool>> readDunstPaused();
    Awaitable<Reply> getProperty(const char* interface, const char* property);
    void closeOnServer(std::uint32_t id);
    void withdrawAlarmNoticesAtExit();
    void subscribeToServer();
    void reprobe();
    // The handlers of the server's signals (sd-bus callbacks).
    struct Signals;
    Awaitable<void> close(sd_bus_message* message);
    std::optional<std::string> identifierOf(std::uint32_t serverId) const;
    void pump();
    void watch();
    void disconnect(const std::string& reason);
    void logNotice(const NoticeRequest& request);

    asio::io_context& context_;
    Logger& logger_;
    sd_bus* bus_ = nullptr;
    std::optional<asio::posix::stream_descriptor> descriptor_;
    asio::steady_timer busTimer_;
    bool waitingToRead_ = false;
    bool waitingToWrite_ = false;
    std::string status_ = "unreachable";
    std::optional<NoticeServer> server_;
    // Counts probes, so that an older probe's late answer changes nothing.
    std::uint64_t probes_ = 0;
    // The server's id of the notice on show under each identifier.
    std::map<std::string, std::uint32_t> serverIds_;
    // Counts the withdrawals of each identifier, so that a notice whose
    // `Notify` was still on its way when it was withdrawn is closed on arrival.
    std::map<std::string, std::uint64_t> withdrawals_;
    // Server ids of notices clicked since they were last posted: a close that
    // follows is the server tidying up, not the person dismissing.
    std::set<std::uint32_t> answered_;
    // Identifiers of alarm notices, which are withdrawn when Ringwell stops.
    std::set<std::string> alarmNotices_;
    std::vector<std::weak_ptr<PendingCall>> pending_;
    std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

} // namespace ringwell
