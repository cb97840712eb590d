// From an alarm going off to the first frame of its tone written to the sound
// server: the alarm service's timer has fired (processDueAlarms), the tone is
// decoded, a stream is opened and the server asks for audio. Measured against
// a private pulseaudio with a null sink, over 50 rings; the figure is the
// median, in the counter "median_ms". Target: under 100 ms.

#include "Alarms/Logger.h"
#include "Alarms/NoticeCenter.h"
#include "Model/Clock.h"
#include "Platform/AudioPulse.h"
#include "Platform/BundledSounds.h"
#include "Platform/LocalAlarmService.h"
#include "TestSupport/PrivatePulse.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <vector>

namespace {

using namespace ringwell;
namespace fs = std::filesystem;

class SteppedClock final : public Clock {
public:
    Date now() const override { return now_; }
    void advance(double seconds) { now_ = now_.addingSeconds(seconds); }

private:
    Date now_ = Date::fromUnixSeconds(1.8e9);
};

class QuietNotices final : public NoticeCenter {
public:
    Awaitable<void> add(NoticeRequest) override { co_return; }
    Awaitable<void> withdraw(std::string) override { co_return; }
    std::string permissionStatus() const override { return "allowed"; }
};

class QuietLogger final : public Logger {
public:
    void log(LogLevel, std::string_view, std::string_view) override {}
};

// Signalled from the server's thread when a ring's first frame is written.
struct FirstFrame {
    std::mutex mutex;
    std::condition_variable written;
    bool seen = false;

    void signal() {
        std::lock_guard lock(mutex);
        seen = true;
        written.notify_all();
    }
    bool wait() {
        std::unique_lock lock(mutex);
        const bool ok = written.wait_for(lock, std::chrono::seconds(10), [&] { return seen; });
        seen = false;
        return ok;
    }
};

void BM_AlarmToFirstFrame(benchmark::State& state) {
    char pattern[] = "/tmp/rw-audio-bench-XXXXXX";
    const fs::path directory = ::mkdtemp(pattern);
    testing::PrivatePulse pulse(directory / "pulse");
    if (!pulse.start()) {
        state.SkipWithError("pulseaudio is not available");
        return;
    }
    ::setenv("PULSE_SERVER", pulse.serverAddress().c_str(), 1);
    pulse.setSink(true, 40);

    asio::io_context io;
    SteppedClock clock;
    QuietNotices notices;
    QuietLogger logger;
    FirstFrame firstFrame;
    AudioPulse audio(io, {directory / "raised-sink.json",
                          [] {
                              return BreakthroughSettings{true, 70};
                          },
                          nullptr, [&] { firstFrame.signal(); }});
    LocalAlarmService service(
        io, clock, audio, notices, logger,
        {directory / "alarms.json", directory / "Sounds", BundledSounds::defaultTone()});
    service.setAuthorization(AlarmAuthorizationState::authorized);

    std::vector<double> milliseconds;
    for (auto _ : state) {
        AlarmConfiguration configuration;
        configuration.countdownDuration.preAlert = 1;
        configuration.attributes.presentation.alert.title = "Bench: ring";
        const Uuid id = Uuid::random();
        asio::co_spawn(io, service.schedule(id, configuration), asio::detached);
        io.restart();
        io.poll();
        clock.advance(1);

        const auto start = std::chrono::steady_clock::now();
        service.processDueAlarms();
        if (!firstFrame.wait()) {
            state.SkipWithError("no frame reached the server");
            break;
        }
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(elapsed.count());
        milliseconds.push_back(elapsed.count() * 1000);
        service.stop(id);
        io.restart();
        io.poll();
    }
    if (!milliseconds.empty()) {
        std::sort(milliseconds.begin(), milliseconds.end());
        state.counters["median_ms"] = milliseconds[milliseconds.size() / 2];
        state.counters["max_ms"] = milliseconds.back();
    }
    pulse.stop();
    std::error_code ignored;
    fs::remove_all(directory, ignored);
}
BENCHMARK(BM_AlarmToFirstFrame)->Iterations(50)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
