#include "Platform/AudioPulse.h"

#include "Platform/PulseConnection.h"
#include "Platform/SinkGuard.h"

#include <boost/asio/post.hpp>

#include <pulse/error.h>
#include <pulse/proplist.h>
#include <pulse/stream.h>
#include <sndfile.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace ringwell {
namespace {

// A short target length keeps little audio queued in the server, which is
// what lets a stop take effect quickly.
constexpr pa_usec_t targetLatencyUsec = 50'000;
// Tones are a few seconds long; anything longer is cut here and looped.
constexpr int longestToneSeconds = 60;

struct SoundFileCloser {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
struct ProplistFree {
    void operator()(pa_proplist* list) const { pa_proplist_free(list); }
};

} // namespace

// A tone decoded into memory, so the server's thread only copies samples.
struct AudioPulse::Tone {
    pa_sample_spec format{};
    std::vector<short> samples;
};

// The stream that plays now. The server's thread reads it in `writable`; the
// worker changes it only with the loop locked.
struct AudioPulse::Stream {
    pa_stream* stream = nullptr;
    pa_threaded_mainloop* loop = nullptr;
    Tone tone;
    std::size_t position = 0;
    bool wroteFirstFrame = false;
    std::function<void()> onFirstFrame;

    static void writable(pa_stream* stream, std::size_t bytes, void* data) {
        auto* self = static_cast<Stream*>(data);
        const auto& samples = self->tone.samples;
        std::size_t wanted = bytes / sizeof(short);
        while (wanted > 0) {
            const std::size_t count = std::min(wanted, samples.size() - self->position);
            if (pa_stream_write(stream, samples.data() + self->position, count * sizeof(short),
                                nullptr, 0, PA_SEEK_RELATIVE) < 0)
                return;
            self->position = (self->position + count) % samples.size();
            wanted -= count;
        }
        if (!self->wroteFirstFrame) {
            self->wroteFirstFrame = true;
            if (self->onFirstFrame)
                self->onFirstFrame();
        }
    }
    static void stateChanged(pa_stream*, void* data) {
        pa_threaded_mainloop_signal(static_cast<Stream*>(data)->loop, 0);
    }
};

namespace {

// The whole file as 16-bit samples, or why not.
std::optional<std::string> decode(const std::filesystem::path& path, std::vector<short>& samples,
                                  pa_sample_spec& format) {
    SF_INFO info{};
    std::unique_ptr<SNDFILE, SoundFileCloser> file(sf_open(path.c_str(), SFM_READ, &info));
    if (!file || info.channels < 1 || info.samplerate < 1)
        return "cannot read " + path.string() + ": " + sf_strerror(file.get());
    format.format = PA_SAMPLE_S16NE;
    format.rate = static_cast<std::uint32_t>(info.samplerate);
    format.channels = static_cast<std::uint8_t>(std::min(info.channels, 255));
    if (info.channels > 255 || !pa_sample_spec_valid(&format))
        return "unsupported sound format in " + path.string();
    const sf_count_t frames =
        std::min<sf_count_t>(info.frames, sf_count_t{info.samplerate} * longestToneSeconds);
    samples.resize(static_cast<std::size_t>(frames) * static_cast<std::size_t>(info.channels));
    const sf_count_t read = sf_readf_short(file.get(), samples.data(), frames);
    samples.resize(static_cast<std::size_t>(std::max<sf_count_t>(read, 0)) *
                   static_cast<std::size_t>(info.channels));
    if (samples.empty())
        return path.string() + " holds no sound";
    return std::nullopt;
}

} // namespace

AudioPulse::AudioPulse(asio::io_context& context, Options options)
    : context_(context), options_(std::move(options)) {
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

void AudioPulse::play(const std::filesystem::path& file, const std::string& title,
                      ProblemHandler onProblem) {
    std::optional<BreakthroughSettings> breakthrough;
    if (options_.settings && !options_.savedSinkFile.empty()) {
        breakthrough = options_.settings();
        breakthrough->alarmVolumePercent =
            std::min(100, breakthrough->alarmVolumePercent + extraVolume_);
    }
    {
        std::lock_guard lock(mutex_);
        wanted_ = Request{file, title, std::move(onProblem), breakthrough};
        ++generation_;
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

AudioStatus AudioPulse::status() const {
    std::lock_guard lock(mutex_);
    return status_;
}

void AudioPulse::setStatus(AudioStatus status) {
    std::lock_guard lock(mutex_);
    status_ = std::move(status);
}

void AudioPulse::report(const ProblemHandler& handler, AudioProblemKind kind, std::string message) {
    if (!handler)
        return;
    asio::post(context_,
               [handler, problem = AudioProblem{kind, std::move(message)}] { handler(problem); });
}

void AudioPulse::log(const std::string& line) {
    if (options_.log)
        asio::post(context_, [log = options_.log, line] { log(line); });
}

void AudioPulse::connectionChanged() {
    {
        std::lock_guard lock(mutex_);
        connectionChanged_ = true;
    }
    wake_.notify_all();
}

bool AudioPulse::connect() {
    std::string error;
    if (pulse_->isConnected())
        return true;
    if (!pulse_->connect(error)) {
        pulse_->disconnect();
        setStatus({false, "", "No audio server is reachable (" + error + ")"});
        return false;
    }
    setStatus({true, pulse_->serverName(), ""});
    if (guard_)
        guard_->restoreLeftover();
    return true;
}

void AudioPulse::run() {
    pulse_ = std::make_unique<PulseConnection>();
    pulse_->onStateChange([this] { connectionChanged(); });
    if (!options_.savedSinkFile.empty())
        guard_ = std::make_unique<SinkGuard>(*pulse_, options_.savedSinkFile,
                                             [this](const std::string& line) { log(line); });
    // Learn at once whether there is sound, and put back a sink left raised.
    connect();

    std::uint64_t seen = 0;
    while (true) {
        std::optional<Request> request;
        bool changed = false;
        bool connectionChanged = false;
        {
            std::unique_lock lock(mutex_);
            auto ready = [&] { return quitting_ || generation_ != seen || connectionChanged_; };
            if (auto due = guard_ ? guard_->nextStep() : std::nullopt)
                wake_.wait_until(lock, *due, ready);
            else
                wake_.wait(lock, ready);
            if (quitting_)
                break;
            if (generation_ != seen) {
                seen = generation_;
                changed = true;
                request = wanted_;
            }
            connectionChanged = std::exchange(connectionChanged_, false);
        }
        if (connectionChanged && status().reachable && !pulse_->isConnected()) {
            setStatus({false, "", "The audio server went away"});
            std::optional<Request> current;
            {
                std::lock_guard lock(mutex_);
                current = wanted_;
            }
            if (stream_ && current && !changed)
                report(current->onProblem, AudioProblemKind::noAudioServer,
                       "the audio server went away");
            halt();
            pulse_->disconnect();
        }
        if (changed) {
            if (request)
                start(*request);
            else
                halt();
        }
        if (guard_) {
            auto due = guard_->nextStep();
            if (due && *due <= SinkGuard::Clock::now())
                guard_->step();
        }
    }
    halt();
    guard_.reset();
    pulse_.reset();
}

void AudioPulse::start(const Request& request) {
    auto stream = std::make_unique<Stream>();
    if (auto problem = decode(request.file, stream->tone.samples, stream->tone.format)) {
        report(request.onProblem, AudioProblemKind::playbackFailed, *problem);
        closeStream();
        return;
    }
    if (!connect()) {
        report(request.onProblem, AudioProblemKind::noAudioServer, status().problem);
        return;
    }
    closeStream();

    std::unique_ptr<pa_proplist, ProplistFree> properties(pa_proplist_new());
    pa_proplist_sets(properties.get(), PA_PROP_MEDIA_ROLE, "alarm");
    const std::string mediaName = request.title.empty() ? "Alarm" : request.title;
    pa_proplist_sets(properties.get(), PA_PROP_MEDIA_NAME, mediaName.c_str());
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_NAME, "Ringwell");
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ID, "ringwell");

    const pa_sample_spec format = stream->tone.format;
    pa_buffer_attr buffer{};
    buffer.maxlength = static_cast<std::uint32_t>(-1);
    buffer.tlength = static_cast<std::uint32_t>(pa_usec_to_bytes(targetLatencyUsec, &format));
    buffer.prebuf = static_cast<std::uint32_t>(-1);
    buffer.minreq = static_cast<std::uint32_t>(-1);
    buffer.fragsize = static_cast<std::uint32_t>(-1);
    pa_cvolume full;
    pa_cvolume_set(&full, format.channels, PA_VOLUME_NORM);

    stream->loop = pulse_->loop();
    stream->onFirstFrame = options_.onFirstFrame;
    std::optional<std::uint32_t> sinkIndex;
    std::string failure;
    {
        PulseLock lock(pulse_->loop());
        stream->stream = pa_stream_new_with_proplist(pulse_->context(), mediaName.c_str(), &format,
                                                     nullptr, properties.get());
        if (!stream->stream) {
            failure = pa_strerror(pa_context_errno(pulse_->context()));
        } else {
            pa_stream_set_state_callback(stream->stream, Stream::stateChanged, stream.get());
            pa_stream_set_write_callback(stream->stream, Stream::writable, stream.get());
            // A given volume and START_UNMUTED override what the server
            // remembers of the role's last stream.
            const auto flags =
                static_cast<pa_stream_flags_t>(PA_STREAM_START_UNMUTED | PA_STREAM_ADJUST_LATENCY);
            if (pa_stream_connect_playback(stream->stream, nullptr, &buffer, flags, &full,
                                           nullptr) < 0) {
                failure = pa_strerror(pa_context_errno(pulse_->context()));
            } else {
                pa_stream_state_t state;
                while ((state = pa_stream_get_state(stream->stream)) == PA_STREAM_CREATING)
                    pa_threaded_mainloop_wait(pulse_->loop());
                if (state == PA_STREAM_READY)
                    sinkIndex = pa_stream_get_device_index(stream->stream);
                else
                    failure = pa_strerror(pa_context_errno(pulse_->context()));
            }
        }
    }
    stream_ = std::move(stream);
    if (!sinkIndex) {
        closeStream();
        report(request.onProblem, AudioProblemKind::playbackFailed,
               "the audio server refused the alarm's stream: " + failure);
        return;
    }
    if (guard_ && request.breakthrough)
        guard_->begin(*sinkIndex, *request.breakthrough);
}

void AudioPulse::closeStream() {
    if (!stream_)
        return;
    {
        PulseLock lock(pulse_->loop());
        if (stream_->stream) {
            pa_stream_set_write_callback(stream_->stream, nullptr, nullptr);
            pa_stream_set_state_callback(stream_->stream, nullptr, nullptr);
            pa_stream_disconnect(stream_->stream);
            pa_stream_unref(stream_->stream);
        }
    }
    stream_.reset();
}

void AudioPulse::halt() {
    closeStream();
    // Without a server the record stays on disk for the next connection.
    if (guard_)
        guard_->end();
}

} // namespace ringwell
