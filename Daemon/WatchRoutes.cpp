#include "Alarms/Watchdog.h"
#include "Core/Whitespace.h"
#include "Daemon/ApiRoutes.h"
#include "Daemon/RouteSupport.h"

#include <algorithm>

namespace ringwell::routes {
namespace {

// Daemons without a watchdog (some tests' daemons) have no such routes.
Result<Watchdog*> watchdog(ApiState& state) {
    if (!state.services.watchdog)
        return Error{"this daemon has no watchdog", Error::Kind::notFound};
    return state.services.watchdog;
}

json::Json toJson(const Watchdog::Status& status) {
    json::Json out = ringwell::toJson(status.watch);
    out["summary"] = status.watch.summary();
    if (status.lastHeard)
        out["lastHeard"] = json::dateValue(*status.lastHeard);
    if (status.dueAt)
        out["dueAt"] = json::dateValue(*status.dueAt);
    out["isSilent"] = status.isSilent;
    if (status.isSilent)
        out["silentSince"] =
            json::dateValue(status.lastHeard ? std::max(*status.lastHeard, status.watch.since)
                                             : status.watch.since);
    return out;
}

// {"app", "everySeconds", "hours"?, "ring"?: CHANNEL} as a watch; the channel
// to ring is resolved as any CHANNEL of a request.
Result<WatchExpectation> watchFromBody(const json::Json& body, const RingwellStore& store) {
    auto watch = decoded([&] {
        WatchExpectation read;
        read.app = json::requireString(body, "app");
        read.everySeconds = json::requireInt(body, "everySeconds");
        if (const json::Json* hours = json::member(body, "hours"); hours && !hours->is_null())
            read.hours = activeHoursFromJson(*hours);
        return std::pair{read, json::optionalString(body, "ring")};
    });
    if (!watch)
        return watch.error();
    auto [read, ring] = std::move(watch).value();
    if (ring && !text::isBlank(*ring)) {
        auto channel = resolveChannel(store, *ring);
        if (!channel)
            return channel.error();
        read.ring = channel.value().id;
    }
    return read;
}

} // namespace

ApiResult listWatches(const RouteRequest&, ApiState& state) {
    auto dog = watchdog(state);
    if (!dog)
        return dog.error();
    json::Json watches = json::Json::array();
    for (const auto& status : dog.value()->list())
        watches.push_back(toJson(status));
    json::Json out{{"watches", std::move(watches)}};
    if (auto since = dog.value()->captureSilentSince())
        out["captureSilentSince"] = json::dateValue(*since);
    return ApiResponse::json(out);
}

ApiResult addWatch(const RouteRequest& request, ApiState& state) {
    auto dog = watchdog(state);
    if (!dog)
        return dog.error();
    auto body = bodyObject(request.message);
    if (!body)
        return body.error();
    auto watch = watchFromBody(body.value(), state.ctx.store);
    if (!watch)
        return watch.error();
    auto added = dog.value()->add(std::move(watch).value());
    if (!added)
        return added.error();
    for (const auto& status : dog.value()->list()) {
        if (status.watch.app == added.value().app)
            return ApiResponse::json(toJson(status));
    }
    return Error{"the watch was not kept", Error::Kind::failed};
}

ApiResult removeWatch(const RouteRequest& request, ApiState& state) {
    auto dog = watchdog(state);
    if (!dog)
        return dog.error();
    const std::string& app = request.parameter("app");
    if (!dog.value()->remove(app))
        return Error{"no watch on " + app, Error::Kind::notFound};
    return ApiResponse::noContent();
}

} // namespace ringwell::routes
