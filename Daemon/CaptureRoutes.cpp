#include "Daemon/CaptureRoutes.h"

#include "Daemon/ApiRoutes.h"
#include "Daemon/RouteSupport.h"

#include <optional>
#include <string>
#include <vector>

namespace ringwell {

namespace {

json::Json sightingsJson(const CaptureSightings& sightings) {
    json::Json apps = json::Json::array();
    for (const auto& app : sightings.apps())
        apps.push_back({{"name", app.name},
                        {"count", app.count},
                        {"lastSeen", json::dateValue(app.lastSeen)}});
    return apps;
}

json::Json bridgesJson(const CaptureSightings& sightings) {
    json::Json bridges = json::Json::array();
    for (const auto& bridge : sightings.bridges())
        bridges.push_back({{"kind", bridge.kind},
                           {"device", bridge.device},
                           {"lastSeen", json::dateValue(bridge.lastSeen)}});
    return bridges;
}

} // namespace

json::Json captureJson(const CaptureRelay& capture) {
    const CaptureStatus status = capture.status();
    auto apps = capture.apps();
    return json::Json{{"enabled", capture.enabled()},
                      {"active", status.active},
                      {"server", status.server},
                      {"serverVersion", status.serverVersion},
                      {"seen", status.seen},
                      {"forwarded", capture.forwarded()},
                      {"apps", apps ? json::Json(*apps) : json::Json()},
                      {"seenApps", sightingsJson(capture.sightings())},
                      {"bridges", bridgesJson(capture.sightings())},
                      {"problem", status.problem}};
}

namespace routes {
namespace {

// Daemons built without a capture (some tests' daemons) have no such route.
Result<CaptureRelay*> capture(ApiState& state) {
    if (!state.services.capture)
        return Error{"this daemon does not capture notifications", Error::Kind::notFound};
    return state.services.capture;
}

// PUT's body: {"enabled": bool, "apps": [names] or null}, either key optional.
struct CaptureChange {
    std::optional<bool> enabled;
    std::optional<std::optional<std::vector<std::string>>> apps;
};

CaptureChange captureChange(const json::Json& body) {
    CaptureChange change;
    change.enabled = json::optionalBool(body, "enabled");
    // Unlike elsewhere, a null "apps" is a value of its own: every app.
    if (body.contains("apps")) {
        const json::Json& list = body.at("apps");
        change.apps = list.is_null() ? std::nullopt : std::optional(json::stringList(list, "apps"));
    }
    return change;
}

} // namespace

ApiResult captureState(const RouteRequest&, ApiState& state) {
    auto relay = capture(state);
    if (!relay)
        return relay.error();
    return ApiResponse::json(captureJson(*relay.value()));
}

ApiResult updateCapture(const RouteRequest& request, ApiState& state) {
    auto relay = capture(state);
    if (!relay)
        return relay.error();
    auto body = bodyObject(request.message);
    if (!body)
        return body.error();
    auto change = decoded([&] { return captureChange(body.value()); });
    if (!change)
        return change.error();
    if (change.value().apps)
        relay.value()->setApps(*change.value().apps);
    if (change.value().enabled)
        relay.value()->setEnabled(*change.value().enabled);
    return ApiResponse::json(captureJson(*relay.value()));
}

} // namespace routes
} // namespace ringwell
