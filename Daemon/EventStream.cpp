#include "Daemon/EventStream.h"

namespace ringwell {

EventStream::EventStream(asio::any_io_executor executor) : wakeUp_(executor) {}

void EventStream::push(std::string message) {
    if (closed_)
        return;
    queue_.push_back(std::move(message));
    wakeUp_.cancel();
}

void EventStream::close() {
    closed_ = true;
    wakeUp_.cancel();
}

Awaitable<std::optional<std::string>> EventStream::next(std::chrono::seconds heartbeat) {
    if (queue_.empty() && !closed_) {
        wakeUp_.expires_after(heartbeat);
        boost::system::error_code ec;
        co_await wakeUp_.async_wait(asio::redirect_error(asio::use_awaitable, ec));
    }
    if (!queue_.empty()) {
        std::string message = std::move(queue_.front());
        queue_.pop_front();
        co_return message;
    }
    if (closed_)
        co_return std::nullopt;
    co_return std::string(": keep-alive\n\n");
}

} // namespace ringwell
