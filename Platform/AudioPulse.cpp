#include "Platform/AudioPulse.h"

#include <boost/asio/post.hpp>

#include <pulse/error.h>
#include <pulse/simple.h>
#include <sndfile.h>

#include <memory>
#include <vector>

namespace ringwell {
namespace {

constexpr pa_usec_t targetLatencyUsec = 50'000;
constexpr int chunksPerSecond = 50; // 20 ms per write

struct SoundFileCloser {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
struct StreamCloser {
    void operator()(pa_simple* stream) const { pa_simple_free(stream); }
};

} // namespace

AudioPulse::AudioPulse(asio::io_context& context) : context_(context) {
    thread_ = std::thread([this] { run(); });
}

AudioPulse::~AudioPulse() {
    {
        std::lock_guard lock(mutex_);
        quitting_ = true;
        wanted_.reset();
        ++generation_;
    }
    wake_.notify_all();
    thread_.join();
}

void AudioPulse::play(const std::filesystem::path& file, ProblemHandler onProblem) {
    {
        std::lock_guard lock(mutex_);
        wanted_ = Request{file, std::move(onProblem), ++generation_};
    }
    wake_.notify_all();
}

void AudioPulse::stop() {
    {
        std::lock_guard lock(mutex_);
        if (!wanted_)
            return;
        wanted_.reset();
        ++generation_;
    }
    wake_.notify_all();
}

bool AudioPulse::isCurrent(std::uint64_t generation) const {
    return generation_ == generation;
}

void AudioPulse::report(const Request& request, AudioProblemKind kind, std::string message) {
    if (!request.onProblem)
        return;
    asio::post(context_, [handler = request.onProblem,
                          problem = AudioProblem{kind, std::move(message)}] { handler(problem); });
}

void AudioPulse::run() {
    std::uint64_t played = 0;
    while (true) {
        Request request;
        {
            std::unique_lock lock(mutex_);
            wake_.wait(lock,
                       [&] { return quitting_ || (wanted_ && wanted_->generation != played); });
            if (quitting_)
                return;
            request = *wanted_;
            played = request.generation;
        }
        playLoop(request);
    }
}

void AudioPulse::playLoop(const Request& request) {
    SF_INFO info{};
    std::unique_ptr<SNDFILE, SoundFileCloser> file(sf_open(request.file.c_str(), SFM_READ, &info));
    if (!file || info.channels < 1 || info.samplerate < 1) {
        report(request, AudioProblemKind::playbackFailed,
               "cannot read " + request.file.string() + ": " + sf_strerror(file.get()));
        return;
    }

    pa_sample_spec sampleFormat{};
    sampleFormat.format = PA_SAMPLE_S16NE;
    sampleFormat.rate = static_cast<std::uint32_t>(info.samplerate);
    sampleFormat.channels = static_cast<std::uint8_t>(info.channels);
    if (!pa_sample_spec_valid(&sampleFormat)) {
        report(request, AudioProblemKind::playbackFailed,
               "unsupported sound format in " + request.file.string());
        return;
    }
    // A short target length keeps little audio queued in the server, which is
    // what lets a stop take effect quickly.
    pa_buffer_attr buffer{};
    buffer.maxlength = static_cast<std::uint32_t>(-1);
    buffer.tlength = static_cast<std::uint32_t>(pa_usec_to_bytes(targetLatencyUsec, &sampleFormat));
    buffer.prebuf = static_cast<std::uint32_t>(-1);
    buffer.minreq = static_cast<std::uint32_t>(-1);
    buffer.fragsize = static_cast<std::uint32_t>(-1);

    int error = 0;
    std::unique_ptr<pa_simple, StreamCloser> stream(
        pa_simple_new(nullptr, "Ringwell", PA_STREAM_PLAYBACK, nullptr, "Alarm", &sampleFormat,
                      nullptr, &buffer, &error));
    if (!stream) {
        report(request, AudioProblemKind::noAudioServer, pa_strerror(error));
        return;
    }

    const auto framesPerChunk = static_cast<sf_count_t>(info.samplerate / chunksPerSecond + 1);
    std::vector<short> samples(static_cast<std::size_t>(framesPerChunk) *
                               static_cast<std::size_t>(info.channels));
    bool readSinceRewind = false;
    while (isCurrent(request.generation)) {
        const sf_count_t frames = sf_readf_short(file.get(), samples.data(), framesPerChunk);
        if (frames <= 0) {
            // The end of the tone: start it again. A file that yields nothing
            // even right after a rewind would spin, so it ends playback.
            if (!readSinceRewind || sf_seek(file.get(), 0, SEEK_SET) < 0) {
                report(request, AudioProblemKind::playbackFailed,
                       "cannot loop " + request.file.string());
                break;
            }
            readSinceRewind = false;
            continue;
        }
        readSinceRewind = true;
        const auto bytes = static_cast<std::size_t>(frames) *
                           static_cast<std::size_t>(info.channels) * sizeof(short);
        if (pa_simple_write(stream.get(), samples.data(), bytes, &error) < 0) {
            report(request, AudioProblemKind::noAudioServer, pa_strerror(error));
            break;
        }
    }
    pa_simple_flush(stream.get(), &error);
}

} // namespace ringwell
