#pragma once

#include "Core/SinkBreakthrough.h"

#include <pulse/context.h>
#include <pulse/thread-mainloop.h>
#include <pulse/volume.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace ringwell {

// What Ringwell needs to know of one sink.
struct PulseSink {
    std::uint32_t index = 0;
    std::string name;
    SinkLevel level;
    // The per-channel volumes, so a new level keeps the balance.
    pa_cvolume volume{};
    bool headphones = false;
};

// One connection to the sound server through PulseAudio's asynchronous API
// (PipeWire's Pulse server answers it too): a threaded main loop, whose own
// thread runs the server's callbacks, and a context on it named "Ringwell".
//
// The methods wait for the server's answer, so they are for a worker thread
// (AudioPulse's), never the daemon's main thread; one thread uses an object.
// `connect` may be called again after the server went away: it starts over.
class PulseConnection {
public:
    PulseConnection();
    ~PulseConnection();
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;

    // Connects unless connected; false with `error` saying why not.
    bool connect(std::string& error);
    bool isConnected();
    // Drops the context (after the server went away, or before quitting).
    void disconnect();
    // "pulseaudio 16.1", "PulseAudio (on PipeWire 1.0.5) 15.0.0": what answers.
    std::string serverName();

    std::optional<PulseSink> sinkByIndex(std::uint32_t index);
    std::optional<PulseSink> sinkByName(const std::string& name);
    // Sets the volume (scaled from `sink.volume`) and then the mute; false
    // when the server refused or went away.
    bool setSinkLevel(const PulseSink& sink, SinkLevel level);

    // Called on the main loop's thread whenever the connection's state
    // changes; the owner wakes its worker with it.
    void onStateChange(std::function<void()> callback) { stateChanged_ = std::move(callback); }

    // For the owner's stream: the loop (lock it around every call on the
    // stream) and the context (only while connected).
    pa_threaded_mainloop* loop() const { return loop_; }
    pa_context* context() const { return context_; }
    // Waits, with the loop locked, until `operation` is done; false without one.
    bool await(pa_operation* operation);

private:
    std::optional<PulseSink> awaitSink(pa_operation* operation, std::optional<PulseSink>& found);
    static void contextStateChanged(pa_context* context, void* self);

    pa_threaded_mainloop* loop_ = nullptr;
    pa_context* context_ = nullptr;
    std::function<void()> stateChanged_;
};

// Holds the loop's lock for a scope.
class PulseLock {
public:
    explicit PulseLock(pa_threaded_mainloop* loop) : loop_(loop) {
        pa_threaded_mainloop_lock(loop_);
    }
    ~PulseLock() { pa_threaded_mainloop_unlock(loop_); }
    PulseLock(const PulseLock&) = delete;
    PulseLock& operator=(const PulseLock&) = delete;

private:
    pa_threaded_mainloop* loop_;
};

} // namespace ringwell
