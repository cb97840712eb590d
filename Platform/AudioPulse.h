#pragma once

#include "Core/SinkBreakthrough.h"
#include "Platform/AudioSink.h"
#include "Shared/Asio.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace ringwell {

class PulseConnection;
class SinkGuard;

// Whether sound can be heard, as the status shows it.
struct AudioStatus {
    // A sound server answered the last attempt to reach it.
    bool reachable = false;
    // What answers: "pulseaudio 16.1"; empty when nothing does.
    std::string server;
    // Why there is no sound; empty when there is no known problem.
    std::string problem;
};

// Plays tone files (decoded with libsndfile) through PulseAudio's asynchronous
// API, which PipeWire's Pulse server answers too. The stream is named for the
// desktop's volume mixers: application "Ringwell", media role "alarm" (so its
// level is remembered apart from notification sounds) and the alarm's title
// as media name. It always starts unmuted at full stream volume, whatever the
// server remembers of earlier streams.
//
// While a tone plays, the sink it plays on breaks through as the settings say
// (SinkGuard): unmuted and faded up to the alarm volume, and put back at
// `stop`. A leftover record of a raised sink (a daemon killed mid-alarm) is
// acted on at the first connection.
//
// A worker thread of its own connects, decodes and drives the sink; the
// server's callbacks (which write the audio) run on the main loop's thread.
// `play` and `stop` only hand the worker a request and return. Without a
// server, the problem is posted to the io_context and `status` says so; each
// `play` tries to connect again, so a server that appears later is used by the
// next alarm.
//
// `play`, `stop` and the destructor run on the main thread; `status` on any.
class AudioPulse final : public AudioSink {
public:
    struct Options {
        // Where the sink's level is kept while raised; empty: the sink is
        // never touched (the tone picker's preview).
        std::filesystem::path savedSinkFile;
        // Read on the main thread at each `play`; none: no break-through.
        std::function<BreakthroughSettings()> settings;
        // Lines for the log, delivered on the main thread.
        std::function<void(const std::string&)> log;
        // Called on the server's thread when the first frame of a `play` has
        // been written to the server (the benchmark's finish line).
        std::function<void()> onFirstFrame;
    };

    AudioPulse(asio::io_context& context, Options options);
    ~AudioPulse() override;
    AudioPulse(const AudioPulse&) = delete;
    AudioPulse& operator=(const AudioPulse&) = delete;

    void play(const std::filesystem::path& file, const std::string& title,
              ProblemHandler onProblem) override;
    void stop() override;
    void setExtraVolume(int percent) override { extraVolume_ = percent; }
    AudioStatus status() const;

private:
    struct Request {
        std::filesystem::path file;
        std::string title;
        ProblemHandler onProblem;
        std::optional<BreakthroughSettings> breakthrough;
    };
    struct Tone;
    struct Stream;

    void run();
    bool connect();
    void start(const Request& request);
    void halt();
    void closeStream();
    void connectionChanged();
    void report(const ProblemHandler& handler, AudioProblemKind kind, std::string message);
    void setStatus(AudioStatus status);
    void log(const std::string& line);

    asio::io_context& context_;
    Options options_;
    int extraVolume_ = 0; // main thread

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::optional<Request> wanted_;
    // Every play and stop starts a new generation; the worker acts on the
    // newest only.
    std::uint64_t generation_ = 0;
    bool quitting_ = false;
    bool connectionChanged_ = false;
    AudioStatus status_;

    // The worker's own; built and torn down on its thread.
    std::unique_ptr<PulseConnection> pulse_;
    std::unique_ptr<SinkGuard> guard_;
    std::unique_ptr<Stream> stream_;
    std::thread thread_;
};

} // namespace ringwell
