// From a `Notify` call on a private session bus to the fire event on disk:
// the median and p99 over 1,000 notifications one after another, then a flood
// of 1,000 notifications within one second, checking that every one of them
// was handed on and the last 200 (the history's size) are in the store file.
// Target: median under 10 ms, none lost. Run on a release build:
//   ringwell-capture-bench [BIN_DIR]
#include "../../tests/Platform/FakeNotificationServer.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <signal.h> // NOLINT(modernize-deprecated-headers): POSIX declares kill here
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

std::string readFile(const fs::path& path) {
    std::ifstream file(path);
    std::stringstream contents;
    contents << file.rdbuf();
    return contents.str();
}

std::string run(const std::string& command) {
    std::string out;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe)
        return out;
    char buffer[4096];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        out.append(buffer, n);
    ::pclose(pipe);
    return out;
}

// The number after `"key": ` in `text`, or -1.
long numberAfter(const std::string& text, const std::string& key) {
    auto at = text.find("\"" + key + "\": ");
    return at == std::string::npos ? -1 : std::atol(text.c_str() + at + key.size() + 4);
}

void notify(sd_bus* bus, const std::string& summary) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    int r = sd_bus_call_method(bus, "org.freedesktop.Notifications",
                               "/org/freedesktop/Notifications", "org.freedesktop.Notifications",
                               "Notify", &error, nullptr, "susssasa{sv}i", "Bench", 0u, "",
                               summary.c_str(), "Could you call me back?", 0, 0, -1);
    sd_bus_error_free(&error);
    if (r < 0)
        throw std::runtime_error("Notify failed: " + std::to_string(r));
}

double ms(Clock::duration d) {
    return std::chrono::duration<double, std::milli>(d).count();
}

} // namespace

int main(int argc, char** argv) {
    const fs::path bin = fs::absolute(argc > 1 ? argv[1] : "build/release/bin");
    const fs::path root =
        fs::temp_directory_path() / ("ringwell-capture-bench-" + std::to_string(::getpid()));
    fs::remove_all(root);
    for (const char* dir : {"data", "config", "run", "home", "bus"})
        fs::create_directories(root / dir);
    ringwell::platformtest::PrivateBus bus(root / "bus");
    if (!bus.available()) {
        std::cerr << "dbus-daemon is not installed\n";
        return 1;
    }
    ringwell::platformtest::FakeNotificationServer server(bus.address());
    ::setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (root / "config").c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", (root / "run").c_str(), 1);
    ::setenv("HOME", (root / "home").c_str(), 1);
    ::setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1);
    ::setenv("PULSE_SERVER", ("unix:" + (root / "no-pulse").string()).c_str(), 1);
    const std::string ringwell = (bin / "ringwell").string();

    pid_t daemon = ::fork();
    if (daemon == 0) {
        std::freopen((root / "daemon.log").c_str(), "w", stdout);
        std::freopen((root / "daemon.log").c_str(), "a", stderr);
        ::execl(ringwell.c_str(), ringwell.c_str(), "serve", "--no-web", nullptr);
        ::_exit(127);
    }
    int status = 1;
    try {
        auto deadline = Clock::now() + std::chrono::seconds(30);
        while (run(ringwell + " capture --json 2>/dev/null").find("\"active\": true") ==
               std::string::npos) {
            if (Clock::now() > deadline)
                throw std::runtime_error("capture did not become active:\n" +
                                         readFile(root / "daemon.log"));
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        // No channel: every notification is recorded as `noMatch`; no alarm rings.
        const std::string channels = run(ringwell + " channels --json");
        const auto idAt = channels.find("\"id\": \"");
        if (idAt == std::string::npos)
            throw std::runtime_error("no channel to delete: " + channels);
        run(ringwell + " channel delete " + channels.substr(idAt + 7, 36) + " >/dev/null");

        sd_bus* client = nullptr;
        if (sd_bus_new(&client) < 0 || sd_bus_set_address(client, bus.address().c_str()) < 0 ||
            sd_bus_set_bus_client(client, 1) < 0 || sd_bus_start(client) < 0)
            throw std::runtime_error("cannot connect to the private bus");
        const fs::path store = root / "data" / "ringwell" / "ringwell.json";

        std::vector<double> latencies;
        for (int i = 0; i < 1000; ++i) {
            const std::string title = "n-" + std::to_string(i);
            const std::string marker = "\"title\":\"" + title + "\"";
            auto start = Clock::now();
            notify(client, title);
            while (readFile(store).find(marker) == std::string::npos) {
                if (Clock::now() - start > std::chrono::seconds(10))
                    throw std::runtime_error(title + " never reached the store");
                std::this_thread::sleep_for(std::chrono::microseconds(100));
            }
            latencies.push_back(ms(Clock::now() - start));
        }
        std::sort(latencies.begin(), latencies.end());
        std::printf("Notify to event on disk, 1000 one after another: median %.2f ms, p99 %.2f "
                    "ms, max %.2f ms\n",
                    latencies[latencies.size() / 2], latencies[latencies.size() * 99 / 100],
                    latencies.back());

        const long before = numberAfter(run(ringwell + " capture --json"), "forwarded");
        auto floodStart = Clock::now();
        for (int i = 0; i < 1000; ++i) {
            notify(client, "f-" + std::to_string(i));
            std::this_thread::sleep_until(floodStart + std::chrono::microseconds(1000 * (i + 1)));
        }
        const double floodMs = ms(Clock::now() - floodStart);
        long forwarded = before;
        while (forwarded < before + 1000 && Clock::now() - floodStart < std::chrono::seconds(30)) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            forwarded = numberAfter(run(ringwell + " capture --json"), "forwarded");
        }
        const std::string stored = readFile(store);
        int missing = 0;
        for (int i = 800; i < 1000; ++i)
            missing +=
                stored.find("\"title\":\"f-" + std::to_string(i) + "\"") == std::string::npos;
        std::printf("Flood of 1000 in %.0f ms: %ld handed on, %d of the last 200 missing from "
                    "the store, drained after %.0f ms\n",
                    floodMs, forwarded - before, missing, ms(Clock::now() - floodStart));
        sd_bus_unref(client);
        status =
            forwarded - before == 1000 && missing == 0 && latencies[latencies.size() / 2] < 10.0
                ? 0
                : 1;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
    }
    ::kill(daemon, SIGTERM);
    ::waitpid(daemon, nullptr, 0);
    fs::remove_all(root);
    return status;
}
