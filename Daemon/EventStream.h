#pragma once

#include "Shared/Asio.h"

#include <boost/asio/steady_timer.hpp>

#include <chrono>
#include <deque>
#include <optional>
#include <string>

namespace ringwell {

// The body of a server-sent-events answer: messages pushed by the daemon's
// objects are written to the client as they come. Main thread only.
class EventStream {
public:
    explicit EventStream(asio::any_io_executor executor);

    // Queues one message ("event: change\ndata: {...}\n\n").
    void push(std::string message);
    // Ends the stream; the connection closes after the queued messages.
    void close();
    bool isClosed() const { return closed_; }

    // The next message, a keep-alive comment after `heartbeat` of silence, or
    // nothing once the stream is closed and drained.
    Awaitable<std::optional<std::string>> next(std::chrono::seconds heartbeat);

private:
    std::deque<std::string> queue_;
    asio::steady_timer wakeUp_;
    bool closed_ = false;
};

} // namespace ringwell
