#pragma once

#include <systemd/sd-bus.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

// A private session bus and a notification server on it, for testing the
// notifier against the real protocol rather than against itself.
namespace ringwell::platformtest {

// A dbus-daemon of the test's own, listening on a socket in `directory`,
// with no service activation. `available()` is false when the program is
// not installed.
class PrivateBus {
public:
    explicit PrivateBus(const std::filesystem::path& directory) {
        const auto socket = directory / "bus";
        const auto config = directory / "bus.conf";
        std::ofstream(config)
            << "<!DOCTYPE busconfig PUBLIC "
               "\"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
               "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
               "<busconfig><type>session</type>"
               "<listen>unix:path="
            << socket.string()
            << "</listen><auth>EXTERNAL</auth>"
               "<policy context=\"default\">"
               "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
               "<allow eavesdrop=\"true\"/><allow own=\"*\"/>"
               "</policy></busconfig>\n";
        address_ = "unix:path=" + socket.string();
        const std::string configArgument = "--config-file=" + config.string();
        // The daemon prints its address on this pipe once it listens: the socket
        // file alone appears at bind(), before connections are accepted.
        int ready[2];
        if (::pipe(ready) != 0)
            return;
        const std::string printArgument = "--print-address=" + std::to_string(ready[1]);
        pid_ = ::fork();
        if (pid_ == 0) {
            ::close(ready[0]);
            // Its complaints about resource limits in a container are noise here.
            const int devNull = ::open("/dev/null", O_WRONLY);
            if (devNull >= 0)
                ::dup2(devNull, STDERR_FILENO);
            ::execlp("dbus-daemon", "dbus-daemon", configArgument.c_str(), "--nofork",
                     "--nopidfile", printArgument.c_str(), static_cast<char*>(nullptr));
            ::_exit(127);
        }
        ::close(ready[1]);
        // A hang guard only: the address comes within milliseconds, or never
        // (the program is missing and the pipe closes at once).
        pollfd reader{ready[0], POLLIN, 0};
        char byte = 0;
        available_ = pid_ > 0 && ::poll(&reader, 1, 30000) == 1 && ::read(ready[0], &byte, 1) == 1;
        ::close(ready[0]);
    }
    ~PrivateBus() {
        if (pid_ > 0) {
            ::kill(pid_, SIGTERM);
            ::waitpid(pid_, nullptr, 0);
        }
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    bool available() const { return available_; }
    const std::string& address() const { return address_; }

private:
    pid_t pid_ = -1;
    bool available_ = false;
    std::string address_;
};

// Owns org.freedesktop.Notifications and org.gtk.Notifications on the bus and
// answers Notify, CloseNotification, AddNotification (GTK's and the portal's)
// and GetServerInformation from a thread of its own, recording every notice
// and every close; it has Plasma's `Inhibited` property and dunst 1.9.0's
// `paused` (without `pauseLevel`). A notice whose
// summary is "refuse me" gets an error reply. `invoke`, `close` and
// `setInhibited`, `setPaused` send the server's signals, as a person using the desktop
// would cause them.
class FakeNotificationServer {
public:
    struct Notice {
        std::string appName;
        std::uint32_t replacesId = 0;
        std::string summary;
        std::string body;
        std::vector<std::string> actions; // key, label, key, label...
        // Every hint, its value written out: booleans "true"/"false", bytes
        // and integers in decimal, strings as they are.
        std::map<std::string, std::string> hints;
        std::int32_t expireTimeout = 0;
        std::uint32_t id = 0;
    };

    explicit FakeNotificationServer(const std::string& address, std::string name = "fake")
        : name_(std::move(name)) {
        if (sd_bus_new(&bus_) < 0 || sd_bus_set_address(bus_, address.c_str()) < 0 ||
            sd_bus_set_bus_client(bus_, 1) < 0 || sd_bus_start(bus_) < 0)
            fail("the fake server cannot reach the bus");
        if (sd_bus_add_object_vtable(bus_, nullptr, "/org/freedesktop/Notifications",
                                     "org.freedesktop.Notifications", vtable, this) < 0 ||
            sd_bus_add_object_vtable(bus_, nullptr, "/org/freedesktop/Notifications",
                                     "org.dunstproject.cmd0", dunstVtable, this) < 0 ||
            sd_bus_request_name(bus_, "org.freedesktop.Notifications", 0) < 0 ||
            sd_bus_add_object_vtable(bus_, nullptr, "/org/gtk/Notifications",
                                     "org.gtk.Notifications", addVtable, this) < 0 ||
            sd_bus_add_object_vtable(bus_, nullptr, "/org/freedesktop/portal/desktop",
                                     "org.freedesktop.impl.portal.Notification", addVtable,
                                     this) < 0 ||
            sd_bus_request_name(bus_, "org.gtk.Notifications", 0) < 0)
            fail("the fake server cannot take its name");
        thread_ = std::thread([this] {
            while (!stopping_) {
                sendQueuedSignals();
                while (sd_bus_process(bus_, nullptr) > 0) {
                }
                sd_bus_wait(bus_, 20'000);
            }
        });
    }
    ~FakeNotificationServer() {
        stopping_ = true;
        thread_.join();
        sd_bus_flush_close_unref(bus_);
    }
    FakeNotificationServer(const FakeNotificationServer&) = delete;
    FakeNotificationServer& operator=(const FakeNotificationServer&) = delete;

    std::vector<Notice> notices() const {
        std::lock_guard lock(mutex_);
        return notices_;
    }
    // The ids given to CloseNotification, in order.
    std::vector<std::uint32_t> closed() const {
        std::lock_guard lock(mutex_);
        return closed_;
    }

    void invoke(std::uint32_t id, const std::string& key) {
        queue([=](sd_bus* bus) {
            sd_bus_emit_signal(bus, "/org/freedesktop/Notifications",
                               "org.freedesktop.Notifications", "ActionInvoked", "us", id,
                               key.c_str());
        });
    }
    // Reasons: 1 expired, 2 dismissed by the person, 3 closed by a call.
    void close(std::uint32_t id, std::uint32_t reason) {
        queue([=](sd_bus* bus) {
            sd_bus_emit_signal(bus, "/org/freedesktop/Notifications",
                               "org.freedesktop.Notifications", "NotificationClosed", "uu", id,
                               reason);
        });
    }
    void setInhibited(bool inhibited) {
        change(inhibited_, inhibited, "org.freedesktop.Notifications", "Inhibited");
    }
    void setPaused(bool paused) { change(paused_, paused, "org.dunstproject.cmd0", "paused"); }

private:
    void change(std::atomic<bool>& flag, bool value, const char* interface, const char* property) {
        queue([=, &flag](sd_bus* bus) {
            flag = value;
            sd_bus_emit_properties_changed(bus, "/org/freedesktop/Notifications", interface,
                                           property, nullptr);
        });
    }
    // Signals are sent from the server's thread, which alone uses its bus.
    void queue(std::function<void(sd_bus*)> send) {
        std::lock_guard lock(mutex_);
        queued_.push_back(std::move(send));
    }
    void sendQueuedSignals() {
        std::vector<std::function<void(sd_bus*)>> sends;
        {
            std::lock_guard lock(mutex_);
            sends.swap(queued_);
        }
        for (auto& send : sends)
            send(bus_);
        if (!sends.empty())
            sd_bus_flush(bus_);
    }

    [[noreturn]] void fail(const char* what) {
        sd_bus_flush_close_unref(bus_);
        throw std::runtime_error(what);
    }

    static int onNotify(sd_bus_message* message, void* userdata, sd_bus_error*) {
        auto* self = static_cast<FakeNotificationServer*>(userdata);
        Notice notice;
        const char *app = nullptr, *icon = nullptr, *summary = nullptr, *body = nullptr;
        sd_bus_message_read(message, "susss", &app, &notice.replacesId, &icon, &summary, &body);
        notice.appName = app;
        notice.summary = summary;
        notice.body = body;
        sd_bus_message_enter_container(message, 'a', "s");
        const char* action = nullptr;
        while (sd_bus_message_read(message, "s", &action) > 0)
            notice.actions.emplace_back(action);
        sd_bus_message_exit_container(message);
        sd_bus_message_enter_container(message, 'a', "{sv}");
        while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
            const char* key = nullptr;
            sd_bus_message_read(message, "s", &key);
            notice.hints[key] = hintValue(message);
            sd_bus_message_exit_container(message);
        }
        sd_bus_message_exit_container(message);
        sd_bus_message_read(message, "i", &notice.expireTimeout);

        if (notice.summary == "refuse me")
            return sd_bus_reply_method_errorf(message, "org.freedesktop.DBus.Error.Failed",
                                              "refused by the fake server");
        std::lock_guard lock(self->mutex_);
        notice.id = notice.replacesId != 0 ? notice.replacesId : self->nextId_++;
        self->notices_.push_back(notice);
        return sd_bus_reply_method_return(message, "u", notice.id);
    }

    static std::string hintValue(sd_bus_message* message) {
        const char* contents = nullptr;
        char type = 0;
        sd_bus_message_peek_type(message, &type, &contents);
        std::string value;
        sd_bus_message_enter_container(message, 'v', contents);
        if (std::string(contents) == "b") {
            int flag = 0;
            sd_bus_message_read(message, "b", &flag);
            value = flag ? "true" : "false";
        } else if (std::string(contents) == "y") {
            std::uint8_t byte = 0;
            sd_bus_message_read(message, "y", &byte);
            value = std::to_string(byte);
        } else if (std::string(contents) == "s") {
            const char* text = nullptr;
            sd_bus_message_read(message, "s", &text);
            value = text;
        } else {
            sd_bus_message_skip(message, contents);
            value = "?";
        }
        sd_bus_message_exit_container(message);
        return value;
    }

    // Closes as a server does: the close is recorded and announced.
    static int onCloseNotification(sd_bus_message* message, void* userdata, sd_bus_error*) {
        auto* self = static_cast<FakeNotificationServer*>(userdata);
        std::uint32_t id = 0;
        sd_bus_message_read(message, "u", &id);
        {
            std::lock_guard lock(self->mutex_);
            self->closed_.push_back(id);
        }
        sd_bus_emit_signal(sd_bus_message_get_bus(message), "/org/freedesktop/Notifications",
                           "org.freedesktop.Notifications", "NotificationClosed", "uu", id, 3u);
        return sd_bus_reply_method_return(message, "");
    }

    static int onInhibited(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply,
                           void* userdata, sd_bus_error*) {
        auto* self = static_cast<FakeNotificationServer*>(userdata);
        return sd_bus_message_append(reply, "b", self->inhibited_ ? 1 : 0);
    }

    static int onPaused(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply,
                        void* userdata, sd_bus_error*) {
        auto* self = static_cast<FakeNotificationServer*>(userdata);
        return sd_bus_message_append(reply, "b", self->paused_ ? 1 : 0);
    }

    // GTK's and the portal's AddNotification: taken and not kept.
    static int onAddNotification(sd_bus_message* message, void*, sd_bus_error*) {
        return sd_bus_reply_method_return(message, "");
    }

    static int onServerInformation(sd_bus_message* message, void* userdata, sd_bus_error*) {
        auto* self = static_cast<FakeNotificationServer*>(userdata);
        return sd_bus_reply_method_return(message, "ssss", self->name_.c_str(), "ringwell-tests",
                                          "1", "1.2");
    }

    static constexpr sd_bus_vtable vtable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("Notify", "susssasa{sv}i", "u", onNotify, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("GetServerInformation", "", "ssss", onServerInformation,
                      SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("CloseNotification", "u", "", onCloseNotification,
                      SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_PROPERTY("Inhibited", "b", onInhibited, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
        SD_BUS_VTABLE_END};
    static constexpr sd_bus_vtable dunstVtable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_PROPERTY("paused", "b", onPaused, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
        SD_BUS_VTABLE_END};
    static constexpr sd_bus_vtable addVtable[] = {SD_BUS_VTABLE_START(0),
                                                  SD_BUS_METHOD("AddNotification", "ssa{sv}", "",
                                                                onAddNotification,
                                                                SD_BUS_VTABLE_UNPRIVILEGED),
                                                  SD_BUS_VTABLE_END};

    sd_bus* bus_ = nullptr;
    std::thread thread_;
    std::atomic<bool> stopping_{false};
    std::string name_;
    std::atomic<bool> inhibited_{false};
    std::atomic<bool> paused_{false};
    mutable std::mutex mutex_;
    std::vector<Notice> notices_;
    std::vector<std::uint32_t> closed_;
    std::vector<std::function<void(sd_bus*)>> queued_;
    std::uint32_t nextId_ = 7;
};

} // namespace ringwell::platformtest
