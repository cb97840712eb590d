#pragma once

#include "Alarms/AppContext.h"
#include "Core/Result.h"
#include "Daemon/ApiMessage.h"
#include "Shared/Asio.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace ringwell {

class CaptureRelay;
class ChangeFeed;
class LanListener;
class Watchdog;
enum class AlarmTone;

// What only the daemon's own wiring provides to the routes.
struct ApiServices {
    // What the platform tells about the machine, for the diagnostics report.
    std::string osVersion;
    std::string device;
    // The web app's live feed; none on the Unix socket's API.
    ChangeFeed* feed = nullptr;
    // Plays a tone once on the machine's speakers, for the tone picker.
    std::function<void(AlarmTone)> previewTone;
    // "http://127.0.0.1:PORT/?token=...", the web app's address with its
    // secret; empty when the web app is off.
    std::string webAddress;
    // Capture of the desktop's notifications; none in daemons without it.
    CaptureRelay* capture = nullptr;
    // Whether alarms can be heard: {"reachable", "server", "problem"}.
    std::function<json::Json()> soundStatus;
    // Plays the alarm tone for a few seconds as an alarm would sound; false
    // (and nothing played) while an alarm rings.
    std::function<bool()> testAlarmSound;
    // The devices that send over the LAN; none in daemons without it.
    LanListener* devices = nullptr;
    // The watches on forwarding; none in daemons without them.
    Watchdog* watchdog = nullptr;
};

// Everything a route works on. Main thread only.
struct ApiState {
    AppContext& ctx;
    const ApiServices& services;
};

// A request as a route sees it: the message and the values of the `{name}`
// segments of the route's pattern.
struct RouteRequest {
    const ApiRequest& message;
    std::vector<std::pair<std::string_view, std::string>> parameters;

    // The value of `{name}`; the route's pattern must have it.
    const std::string& parameter(std::string_view name) const;
};

// A route's answer, or the Error the table answers instead with the status of
// its kind (docs/errors.md).
using ApiResult = Result<ApiResponse>;

// Routes that answer at once are plain functions; only routes that wait for
// the alarm service are coroutines.
using PlainHandler = ApiResult (*)(const RouteRequest&, ApiState&);
using AwaitingHandler = Awaitable<ApiResult> (*)(const RouteRequest&, ApiState&);

// One row of the route table: a method, a path pattern such as
// "/v1/channels/{channel}/move" (a `{name}` segment matches any one segment)
// and the function that answers.
struct Route {
    std::string_view method;
    std::string_view pattern;
    std::variant<PlainHandler, AwaitingHandler> handler;
};

} // namespace ringwell
