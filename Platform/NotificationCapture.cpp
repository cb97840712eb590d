#include "Platform/NotificationCapture.h"

#include <systemd/sd-bus.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace ringwell {
namespace {

constexpr const char* notificationsName = "org.freedesktop.Notifications";
constexpr std::chrono::milliseconds connectTimeout{2000};
constexpr std::size_t rememberedCalls = 512;
constexpr std::size_t rememberedTexts = 1024;

// What the monitor sees: the three calls that show a notification, and the
// notification server's answers (which carry the ids of Notify calls).
constexpr const char* monitorRules[] = {
    "type='method_call',interface='org.freedesktop.Notifications',member='Notify'",
    "type='method_call',interface='org.gtk.Notifications',member='AddNotification'",
    // One rule split over two lines: the parentheses say the join is meant.
    ("type='method_call',interface='org.freedesktop.impl.portal.Notification',"
     "member='AddNotification'"),
    "type='method_return',sender='org.freedesktop.Notifications'",
};

std::string systemError(int negativeErrno) {
    return std::strerror(-negativeErrno);
}

// The session bus's address, as every client of it finds it.
std::string sessionAddress() {
    if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address && *address)
        return address;
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime && *runtime)
        return std::string("unix:path=") + runtime + "/bus";
    return {};
}

std::string text(const char* value) {
    return value ? value : "";
}

// One a{sv} of hints or notification entries: texts, integers and truth
// values; other types are skipped.
void readEntries(sd_bus_message* m, std::map<std::string, BusNotification::Value>& out) {
    if (sd_bus_message_enter_container(m, 'a', "{sv}") <= 0)
        return;
    while (sd_bus_message_enter_container(m, 'e', "sv") > 0) {
        const char* key = nullptr;
        char type = 0;
        const char* contents = nullptr;
        if (sd_bus_message_read(m, "s", &key) < 0 ||
            sd_bus_message_peek_type(m, &type, &contents) < 0 || !contents) {
            sd_bus_message_exit_container(m);
            continue;
        }
        const std::string signature = contents;
        if (signature.size() == 1 && std::strchr("sbynqiuxt", signature[0]) &&
            sd_bus_message_enter_container(m, 'v', contents) > 0) {
            union {
                const char* s;
                int b;
                std::uint8_t y;
                std::int16_t n;
                std::uint16_t q;
                std::int32_t i;
                std::uint32_t u;
                std::int64_t x;
                std::uint64_t t;
            } value{};
            if (sd_bus_message_read_basic(m, signature[0], &value) > 0) {
                switch (signature[0]) {
                case 's':
                    out[key] = text(value.s);
                    break;
                case 'b':
                    out[key] = value.b != 0;
                    break;
                case 'y':
                    out[key] = std::int64_t{value.y};
                    break;
                case 'n':
                    out[key] = std::int64_t{value.n};
                    break;
                case 'q':
                    out[key] = std::int64_t{value.q};
                    break;
                case 'i':
                    out[key] = std::int64_t{value.i};
                    break;
                case 'u':
                    out[key] = std::int64_t{value.u};
                    break;
                case 'x':
                    out[key] = value.x;
                    break;
                case 't':
                    out[key] = static_cast<std::int64_t>(value.t);
                    break;
                }
            }
            sd_bus_message_exit_container(m);
        } else {
            sd_bus_message_skip(m, "v");
        }
        sd_bus_message_exit_container(m);
    }
    sd_bus_message_exit_container(m);
}

std::optional<BusNotification> readNotify(sd_bus_message* m) {
    BusNotification n;
    const char *app = nullptr, *icon = nullptr, *summary = nullptr, *body = nullptr;
    if (sd_bus_message_read(m, "susss", &app, &n.replacesId, &icon, &summary, &body) < 0 ||
        sd_bus_message_skip(m, "as") < 0)
        return std::nullopt;
    n.app = text(app);
    n.title = text(summary);
    n.body = text(body);
    readEntries(m, n.hints);
    return n;
}

std::optional<BusNotification> readAddNotification(sd_bus_message* m, BusNotification::Door door) {
    BusNotification n;
    n.door = door;
    const char *app = nullptr, *id = nullptr;
    if (sd_bus_message_read(m, "ss", &app, &id) < 0)
        return std::nullopt;
    n.app = text(app);
    n.id = text(id);
    readEntries(m, n.hints);
    auto entry = [&](const char* key) {
        auto found = n.hints.find(key);
        const auto* value =
            found == n.hints.end() ? nullptr : std::get_if<std::string>(&found->second);
        return value ? *value : std::string();
    };
    n.title = entry("title");
    n.body = entry("body");
    return n;
}

} // namespace

NotificationCapture::NotificationCapture(asio::io_context& context, Logger& logger,
                                         std::chrono::milliseconds retryInterval)
    : context_(context), logger_(logger), retryInterval_(retryInterval), retry_(context),
      connectDeadline_(context) {
    status_.problem = "capture is off";
}

NotificationCapture::~NotificationCapture() {
    alive_.reset();
    retry_.cancel();
    connectDeadline_.cancel();
    close();
}

void NotificationCapture::start(Listener listener) {
    listener_ = std::move(listener);
    if (!monitor_)
        connect();
}

void NotificationCapture::stop() {
    listener_ = nullptr;
    retry_.cancel();
    retrying_ = false;
    ++generation_;
    close();
    status_.problem = "capture is off";
}

CaptureStatus NotificationCapture::status() const {
    return status_;
}

void NotificationCapture::connect() {
    close();
    ++generation_;
    retrying_ = false;
    const std::string address = sessionAddress();
    if (address.empty()) {
        lost("there is no session bus (DBUS_SESSION_BUS_ADDRESS and XDG_RUNTIME_DIR are unset)");
        return;
    }
    try {
        connectMonitor(address);
    } catch (const std::runtime_error& error) {
        lost(error.what());
        return;
    }
    address_ = address;
    // A new session may have another server: it is asked anew.
    status_.server.clear();
    status_.serverVersion.clear();
    askServer(address);
}

void NotificationCapture::connectMonitor(const std::string& address) {
    // Nothing here waits for the bus: the connection is opened without
    // blocking, and BecomeMonitor is queued behind the bus's handshake. Its
    // answer arrives on the pump (a monitor's replies are handed out as its
    // other traffic), and a bus that does not answer in time is given up on.
    int r = sd_bus_new(&monitor_);
    if (r >= 0)
        r = sd_bus_set_monitor(monitor_, 1);
    if (r >= 0)
        r = sd_bus_set_bus_client(monitor_, 1);
    if (r >= 0)
        r = sd_bus_set_address(monitor_, address.c_str());
    if (r >= 0)
        r = sd_bus_start(monitor_);
    if (r < 0)
        throw std::runtime_error("the session bus cannot be reached (" + systemError(r) + ")");

    sd_bus_message* call = nullptr;
    r = sd_bus_message_new_method_call(monitor_, &call, "org.freedesktop.DBus",
                                       "/org/freedesktop/DBus", "org.freedesktop.DBus.Monitoring",
                                       "BecomeMonitor");
    if (r >= 0)
        r = sd_bus_message_open_container(call, 'a', "s");
    for (const char* rule : monitorRules) {
        if (r >= 0)
            r = sd_bus_message_append(call, "s", rule);
    }
    if (r >= 0)
        r = sd_bus_message_close_container(call);
    if (r >= 0)
        r = sd_bus_message_append(call, "u", 0u);
    if (r >= 0)
        r = sd_bus_send(monitor_, call, &becomeMonitorCookie_);
    sd_bus_message_unref(call);
    if (r < 0)
        throw std::runtime_error("the session bus cannot be reached (" + systemError(r) + ")");

    monitorPump_ = std::make_unique<BusPump>(
        context_, monitor_, [this](sd_bus_message* message) { onMessage(message); },
        [this](const std::string& reason) {
            lost("the session bus connection was lost (" + reason + ")");
        });
    monitorPump_->watch();
    connectDeadline_.expires_after(connectTimeout);
    connectDeadline_.async_wait([this, alive = std::weak_ptr<int>(alive_),
                                 generation = generation_](boost::system::error_code error) {
        if (!alive.expired() && !error && generation == generation_ && monitor_ && !status_.active)
            lost("the session bus did not accept the monitor within " +
                 std::to_string(connectTimeout.count()) + " ms");
    });
}

void NotificationCapture::askServer(const std::string& address) {
    int r = sd_bus_new(&ordinary_);
    if (r >= 0)
        r = sd_bus_set_bus_client(ordinary_, 1);
    if (r >= 0)
        r = sd_bus_set_address(ordinary_, address.c_str());
    if (r >= 0)
        r = sd_bus_start(ordinary_);
    auto answered = [](sd_bus_message* reply, void* userdata, sd_bus_error*) {
        static_cast<NotificationCapture*>(userdata)->serverAnswered(reply);
        return 0;
    };
    if (r >= 0)
        r = sd_bus_call_method_async(ordinary_, nullptr, notificationsName,
                                     "/org/freedesktop/Notifications", notificationsName,
                                     "GetServerInformation", answered, this, "");
    if (r < 0) {
        // The server stays unknown; capture does not depend on it.
        sd_bus_close_unref(ordinary_);
        ordinary_ = nullptr;
        return;
    }
    try {
        ordinaryPump_ = std::make_unique<BusPump>(
            context_, ordinary_, [](sd_bus_message*) {},
            [this](const std::string&) { closeOrdinarySoon(); });
        ordinaryPump_->watch();
    } catch (const std::runtime_error&) {
        closeOrdinarySoon();
    }
}

void NotificationCapture::closeOrdinarySoon() {
    // Called from within the connection's own pump: close once it returned.
    asio::post(context_, [this, alive = std::weak_ptr<int>(alive_), generation = generation_] {
        if (alive.expired() || generation != generation_)
            return;
        ordinaryPump_.reset();
        if (ordinary_)
            sd_bus_close_unref(ordinary_);
        ordinary_ = nullptr;
        // A notification came while an unanswered question was out.
        if (askAgain_ && status_.server.empty() && monitor_) {
            askAgain_ = false;
            askServer(address_);
        }
    });
}

void NotificationCapture::serverAnswered(sd_bus_message* reply) {
    // One question per connection; a server that was not there yet is asked
    // again with the next notification.
    closeOrdinarySoon();
    const char *name = nullptr, *vendor = nullptr, *version = nullptr, *specVersion = nullptr;
    if (sd_bus_message_is_method_error(reply, nullptr) ||
        sd_bus_message_read(reply, "ssss", &name, &vendor, &version, &specVersion) < 0)
        return;
    status_.server = text(name);
    status_.serverVersion = text(version);
    statusChanged();
}

void NotificationCapture::statusChanged() {
    if (onStatusChange_)
        onStatusChange_();
}

void NotificationCapture::close() {
    connectDeadline_.cancel();
    monitorPump_.reset();
    ordinaryPump_.reset();
    if (monitor_)
        sd_bus_close_unref(monitor_);
    if (ordinary_)
        sd_bus_close_unref(ordinary_);
    monitor_ = nullptr;
    ordinary_ = nullptr;
    status_.active = false;
    askAgain_ = false;
    awaitingId_.clear();
}

void NotificationCapture::lost(const std::string& problem) {
    if (retrying_)
        return;
    const bool wasActive = status_.active;
    status_.active = false;
    const bool changed = problem != status_.problem || wasActive;
    if (changed)
        logger_.log(LogLevel::error, logCategory,
                    "Not capturing notifications: " + problem + "; trying again every " +
                        std::to_string(retryInterval_.count()) + " ms");
    status_.problem = problem;
    if (changed)
        statusChanged();
    // This may run inside the monitor's pump: the connection is closed once
    // the pump has returned, unless a new one has been made meanwhile.
    asio::post(context_, [this, alive = std::weak_ptr<int>(alive_), generation = generation_] {
        if (!alive.expired() && generation == generation_)
            close();
    });
    retryLater();
}

void NotificationCapture::retryLater() {
    retrying_ = true;
    retry_.expires_after(retryInterval_);
    retry_.async_wait([this, alive = std::weak_ptr<int>(alive_)](boost::system::error_code error) {
        if (!alive.expired() && !error && listener_ && !status_.active)
            connect();
    });
}

void NotificationCapture::onMessage(sd_bus_message* message) {
    if (sd_bus_message_is_signal(message, "org.freedesktop.DBus.Local", "Disconnected") > 0) {
        lost("the session bus went away");
        return;
    }
    if (!status_.active) {
        std::uint64_t replyTo = 0;
        if (sd_bus_message_is_method_error(message, nullptr) > 0 &&
            sd_bus_message_get_reply_cookie(message, &replyTo) >= 0 &&
            replyTo == becomeMonitorCookie_) {
            const sd_bus_error* error = sd_bus_message_get_error(message);
            lost(std::string("the session bus refused the monitor (") +
                 (error && error->message ? error->message : "no reason given") + ")");
            return;
        }
        // Traffic counts only once the bus took the connection's own name
        // away, which is how it says the monitor is in place. The name is
        // known by then: the bus answered the connection's Hello first.
        const char* name = nullptr;
        const char* unique = nullptr;
        if (sd_bus_message_is_signal(message, "org.freedesktop.DBus", "NameLost") > 0 &&
            sd_bus_message_read(message, "s", &name) >= 0 && sd_bus_is_ready(monitor_) > 0 &&
            sd_bus_get_unique_name(monitor_, &unique) >= 0 && text(name) == text(unique)) {
            connectDeadline_.cancel();
            status_.active = true;
            status_.problem.clear();
            logger_.log(LogLevel::notice, logCategory, "Capturing the desktop's notifications");
            statusChanged();
        }
        return;
    }
    std::uint8_t type = 0;
    sd_bus_message_get_type(message, &type);
    if (type == SD_BUS_MESSAGE_METHOD_CALL)
        onCall(message);
    else if (type == SD_BUS_MESSAGE_METHOD_RETURN)
        onReturn(message);
}

void NotificationCapture::onCall(sd_bus_message* message) {
    std::uint64_t serial = 0;
    sd_bus_message_get_cookie(message, &serial);
    const CallKey call{text(sd_bus_message_get_sender(message)), serial};
    if (recentCallSet_.count(call))
        return;
    remember(call);

    std::optional<BusNotification> notification;
    if (sd_bus_message_is_method_call(message, "org.freedesktop.Notifications", "Notify") > 0)
        notification = readNotify(message);
    else if (sd_bus_message_is_method_call(message, "org.gtk.Notifications", "AddNotification") > 0)
        notification = readAddNotification(message, BusNotification::Door::gtk);
    else if (sd_bus_message_is_method_call(message, "org.freedesktop.impl.portal.Notification",
                                           "AddNotification") > 0)
        notification = readAddNotification(message, BusNotification::Door::portal);
    if (!notification || CapturedNotification::isOwnNotice(*notification))
        return;
    if (notification->door == BusNotification::Door::freedesktop) {
        if (awaitingId_.size() >= rememberedCalls)
            awaitingId_.clear();
        awaitingId_[call] = CapturedNotification::contentKey(*notification);
    }
    if (!isNew(*notification))
        return;
    ++status_.seen;
    if (status_.server.empty()) {
        if (ordinary_)
            askAgain_ = true;
        else
            askServer(address_);
    }
    if (listener_)
        listener_({CapturedNotification::fields(*notification),
                   CapturedNotification::bridge(*notification)});
}

void NotificationCapture::onReturn(sd_bus_message* message) {
    std::uint64_t replyTo = 0;
    if (sd_bus_message_get_reply_cookie(message, &replyTo) < 0)
        return;
    auto waiting = awaitingId_.find({text(sd_bus_message_get_destination(message)), replyTo});
    if (waiting == awaitingId_.end())
        return;
    std::uint32_t id = 0;
    if (sd_bus_message_read(message, "u", &id) >= 0 && id != 0) {
        if (textById_.size() >= rememberedTexts)
            textById_.clear();
        textById_[id] = waiting->second;
    }
    awaitingId_.erase(waiting);
}

bool NotificationCapture::isNew(const BusNotification& notification) {
    const std::string content = CapturedNotification::contentKey(notification);
    if (notification.door == BusNotification::Door::freedesktop) {
        if (notification.replacesId == 0)
            return true;
        auto known = textById_.find(notification.replacesId);
        return known == textById_.end() || known->second != content;
    }
    if (textByGtkId_.size() >= rememberedTexts)
        textByGtkId_.clear();
    std::string& seen = textByGtkId_[notification.app + '\n' + notification.id];
    const bool changed = seen != content;
    seen = content;
    return changed;
}

void NotificationCapture::remember(const CallKey& call) {
    recentCalls_.push_back(call);
    recentCallSet_.insert(call);
    if (recentCalls_.size() > rememberedCalls) {
        recentCallSet_.erase(recentCalls_.front());
        recentCalls_.pop_front();
    }
}

} // namespace ringwell
