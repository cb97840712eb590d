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
#include <string>
#include <vector>

struct sd_bus;
struct sd_bus_message;

namespace ringwell {

// Desktop notices through the freedesktop notification server on the session
// bus (sd-bus).
//
// Each notice is one `Notify` call with app name "Ringwell", the title as
// summary and the body, no actions, the default expiry and hints that give
// alarm notices critical urgency (they stay until the alarm is dealt with)
// and every other notice normal urgency. The server's id for a notice is
// remembered by the notice's identifier and sent as `replaces_id` with the
// next notice of that identifier, so a newer notice replaces the older one.
//
// The bus never blocks the main loop: its socket is watched by the
// io_context, calls are asynchronous and time out after a few seconds.
//
// Without a session bus (no address, or the connection fails or breaks),
// notices go to the log instead and `permissionStatus` is "denied". With a
// bus it is "unknown" until the server has answered `GetServerInformation`,
// then "allowed", or "denied" when nothing answers.
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

    Awaitable<void> add(NoticeRequest request) override;
    std::string permissionStatus() const override { return status_; }
    bool isConnected() const { return bus_ != nullptr; }

    // The urgency hint of a notice: 2 (critical) for alarm notices, 1 (normal)
    // for every other.
    static std::uint8_t urgency(const NoticeRequest& request);

private:
    struct PendingCall;
    using Reply = std::unique_ptr<sd_bus_message, sd_bus_message* (*)(sd_bus_message*)>;

    Awaitable<Reply> call(sd_bus_message* message);
    Awaitable<void> probeServer();
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
    std::string status_ = "denied";
    // The server's id of the last notice shown under each identifier.
    std::map<std::string, std::uint32_t> serverIds_;
    std::vector<std::weak_ptr<PendingCall>> pending_;
    std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

} // namespace ringwell
