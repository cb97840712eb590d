#pragma once

#include "Alarms/AppContext.h"
#include "Daemon/EventStream.h"
#include "Shared/Asio.h"

#include <boost/asio/steady_timer.hpp>

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// Tells the web app what changed, as server-sent events: it follows the store,
// the alarm permission, the setup test and the settings, and looks at the
// alarm service's alarms twice a second while someone listens. Each change
// becomes `event: change` with `data: {"what": "..."}`; the page refetches.
//
// Main thread only. `ctx` must outlive the feed.
class ChangeFeed {
public:
    ChangeFeed(asio::io_context& io, AppContext& ctx);
    ~ChangeFeed();
    ChangeFeed(const ChangeFeed&) = delete;
    ChangeFeed& operator=(const ChangeFeed&) = delete;

    // A new listener's stream; it is dropped once the client goes away.
    std::shared_ptr<EventStream> open();
    // Announces a change that no observed object reports ("settings").
    void publish(std::string_view what);
    // Announces a change that may come in floods ("capture", once per captured
    // notification): at most one announcement per topic every quarter second.
    void publishSoon(std::string_view what);
    // Ends every stream, at shutdown.
    void closeAll();

private:
    void watchAlarms();

    asio::io_context& io_;
    AppContext& ctx_;
    std::vector<std::shared_ptr<EventStream>> streams_;
    asio::steady_timer alarmTimer_;
    asio::steady_timer soonTimer_;
    std::set<std::string, std::less<>> soonTopics_;
    std::vector<Alarm> lastAlarms_;
    RingwellStore::ObserverToken storeToken_;
    AlarmAuthorization::Token authorizationToken_;
    SetupTestController::Token setupTestToken_;
};

} // namespace ringwell
