#pragma once

#include "Platform/AudioSink.h"
#include "Shared/Asio.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>

namespace ringwell {

// Plays tone files through the sound server with the PulseAudio simple API
// (PipeWire answers it too), decoding them with libsndfile.
//
// Playback runs on a thread of its own, which only decodes and writes audio;
// `play` and `stop` just hand it a request and return. It writes in chunks of
// 20 ms into a stream with a target latency of 50 ms and drops what is
// buffered when told to stop, so a tone goes quiet within about 100 ms.
//
// A problem (no sound server, an unreadable file) is posted to the
// io_context the sink was created with; the thread then waits for the next
// request instead of retrying.
//
// `play` and `stop` are called from the main thread; the destructor stops
// playback and joins the thread.
class AudioPulse final : public AudioSink {
public:
    explicit AudioPulse(asio::io_context& context);
    ~AudioPulse() override;
    AudioPulse(const AudioPulse&) = delete;
    AudioPulse& operator=(const AudioPulse&) = delete;

    void play(const std::filesystem::path& file, ProblemHandler onProblem) override;
    void stop() override;

private:
    struct Request {
        std::filesystem::path file;
        ProblemHandler onProblem;
        std::uint64_t generation = 0;
    };

    void run();
    void playLoop(const Request& request);
    bool isCurrent(std::uint64_t generation) const;
    void report(const Request& request, AudioProblemKind kind, std::string message);

    asio::io_context& context_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::optional<Request> wanted_;
    bool quitting_ = false;
    // Every play and stop starts a new generation; the playing loop ends as
    // soon as it sees its generation is no longer the current one.
    std::atomic<std::uint64_t> generation_{0};
    std::thread thread_;
};

} // namespace ringwell
