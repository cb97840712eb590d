#include "Daemon/ChangeFeed.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace ringwell {
namespace {

std::string_view name(StoreChange change) {
    switch (change) {
    case StoreChange::channels:
        return "channels";
    case StoreChange::events:
        return "events";
    case StoreChange::setupWarning:
        return "setupWarning";
    case StoreChange::saveError:
        return "saveError";
    }
    return "channels";
}

} // namespace

ChangeFeed::ChangeFeed(asio::io_context& io, AppContext& ctx)
    : io_(io), ctx_(ctx), alarmTimer_(io), soonTimer_(io) {
    storeToken_ = ctx_.store.subscribe([this](StoreChange change) { publish(name(change)); });
    authorizationToken_ =
        ctx_.authorization.subscribe([this](AlarmAuthorizationState) { publish("authorization"); });
    setupTestToken_ = ctx_.setupTest.subscribe(
        [this](const SetupTestController::State&) { publish("setupTest"); });
}

ChangeFeed::~ChangeFeed() {
    closeAll();
    ctx_.store.unsubscribe(storeToken_);
    ctx_.authorization.unsubscribe(authorizationToken_);
    ctx_.setupTest.unsubscribe(setupTestToken_);
}

std::shared_ptr<EventStream> ChangeFeed::open() {
    auto stream = std::make_shared<EventStream>(io_.get_executor());
    bool wasIdle = streams_.empty();
    streams_.push_back(stream);
    if (wasIdle) {
        lastAlarms_ = ctx_.alarmService.alarms();
        watchAlarms();
    }
    return stream;
}

void ChangeFeed::publish(std::string_view what) {
    std::erase_if(streams_, [](const auto& stream) { return stream->isClosed(); });
    std::string message = "event: change\ndata: {\"what\":\"" + std::string(what) + "\"}\n\n";
    for (const auto& stream : streams_)
        stream->push(message);
}

void ChangeFeed::publishSoon(std::string_view what) {
    const bool idle = soonTopics_.empty();
    soonTopics_.emplace(what);
    if (!idle)
        return;
    soonTimer_.expires_after(std::chrono::milliseconds(250));
    soonTimer_.async_wait([this](const boost::system::error_code& ec) {
        if (ec)
            return;
        for (const auto& topic : std::exchange(soonTopics_, {}))
            publish(topic);
    });
}

void ChangeFeed::closeAll() {
    for (const auto& stream : streams_)
        stream->close();
    streams_.clear();
    alarmTimer_.cancel();
    soonTimer_.cancel();
    soonTopics_.clear();
}

// The alarm service reports no changes of its own (alarms also change by
// themselves, when a countdown ends), so the feed compares snapshots.
void ChangeFeed::watchAlarms() {
    alarmTimer_.expires_after(std::chrono::milliseconds(500));
    alarmTimer_.async_wait([this](const boost::system::error_code& ec) {
        if (ec)
            return;
        std::erase_if(streams_, [](const auto& stream) { return stream->isClosed(); });
        if (streams_.empty())
            return;
        auto alarms = ctx_.alarmService.alarms();
        if (alarms != lastAlarms_) {
            lastAlarms_ = std::move(alarms);
            publish("alarms");
        }
        watchAlarms();
    });
}

} // namespace ringwell
