#include "Platform/NotifierDBus.h"

#include "Core/Text.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <poll.h>

namespace ringwell {
namespace {

constexpr const char* serverName = "org.freedesktop.Notifications";
constexpr const char* serverPath = "/org/freedesktop/Notifications";
constexpr const char* serverInterface = "org.freedesktop.Notifications";
constexpr std::uint64_t callTimeoutUsec = 5'000'000;
constexpr std::uint8_t normalUrgency = 1;
constexpr std::uint8_t criticalUrgency = 2;

std::string systemError(int negativeErrno) {
    return std::strerror(-negativeErrno);
}

// D-Bus strings must be valid UTF-8; text forwarded from elsewhere may not be.
std::string busText(const std::string& text) {
    return text::repairedUtf8(text);
}

int appendHints(sd_bus_message* message, const NoticeRequest& request) {
    int r = sd_bus_message_open_container(message, 'a', "{sv}");
    if (r >= 0)
        r = sd_bus_message_append(message, "{sv}", "urgency", "y", NotifierDBus::urgency(request));
    // Marks Ringwell's own notices, so that capturing the desktop's
    // notifications passes them by.
    if (r >= 0)
        r = sd_bus_message_append(message, "{sv}", "x-ringwell-notice", "b", 1);
    if (r >= 0 && !request.threadIdentifier.empty())
        r = sd_bus_message_append(message, "{sv}", "x-ringwell-thread", "s",
                                  busText(request.threadIdentifier).c_str());
    if (r >= 0)
        r = sd_bus_message_close_container(message);
    return r;
}

} // namespace

// One method call in flight. sd-bus calls `onReply` from sd_bus_process on
// the main thread; the awaiting coroutine sleeps on `timer`, which the reply
// (or a disconnection) cancels to wake it.
struct NotifierDBus::PendingCall {
    explicit PendingCall(asio::io_context& context) : timer(context) {
        timer.expires_at(asio::steady_timer::time_point::max());
    }
    ~PendingCall() {
        sd_bus_message_unref(reply);
        sd_bus_slot_unref(slot);
    }
    PendingCall(const PendingCall&) = delete;
    PendingCall& operator=(const PendingCall&) = delete;

    void finish(std::optional<std::string> failure) {
        if (done)
            return;
        error = std::move(failure);
        done = true;
        timer.cancel();
    }

    static int onReply(sd_bus_message* message, void* userdata, sd_bus_error*) {
        auto* call = static_cast<PendingCall*>(userdata);
        if (call->done)
            return 0;
        if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
            call->finish(std::string(error->message ? error->message
                                     : error->name  ? error->name
                                                    : "error"));
        } else {
            call->reply = sd_bus_message_ref(message);
            call->finish(std::nullopt);
        }
        return 0;
    }

    asio::steady_timer timer;
    sd_bus_slot* slot = nullptr;
    sd_bus_message* reply = nullptr;
    std::optional<std::string> error;
    bool done = false;
};

NotifierDBus::NotifierDBus(asio::io_context& context, Logger& logger)
    : context_(context), logger_(logger), busTimer_(context) {
    sd_bus* bus = nullptr;
    int r = sd_bus_open_user_with_description(&bus, "ringwell-notices");
    if (r < 0) {
        logger_.log(LogLevel::notice, logCategory,
                    "No session bus (" + systemError(r) + "): notices go to the log");
        return;
    }
    // The io_context watches a duplicate of the bus socket, so that each side
    // closes only its own descriptor.
    const int fd = sd_bus_get_fd(bus);
    const int copy = fd >= 0 ? ::fcntl(fd, F_DUPFD_CLOEXEC, 3) : -1;
    if (copy < 0) {
        sd_bus_close_unref(bus);
        logger_.log(LogLevel::error, logCategory,
                    "The session bus cannot be watched: notices go to the log");
        return;
    }
    bus_ = bus;
    descriptor_.emplace(context_, copy);
    status_ = "unknown";
    watch();
    asio::co_spawn(
        context_, probeServer(),
        reportEscaped(
            [this](const std::string& m) { logger_.log(LogLevel::error, logCategory, m); },
            "Probing the notification server"));
}

NotifierDBus::~NotifierDBus() {
    alive_.reset();
    for (const auto& weak : pending_) {
        if (auto call = weak.lock())
            call->finish("Ringwell is shutting down");
    }
    descriptor_.reset();
    busTimer_.cancel();
    // Not flushed: a flush can wait for a bus that no longer answers, and
    // shutting down must not hang on a notice.
    if (bus_)
        sd_bus_close_unref(bus_);
}

std::uint8_t NotifierDBus::urgency(const NoticeRequest& request) {
    return request.identifier.rfind("alarm-", 0) == 0 ? criticalUrgency : normalUrgency;
}

Awaitable<void> NotifierDBus::add(NoticeRequest request) {
    if (!bus_) {
        logNotice(request);
        co_return;
    }
    sd_bus_message* message = nullptr;
    int r = sd_bus_message_new_method_call(bus_, &message, serverName, serverPath, serverInterface,
                                           "Notify");
    if (r >= 0) {
        auto known = serverIds_.find(request.identifier);
        const std::uint32_t replaces = known == serverIds_.end() ? 0 : known->second;
        r = sd_bus_message_append(message, "susss", appName, replaces, "",
                                  busText(request.title).c_str(), busText(request.body).c_str());
    }
    if (r >= 0)
        r = sd_bus_message_append(message, "as", 0);
    if (r >= 0)
        r = appendHints(message, request);
    if (r >= 0)
        r = sd_bus_message_append(message, "i", -1);
    if (r < 0) {
        sd_bus_message_unref(message);
        throw std::runtime_error("The notice could not be built: " + systemError(r));
    }

    std::weak_ptr<int> alive = alive_;
    Reply reply = co_await call(message);
    std::uint32_t id = 0;
    if (sd_bus_message_read(reply.get(), "u", &id) < 0)
        throw std::runtime_error("The notification server answered without a notice id");
    if (!alive.expired())
        serverIds_[request.identifier] = id;
}

Awaitable<NotifierDBus::Reply> NotifierDBus::call(sd_bus_message* message) {
    Reply owned(message, sd_bus_message_unref);
    if (!bus_)
        throw std::runtime_error("There is no session bus");
    auto pending = std::make_shared<PendingCall>(context_);
    const int r = sd_bus_call_async(bus_, &pending->slot, message, &PendingCall::onReply,
                                    pending.get(), callTimeoutUsec);
    if (r < 0)
        throw std::runtime_error("The notification server cannot be called: " + systemError(r));
    std::erase_if(pending_, [](const auto& weak) { return weak.expired(); });
    pending_.push_back(pending);
    // The call may not have been written out yet; this also arms the timer
    // that makes sd-bus time it out.
    watch();

    // Only locals from here on: the notifier may be gone when this resumes.
    if (!pending->done) {
        boost::system::error_code ignored;
        co_await pending->timer.async_wait(asio::redirect_error(asio::use_awaitable, ignored));
    }
    if (pending->error)
        throw std::runtime_error("The notification server did not take the notice: " +
                                 *pending->error);
    co_return Reply(std::exchange(pending->reply, nullptr), sd_bus_message_unref);
}

Awaitable<void> NotifierDBus::probeServer() {
    std::weak_ptr<int> alive = alive_;
    if (!bus_)
        co_return;
    sd_bus_message* message = nullptr;
    const int r = sd_bus_message_new_method_call(bus_, &message, serverName, serverPath,
                                                 serverInterface, "GetServerInformation");
    std::optional<std::string> failure;
    if (r < 0) {
        failure = systemError(r);
    } else {
        try {
            co_await call(message);
        } catch (const std::exception& error) {
            failure = error.what();
        }
    }
    if (alive.expired())
        co_return;
    if (!failure) {
        status_ = "allowed";
        co_return;
    }
    status_ = "denied";
    logger_.log(LogLevel::notice, logCategory,
                "No notification server answers on the session bus (" + *failure +
                    "): notices may not be shown");
}

void NotifierDBus::pump() {
    if (!bus_)
        return;
    while (true) {
        const int r = sd_bus_process(bus_, nullptr);
        if (r < 0) {
            disconnect(systemError(r));
            return;
        }
        if (r == 0)
            break;
    }
    watch();
}

void NotifierDBus::watch() {
    if (!bus_)
        return;
    const int events = sd_bus_get_events(bus_);
    if (events < 0) {
        disconnect(systemError(events));
        return;
    }
    const std::weak_ptr<int> alive = alive_;
    if (!waitingToRead_) {
        waitingToRead_ = true;
        descriptor_->async_wait(asio::posix::stream_descriptor::wait_read,
                                [this, alive](boost::system::error_code error) {
                                    if (alive.expired())
                                        return;
                                    waitingToRead_ = false;
                                    if (!error)
                                        pump();
                                });
    }
    if ((events & POLLOUT) && !waitingToWrite_) {
        waitingToWrite_ = true;
        descriptor_->async_wait(asio::posix::stream_descriptor::wait_write,
                                [this, alive](boost::system::error_code error) {
                                    if (alive.expired())
                                        return;
                                    waitingToWrite_ = false;
                                    if (!error)
                                        pump();
                                });
    }
    // sd-bus tells when it next needs to run without the socket stirring: to
    // time out a call, or to handle messages it has already read.
    std::uint64_t until = 0;
    if (sd_bus_get_timeout(bus_, &until) >= 0 && until != UINT64_MAX) {
        busTimer_.expires_at(asio::steady_timer::time_point(std::chrono::microseconds(until)));
        busTimer_.async_wait([this, alive](boost::system::error_code error) {
            if (!alive.expired() && !error)
                pump();
        });
    } else {
        busTimer_.cancel();
    }
}

void NotifierDBus::disconnect(const std::string& reason) {
    logger_.log(LogLevel::error, logCategory,
                "The session bus connection was lost (" + reason + "): notices go to the log");
    for (const auto& weak : pending_) {
        if (auto call = weak.lock())
            call->finish("the session bus connection was lost");
    }
    pending_.clear();
    descriptor_.reset();
    busTimer_.cancel();
    sd_bus_close_unref(bus_);
    bus_ = nullptr;
    waitingToRead_ = false;
    waitingToWrite_ = false;
    status_ = "denied";
}

void NotifierDBus::logNotice(const NoticeRequest& request) {
    std::string line = "Notice: " + text::collapsedWhitespace(request.title);
    if (!text::isBlank(request.body))
        line += " — " + text::collapsedWhitespace(request.body);
    logger_.log(LogLevel::notice, logCategory, line);
}

} // namespace ringwell
