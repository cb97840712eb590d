#pragma once

#include "Core/Json.h"
#include "TestSupport/Process.h"

#include <csignal>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ringwell::testing {

// A PulseAudio server of the test's own: Debian's `pulseaudio` with one null
// sink, the memory of streams' levels that desktops load (stream-restore) and
// a socket in `directory`, no configuration or state but what it makes
// there, stopped by its PID. `available()` is false when the program is
// not installed or does not come up.
class PrivatePulse {
public:
    struct Sink {
        bool muted = false;
        int volumePercent = 0;
    };

    explicit PrivatePulse(const std::filesystem::path& directory) : directory_(directory) {
        for (const char* sub : {"run", "home", "state"})
            std::filesystem::create_directories(directory_ / sub);
        std::filesystem::permissions(directory_ / "run", std::filesystem::perms::owner_all);
        socket_ = directory_ / "native";
        environment_ = {{"XDG_RUNTIME_DIR", (directory_ / "run").string()},
                        {"PULSE_RUNTIME_PATH", (directory_ / "run").string()},
                        {"PULSE_STATE_PATH", (directory_ / "state").string()},
                        {"HOME", (directory_ / "home").string()},
                        {"PULSE_SERVER", "unix:" + socket_.string()}};
    }
    ~PrivatePulse() { stop(); }
    PrivatePulse(const PrivatePulse&) = delete;
    PrivatePulse& operator=(const PrivatePulse&) = delete;

    // Starts the server and waits until it answers; false when it does not.
    bool start() {
        const std::string log = (directory_ / "pulse.log").string();
        const std::string protocol =
            "--load=module-native-protocol-unix auth-anonymous=1 socket=" + socket_.string();
        pid_ = ::fork();
        if (pid_ == 0) {
            for (const auto& [name, value] : environment_)
                ::setenv(name.c_str(), value.c_str(), 1);
            const int out = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
            if (out >= 0) {
                ::dup2(out, STDOUT_FILENO);
                ::dup2(out, STDERR_FILENO);
            }
            ::execlp("pulseaudio", "pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1",
                     "--use-pid-file=no", "--system=no", "--log-target=stderr",
                     "--load=module-null-sink sink_name=ringwell_test",
                     "--load=module-stream-restore", protocol.c_str(), static_cast<char*>(nullptr));
            ::_exit(127);
        }
        bool exited = false;
        eventually([&] {
            int status = 0;
            exited = ::waitpid(pid_, &status, WNOHANG) == pid_;
            return exited || sink().has_value();
        });
        if (exited)
            pid_ = -1;
        return !exited && sink().has_value();
    }

    void stop() {
        if (pid_ <= 0)
            return;
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }

    // What a client of this server needs in its environment.
    std::string serverAddress() const { return "unix:" + socket_.string(); }

    ProcessResult pactl(const std::vector<std::string>& args) const {
        std::vector<std::string> argv{"/usr/bin/pactl"};
        argv.insert(argv.end(), args.begin(), args.end());
        return runProcess(argv, environment_);
    }

    std::optional<Sink> sink() const {
        auto sinks = listed("sinks");
        if (!sinks || sinks->empty())
            return std::nullopt;
        const auto& first = (*sinks)[0];
        const auto& channel = first["volume"].begin().value();
        return Sink{first["mute"].get<bool>(),
                    static_cast<int>((channel["value"].get<double>() * 100 + 32768) / 65536)};
    }
    bool sinkIs(bool muted, int percent) const {
        auto found = sink();
        return found && found->muted == muted && found->volumePercent == percent;
    }
    void setSink(bool muted, int percent) const {
        pactl({"set-sink-volume", "ringwell_test", std::to_string(percent) + "%"});
        pactl({"set-sink-mute", "ringwell_test", muted ? "1" : "0"});
    }
    // The properties of every stream playing now.
    json::Json streams() const { return listed("sink-inputs").value_or(json::Json::array()); }
    // The properties of the first stream whose media.role is "alarm".
    std::optional<json::Json> alarmStream() const {
        for (const auto& stream : streams()) {
            const auto& properties = stream["properties"];
            if (properties.value("media.role", "") == "alarm")
                return stream;
        }
        return std::nullopt;
    }

private:
    std::optional<json::Json> listed(const std::string& what) const {
        auto result = pactl({"--format=json", "list", what});
        if (result.exitCode != 0)
            return std::nullopt;
        auto parsed = json::parse(result.out);
        if (!parsed || !parsed.value().is_array())
            return std::nullopt;
        return parsed.value();
    }

    std::filesystem::path directory_;
    std::filesystem::path socket_;
    std::map<std::string, std::string> environment_;
    pid_t pid_ = -1;
};

} // namespace ringwell::testing
