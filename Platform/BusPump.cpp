#include "Platform/BusPump.h"

#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <poll.h>

namespace ringwell {

BusPump::BusPump(asio::io_context& context, sd_bus* bus, MessageHandler onMessage,
                 BrokenHandler onBroken)
    : bus_(bus), onMessage_(std::move(onMessage)), onBroken_(std::move(onBroken)), timer_(context) {
    const int fd = sd_bus_get_fd(bus_);
    const int copy = fd >= 0 ? ::fcntl(fd, F_DUPFD_CLOEXEC, 3) : -1;
    if (copy < 0)
        throw std::runtime_error("the session bus connection cannot be watched");
    descriptor_.emplace(context, copy);
}

BusPump::~BusPump() {
    alive_.reset();
    timer_.cancel();
}

void BusPump::pump() {
    const std::weak_ptr<int> alive = alive_;
    while (true) {
        sd_bus_message* message = nullptr;
        const int r = sd_bus_process(bus_, &message);
        if (r < 0) {
            broken(std::strerror(-r));
            return;
        }
        if (message) {
            onMessage_(message);
            sd_bus_message_unref(message);
            if (alive.expired())
                return;
        }
        if (r == 0)
            break;
    }
    watch();
}

void BusPump::watch() {
    if (!descriptor_)
        return;
    const int events = sd_bus_get_events(bus_);
    if (events < 0) {
        broken(std::strerror(-events));
        return;
    }
    const std::weak_ptr<int> alive = alive_;
    auto then = [this, alive](bool& waiting) {
        return [this, alive, &waiting](boost::system::error_code error) {
            if (alive.expired())
                return;
            waiting = false;
            if (!error)
                pump();
        };
    };
    if (!waitingToRead_) {
        waitingToRead_ = true;
        descriptor_->async_wait(asio::posix::stream_descriptor::wait_read, then(waitingToRead_));
    }
    if ((events & POLLOUT) && !waitingToWrite_) {
        waitingToWrite_ = true;
        descriptor_->async_wait(asio::posix::stream_descriptor::wait_write, then(waitingToWrite_));
    }
    // sd-bus tells when it next needs to run without the socket stirring: to
    // time out a call, or to handle messages it has already read.
    std::uint64_t until = 0;
    if (sd_bus_get_timeout(bus_, &until) >= 0 && until != UINT64_MAX) {
        timer_.expires_at(asio::steady_timer::time_point(std::chrono::microseconds(until)));
        timer_.async_wait([this, alive](boost::system::error_code error) {
            if (!alive.expired() && !error)
                pump();
        });
    } else {
        timer_.cancel();
    }
}

void BusPump::broken(const std::string& reason) {
    descriptor_.reset();
    timer_.cancel();
    onBroken_(reason);
}

} // namespace ringwell
