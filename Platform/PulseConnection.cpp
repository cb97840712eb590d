#include "Platform/PulseConnection.h"

#include <pulse/error.h>
#include <pulse/introspect.h>
#include <pulse/proplist.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace ringwell {
namespace {

struct ProplistFree {
    void operator()(pa_proplist* list) const { pa_proplist_free(list); }
};

bool isFinal(pa_context_state_t state) {
    return state == PA_CONTEXT_READY || !PA_CONTEXT_IS_GOOD(state);
}

PulseSink sinkFrom(const pa_sink_info& info) {
    PulseSink sink;
    sink.index = info.index;
    sink.name = info.name ? info.name : "";
    sink.volume = info.volume;
    sink.level = SinkLevel{info.mute != 0,
                           static_cast<double>(pa_cvolume_max(&info.volume)) / PA_VOLUME_NORM};
    if (info.active_port) {
        const auto type = info.active_port->type;
        sink.headphones = SinkBreakthrough::isHeadphonePort(
            info.active_port->name ? info.active_port->name : "",
            type == PA_DEVICE_PORT_TYPE_HEADPHONES || type == PA_DEVICE_PORT_TYPE_HEADSET);
    }
    return sink;
}

// The answer of one sink query, filled on the loop's thread.
struct SinkQuery {
    pa_threaded_mainloop* loop;
    std::optional<PulseSink>* found;
};

void sinkAnswered(pa_context*, const pa_sink_info* info, int, void* data) {
    auto* query = static_cast<SinkQuery*>(data);
    if (info)
        *query->found = sinkFrom(*info);
    pa_threaded_mainloop_signal(query->loop, 0);
}

struct Outcome {
    pa_threaded_mainloop* loop;
    bool succeeded = false;
};

void operationDone(pa_context*, int success, void* data) {
    auto* outcome = static_cast<Outcome*>(data);
    outcome->succeeded = success != 0;
    pa_threaded_mainloop_signal(outcome->loop, 0);
}

} // namespace

PulseConnection::PulseConnection() {
    loop_ = pa_threaded_mainloop_new();
    pa_threaded_mainloop_set_name(loop_, "ringwell-pulse");
    pa_threaded_mainloop_start(loop_);
}

PulseConnection::~PulseConnection() {
    disconnect();
    pa_threaded_mainloop_stop(loop_);
    pa_threaded_mainloop_free(loop_);
}

void PulseConnection::contextStateChanged(pa_context*, void* self) {
    auto* connection = static_cast<PulseConnection*>(self);
    pa_threaded_mainloop_signal(connection->loop_, 0);
    if (connection->stateChanged_)
        connection->stateChanged_();
}

bool PulseConnection::connect(std::string& error) {
    PulseLock lock(loop_);
    if (context_ && pa_context_get_state(context_) == PA_CONTEXT_READY)
        return true;
    if (context_) {
        pa_context_set_state_callback(context_, nullptr, nullptr);
        pa_context_disconnect(context_);
        pa_context_unref(context_);
        context_ = nullptr;
    }
    std::unique_ptr<pa_proplist, ProplistFree> properties(pa_proplist_new());
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_NAME, "Ringwell");
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ID, "ringwell");
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ICON_NAME, "ringwell");
    context_ = pa_context_new_with_proplist(pa_threaded_mainloop_get_api(loop_), "Ringwell",
                                            properties.get());
    pa_context_set_state_callback(context_, contextStateChanged, this);
    // No autospawn: a daemon must not start a sound server of its own.
    if (pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        error = pa_strerror(pa_context_errno(context_));
        return false;
    }
    while (!isFinal(pa_context_get_state(context_)))
        pa_threaded_mainloop_wait(loop_);
    if (pa_context_get_state(context_) == PA_CONTEXT_READY)
        return true;
    error = pa_strerror(pa_context_errno(context_));
    return false;
}

bool PulseConnection::isConnected() {
    PulseLock lock(loop_);
    return context_ && pa_context_get_state(context_) == PA_CONTEXT_READY;
}

void PulseConnection::disconnect() {
    PulseLock lock(loop_);
    if (!context_)
        return;
    pa_context_set_state_callback(context_, nullptr, nullptr);
    pa_context_disconnect(context_);
    pa_context_unref(context_);
    context_ = nullptr;
}

std::string PulseConnection::serverName() {
    PulseLock lock(loop_);
    if (!context_)
        return "";
    struct Query {
        pa_threaded_mainloop* loop;
        std::string name;
    } query{loop_, ""};
    await(pa_context_get_server_info(
        context_,
        [](pa_context*, const pa_server_info* info, void* data) {
            auto* answer = static_cast<Query*>(data);
            if (info)
                answer->name = std::string(info->server_name ? info->server_name : "") + " " +
                               (info->server_version ? info->server_version : "");
            pa_threaded_mainloop_signal(answer->loop, 0);
        },
        &query));
    return query.name;
}

bool PulseConnection::await(pa_operation* operation) {
    if (!operation)
        return false;
    // The context's state callback also signals, so a server that goes away
    // mid-operation (which cancels it) ends the wait too.
    while (pa_operation_get_state(operation) == PA_OPERATION_RUNNING)
        pa_threaded_mainloop_wait(loop_);
    pa_operation_unref(operation);
    return true;
}

std::optional<PulseSink> PulseConnection::awaitSink(pa_operation* operation,
                                                    std::optional<PulseSink>& found) {
    await(operation);
    return found;
}

std::optional<PulseSink> PulseConnection::sinkByIndex(std::uint32_t index) {
    PulseLock lock(loop_);
    if (!context_)
        return std::nullopt;
    std::optional<PulseSink> found;
    SinkQuery query{loop_, &found};
    return awaitSink(pa_context_get_sink_info_by_index(context_, index, sinkAnswered, &query),
                     found);
}

std::optional<PulseSink> PulseConnection::sinkByName(const std::string& name) {
    PulseLock lock(loop_);
    if (!context_)
        return std::nullopt;
    std::optional<PulseSink> found;
    SinkQuery query{loop_, &found};
    return awaitSink(pa_context_get_sink_info_by_name(context_, name.c_str(), sinkAnswered, &query),
                     found);
}

bool PulseConnection::setSinkLevel(const PulseSink& sink, SinkLevel level) {
    PulseLock lock(loop_);
    if (!context_)
        return false;
    pa_cvolume volume = sink.volume;
    const auto wanted = static_cast<pa_volume_t>(
        std::lround(std::clamp(level.volume, 0.0, 1.5) * static_cast<double>(PA_VOLUME_NORM)));
    if (!pa_cvolume_valid(&volume))
        pa_cvolume_set(&volume, 1, wanted);
    else
        pa_cvolume_scale(&volume, wanted);
    // The volume first, so a sink coming out of mute is heard at the new level.
    Outcome volumeSet{loop_};
    Outcome muteSet{loop_};
    await(pa_context_set_sink_volume_by_index(context_, sink.index, &volume, operationDone,
                                              &volumeSet));
    await(pa_context_set_sink_mute_by_index(context_, sink.index, level.muted ? 1 : 0,
                                            operationDone, &muteSet));
    return volumeSet.succeeded && muteSet.succeeded;
}

} // namespace ringwell
