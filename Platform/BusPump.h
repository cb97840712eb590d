#pragma once

#include "Shared/Asio.h"

#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/steady_timer.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>

struct sd_bus;
struct sd_bus_message;

namespace ringwell {

// Runs one sd-bus connection on the io_context: the connection's socket (a
// duplicate, so each side closes only its own) and its next timeout are
// watched, and `sd_bus_process` runs whenever either stirs. Every message
// that sd-bus hands back unhandled goes to `onMessage` (a monitor's traffic);
// a failing connection is reported once through `onBroken`.
//
// Main thread only. It does not own the connection. Either callback may
// destroy the pump.
class BusPump {
public:
    using MessageHandler = std::function<void(sd_bus_message*)>;
    using BrokenHandler = std::function<void(const std::string& reason)>;

    // Throws std::runtime_error when the connection's socket cannot be watched.
    BusPump(asio::io_context& context, sd_bus* bus, MessageHandler onMessage,
            BrokenHandler onBroken);
    ~BusPump();
    BusPump(const BusPump&) = delete;
    BusPump& operator=(const BusPump&) = delete;

    // Arms the waits for what sd-bus needs next; call after queueing a message.
    void watch();

private:
    void pump();
    void broken(const std::string& reason);

    sd_bus* bus_;
    MessageHandler onMessage_;
    BrokenHandler onBroken_;
    std::optional<asio::posix::stream_descriptor> descriptor_;
    asio::steady_timer timer_;
    bool waitingToRead_ = false;
    bool waitingToWrite_ = false;
    std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

} // namespace ringwell
