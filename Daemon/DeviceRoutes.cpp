#include "Daemon/ApiRoutes.h"
#include "Daemon/LanListener.h"
#include "Daemon/RouteSupport.h"

namespace ringwell::routes {
namespace {

// Daemons without a LAN listener (some tests' daemons) have no such routes.
Result<LanListener*> lan(ApiState& state) {
    if (!state.services.devices)
        return Error{"this daemon has no LAN listener", Error::Kind::notFound};
    return state.services.devices;
}

} // namespace

ApiResult listDevices(const RouteRequest&, ApiState& state) {
    auto listener = lan(state);
    if (!listener)
        return listener.error();
    return ApiResponse::json(listener.value()->state());
}

ApiResult addDevice(const RouteRequest& request, ApiState& state) {
    auto listener = lan(state);
    if (!listener)
        return listener.error();
    auto body = bodyObject(request.message);
    if (!body)
        return body.error();
    auto name = decoded([&] { return json::requireString(body.value(), "name"); });
    if (!name)
        return name.error();
    auto added = listener.value()->add(name.value());
    if (!added)
        return added.error();
    const NewLanDevice& device = added.value();
    return ApiResponse::json(json::Json{{"name", device.device.name},
                                        {"token", device.token},
                                        {"url", device.url},
                                        {"addedAt", json::dateValue(device.device.addedAt)},
                                        {"problem", device.problem}},
                             201);
}

ApiResult removeDevice(const RouteRequest& request, ApiState& state) {
    auto listener = lan(state);
    if (!listener)
        return listener.error();
    auto removed = listener.value()->remove(request.parameter("name"));
    if (!removed)
        return removed.error();
    return ApiResponse::noContent();
}

} // namespace ringwell::routes
