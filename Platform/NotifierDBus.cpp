#include "Platform/NotifierDBus.h"

#include "Core/Utf8.h"
#include "Core/Whitespace.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cctype>
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
constexpr const char* dunstInterface = "org.dunstproject.cmd0";
constexpr std::uint64_t callTimeoutUsec = 5'000'000;
constexpr std::uint8_t normalUrgency = 1;
constexpr std::uint8_t criticalUrgency = 2;
// NotificationClosed's reason for a notice the person closed.
constexpr std::uint32_t dismissedByUser = 2;

std::string systemError(int negativeErrno) {
    return std::strerror(-negativeErrno);
}

// D-Bus strings must be valid UTF-8; text forwarded from elsewhere may not be.
std::string busText(const std::string& text) {
    return text::repairedUtf8(text);
}

int appendActions(sd_bus_message* message, const NoticeRequest& request) {
    int r = sd_bus_message_open_container(message, 'a', "s");
    for (const auto& action : request.actions) {
        if (r >= 0)
            r = sd_bus_message_append(message, "ss", busText(action.key).c_str(),
                                      busText(action.label).c_str());
    }
    if (r >= 0)
        r = sd_bus_message_close_container(message);
    return r;
}

int appendHints(sd_bus_message* message, const NoticeRequest& request) {
    const bool alarm = request.kind == NoticeKind::alarm;
    int r = sd_bus_message_open_container(message, 'a', "{sv}");
    if (r >= 0)
        r = sd_bus_message_append(message, "{sv}", "urgency", "y",
                                  alarm ? criticalUrgency : normalUrgency);
    // Marks Ringwell's own notices, so that capturing the desktop's
    // notifications passes them by.
    if (r >= 0)
        r = sd_bus_message_append(message, "{sv}", "x-ringwell-notice", "b", 1);
    if (r >= 0 && !request.threadIdentifier.empty())
        r = sd_bus_message_append(message, "{sv}", "x-ringwell-thread", "s",
                                  busText(request.threadIdentifier).c_str());
    if (alarm) {
        // Stays after a click (the alarm's buttons replace or close it), is
        // kept in the history, never sounds over the alarm's own tone, and
        // passes do-not-disturb: critical urgency does on GNOME and Plasma,
        // swaync lets its bypass hint through, and a dunst rule can match the
        // desktop entry or the category.
        if (r >= 0)
            r = sd_bus_message_append(message, "{sv}", "resident", "b", 1);
        if (r >= 0)
            r = sd_bus_message_append(message, "{sv}", "transient", "b", 0);
        if (r >= 0)
            r = sd_bus_message_append(message, "{sv}", "suppress-sound", "b", 1);
        if (r >= 0)
            r = sd_bus_message_append(message, "{sv}", "desktop-entry", "s",
                                      NotifierDBus::desktopEntry);
        if (r >= 0)
            r = sd_bus_message_append(message, "{sv}", "category", "s",
                                      NotifierDBus::alarmCategory);
        if (r >= 0)
            r = sd_bus_message_append(message, "{sv}", "SWAYNC_BYPASS_DND", "b", 1);
    }
    if (r >= 0)
        r = sd_bus_message_close_container(message);
    return r;
}

// Case-insensitive containment of an ASCII word in a server's name.
bool names(const std::string& name, std::string_view word) {
    auto lower = [](std::string text) {
        for (auto& c : text)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return text;
    };
    return lower(name).find(word) != std::string::npos;
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
    subscribeToServer();
    watch();
    reprobe();
}

struct NotifierDBus::Signals {
    static int onActionInvoked(sd_bus_message* message, void* userdata, sd_bus_error*);
    static int onNotificationClosed(sd_bus_message* message, void* userdata, sd_bus_error*);
    static int onServerChanged(sd_bus_message* message, void* userdata, sd_bus_error*);
};

void NotifierDBus::subscribeToServer() {
    // Floating matches: they live as long as the bus. Any sender may emit on
    // this path; ids that are not of a notice on show are ignored.
    auto check = [this](int r, const char* what) {
        if (r < 0)
            logger_.log(LogLevel::error, logCategory,
                        std::string("Cannot follow the notification server's ") + what + " (" +
                            systemError(r) + ")");
    };
    check(sd_bus_match_signal_async(bus_, nullptr, nullptr, serverPath, serverInterface,
                                    "ActionInvoked", &Signals::onActionInvoked, nullptr, this),
          "clicks");
    check(sd_bus_match_signal_async(bus_, nullptr, nullptr, serverPath, serverInterface,
                                    "NotificationClosed", &Signals::onNotificationClosed, nullptr,
                                    this),
          "closed notices");
    check(sd_bus_add_match_async(bus_, nullptr,
                                 "type='signal',sender='org.freedesktop.DBus',"
                                 "path='/org/freedesktop/DBus',interface='org.freedesktop.DBus',"
                                 "member='NameOwnerChanged',arg0='org.freedesktop.Notifications'",
                                 &Signals::onServerChanged, nullptr, this),
          "arrival");
    check(sd_bus_match_signal_async(bus_, nullptr, nullptr, serverPath,
                                    "org.freedesktop.DBus.Properties", "PropertiesChanged",
                                    &Signals::onServerChanged, nullptr, this),
          "do-not-disturb state");
}

void NotifierDBus::reprobe() {
    asio::co_spawn(context_, probeServer(),
                   reportEscaped(
                       [this, alive = std::weak_ptr<int>(alive_)](const std::string& m) {
                           if (!alive.expired())
                               logger_.log(LogLevel::error, logCategory, m);
                       },
                       "Probing the notification server"));
}

std::optional<std::string> NotifierDBus::identifierOf(std::uint32_t serverId) const {
    for (const auto& [identifier, id] : serverIds_) {
        if (id == serverId)
            return identifier;
    }
    return std::nullopt;
}

int NotifierDBus::Signals::onActionInvoked(sd_bus_message* message, void* userdata, sd_bus_error*) {
    auto* self = static_cast<NotifierDBus*>(userdata);
    std::uint32_t id = 0;
    const char* key = nullptr;
    if (sd_bus_message_read(message, "us", &id, &key) < 0)
        return 0;
    auto identifier = self->identifierOf(id);
    if (!identifier)
        return 0;
    self->answered_.insert(id);
    self->respond({*identifier, NoticeResponse::Kind::action, key});
    return 0;
}

int NotifierDBus::Signals::onNotificationClosed(sd_bus_message* message, void* userdata,
                                                sd_bus_error*) {
    auto* self = static_cast<NotifierDBus*>(userdata);
    std::uint32_t id = 0;
    std::uint32_t reason = 0;
    if (sd_bus_message_read(message, "uu", &id, &reason) < 0)
        return 0;
    auto identifier = self->identifierOf(id);
    if (!identifier)
        return 0; // withdrawn or replaced by us, or not ours
    self->serverIds_.erase(*identifier);
    self->alarmNotices_.erase(*identifier);
    const bool answered = self->answered_.erase(id) > 0;
    const auto kind = reason == dismissedByUser && !answered ? NoticeResponse::Kind::dismissed
                                                             : NoticeResponse::Kind::closedBySystem;
    self->respond({*identifier, kind, ""});
    return 0;
}

int NotifierDBus::Signals::onServerChanged(sd_bus_message*, void* userdata, sd_bus_error*) {
    static_cast<NotifierDBus*>(userdata)->reprobe();
    return 0;
}

NotifierDBus::~NotifierDBus() {
    alive_.reset();
    for (const auto& weak : pending_) {
        if (auto call = weak.lock())
            call->finish("Ringwell is shutting down");
    }
    descriptor_.reset();
    busTimer_.cancel();
    if (bus_) {
        withdrawAlarmNoticesAtExit();
        sd_bus_close_unref(bus_);
    }
}

void NotifierDBus::withdrawAlarmNoticesAtExit() {
    // Nobody can answer an alarm's notice once Ringwell has stopped; the
    // alarm itself is kept and rings again, with a new notice, at the next
    // start.
    for (const auto& [identifier, id] : serverIds_) {
        if (!alarmNotices_.count(identifier))
            continue;
        sd_bus_message* message = nullptr;
        if (sd_bus_message_new_method_call(bus_, &message, serverName, serverPath, serverInterface,
                                           "CloseNotification") >= 0 &&
            sd_bus_message_append(message, "u", id) >= 0)
            sd_bus_send(bus_, message, nullptr);
        sd_bus_message_unref(message);
    }
    // Written out within a bounded wait, not sd_bus_flush: a bus that no
    // longer reads must not hold up shutting down.
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
    while (std::chrono::steady_clock::now() < end) {
        const int events = sd_bus_get_events(bus_);
        if (events < 0 || !(events & POLLOUT))
            break;
        if (sd_bus_process(bus_, nullptr) < 0)
            break;
        sd_bus_wait(bus_, 50'000);
    }
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
        r = appendActions(message, request);
    if (r >= 0)
        r = appendHints(message, request);
    // An alarm's notice never expires; others take the server's default.
    if (r >= 0)
        r = sd_bus_message_append(message, "i", request.kind == NoticeKind::alarm ? 0 : -1);
    if (r < 0) {
        sd_bus_message_unref(message);
        throw std::runtime_error("The notice could not be built: " + systemError(r));
    }

    std::weak_ptr<int> alive = alive_;
    const std::uint64_t withdrawalsBefore = withdrawals_[request.identifier];
    Reply reply = co_await call(message);
    std::uint32_t id = 0;
    if (sd_bus_message_read(reply.get(), "u", &id) < 0)
        throw std::runtime_error("The notification server answered without a notice id");
    if (alive.expired())
        co_return;
    if (withdrawals_[request.identifier] != withdrawalsBefore) {
        closeOnServer(id);
        co_return;
    }
    // Two notices of one identifier crossing on the way leave the later one.
    auto known = serverIds_.find(request.identifier);
    if (known != serverIds_.end() && known->second != id)
        closeOnServer(known->second);
    serverIds_[request.identifier] = id;
    if (request.kind == NoticeKind::alarm)
        alarmNotices_.insert(request.identifier);
    answered_.erase(id);
}

Awaitable<void> NotifierDBus::withdraw(std::string identifier) {
    ++withdrawals_[identifier];
    alarmNotices_.erase(identifier);
    auto known = serverIds_.find(identifier);
    if (known == serverIds_.end())
        co_return;
    const std::uint32_t id = known->second;
    serverIds_.erase(known);
    answered_.erase(id);
    closeOnServer(id);
}

void NotifierDBus::closeOnServer(std::uint32_t id) {
    if (!bus_)
        return;
    sd_bus_message* message = nullptr;
    int r = sd_bus_message_new_method_call(bus_, &message, serverName, serverPath, serverInterface,
                                           "CloseNotification");
    if (r >= 0)
        r = sd_bus_message_append(message, "u", id);
    if (r < 0) {
        sd_bus_message_unref(message);
        logger_.log(LogLevel::error, logCategory,
                    "A notice could not be withdrawn: " + systemError(r));
        return;
    }
    asio::co_spawn(context_, close(message),
                   [this, alive = std::weak_ptr<int>(alive_)](std::exception_ptr error) {
                       if (!error || alive.expired())
                           return;
                       try {
                           std::rethrow_exception(error);
                       } catch (const std::exception& failure) {
                           logger_.log(LogLevel::notice, logCategory,
                                       std::string("A notice could not be withdrawn: ") +
                                           failure.what());
                       }
                   });
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

Awaitable<void> NotifierDBus::close(sd_bus_message* message) {
    co_await call(message);
}

Awaitable<void> NotifierDBus::probeServer() {
    std::weak_ptr<int> alive = alive_;
    if (!bus_)
        co_return;
    const std::uint64_t probe = ++probes_;
    sd_bus_message* message = nullptr;
    const int r = sd_bus_message_new_method_call(bus_, &message, serverName, serverPath,
                                                 serverInterface, "GetServerInformation");
    std::optional<std::string> failure;
    NoticeServer found;
    if (r < 0) {
        failure = systemError(r);
    } else {
        // Only a server that is running counts: asking must not start one.
        sd_bus_message_set_auto_start(message, 0);
        try {
            Reply reply = co_await call(message);
            const char *name = nullptr, *vendor = nullptr, *version = nullptr;
            if (sd_bus_message_read(reply.get(), "sss", &name, &vendor, &version) < 0)
                throw std::runtime_error("it answered GetServerInformation without a name");
            found = {name, vendor, version, std::nullopt};
        } catch (const std::exception& error) {
            failure = error.what();
        }
    }
    if (alive.expired() || probe != probes_)
        co_return;
    if (failure) {
        const bool wasThere = status_ != "unreachable";
        status_ = "unreachable";
        server_.reset();
        if (wasThere)
            logger_.log(LogLevel::notice, logCategory,
                        "No notification server answers on the session bus (" + *failure +
                            "): notices may not be shown");
        co_return;
    }
    status_ = "allowed";
    server_ = found;
    auto doNotDisturb = co_await readDoNotDisturb(found.name);
    if (alive.expired() || probe != probes_ || !server_)
        co_return;
    server_->doNotDisturb = doNotDisturb;
}

Awaitable<NotifierDBus::Reply> NotifierDBus::getProperty(const char* interface,
                                                         const char* property) {
    if (!bus_)
        throw std::runtime_error("There is no session bus");
    sd_bus_message* message = nullptr;
    int r = sd_bus_message_new_method_call(bus_, &message, serverName, serverPath,
                                           "org.freedesktop.DBus.Properties", "Get");
    if (r >= 0)
        r = sd_bus_message_append(message, "ss", interface, property);
    if (r < 0) {
        sd_bus_message_unref(message);
        throw std::runtime_error(systemError(r));
    }
    co_return co_await call(message);
}

Awaitable<std::optional<bool>> NotifierDBus::readDoNotDisturb(std::string name) {
    // Only servers that say whether they hold notices back are asked; others
    // leave it unknown.
    try {
        if (names(name, "plasma") || names(name, "kde")) {
            Reply reply = co_await getProperty(serverInterface, "Inhibited");
            int inhibited = 0;
            if (sd_bus_message_read(reply.get(), "v", "b", &inhibited) >= 0)
                co_return inhibited != 0;
        } else if (names(name, "dunst")) {
            co_return co_await readDunstPaused();
        }
    } catch (const std::exception&) {
        // An older server without the property: not known.
    }
    co_return std::nullopt;
}

Awaitable<std::optional<bool>> NotifierDBus::readDunstPaused() {
    // dunst with pause levels has `pauseLevel`; older releases (Debian 12's
    // 1.9.0) only the boolean `paused`.
    std::optional<Reply> levelReply;
    try {
        levelReply = co_await getProperty(dunstInterface, "pauseLevel");
    } catch (const std::exception&) {
    }
    if (levelReply) {
        std::uint32_t level = 0;
        if (sd_bus_message_read(levelReply->get(), "v", "u", &level) >= 0)
            co_return level > 0;
    }
    Reply reply = co_await getProperty(dunstInterface, "paused");
    int paused = 0;
    if (sd_bus_message_read(reply.get(), "v", "b", &paused) >= 0)
        co_return paused != 0;
    co_return std::nullopt;
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
    status_ = "unreachable";
    server_.reset();
    serverIds_.clear();
    answered_.clear();
}

void NotifierDBus::logNotice(const NoticeRequest& request) {
    std::string line = "Notice: " + text::collapsedWhitespace(request.title);
    if (!text::isBlank(request.body))
        line += " — " + text::collapsedWhitespace(request.body);
    logger_.log(LogLevel::notice, logCategory, line);
}

} // namespace ringwell
