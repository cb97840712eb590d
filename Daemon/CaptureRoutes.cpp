#include "Daemon/CaptureRoutes.h"

namespace ringwell {

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
                      {"problem", status.problem}};
}

std::optional<ApiResponse> captureRoute(CaptureRelay* capture, const ApiRequest& request) {
    if (request.path != "/v1/capture")
        return std::nullopt;
    if (!capture)
        return ApiResponse::error(404, "this daemon does not capture notifications");
    if (request.method == "GET")
        return ApiResponse::json(captureJson(*capture));
    if (request.method != "PUT")
        return ApiResponse::error(405, "use GET or PUT");
    try {
        auto body = json::parse(request.body);
        if (!body)
            return ApiResponse::error(400, body.error().message);
        json::requireObject(body.value(), "capture");
        auto enabled = json::optionalBool(body.value(), "enabled");
        std::optional<std::optional<std::vector<std::string>>> apps;
        if (const json::Json* list = json::member(body.value(), "apps"))
            apps = list->is_null() ? std::nullopt : std::optional(json::stringList(*list, "apps"));
        if (apps)
            capture->setApps(*apps);
        if (enabled)
            capture->setEnabled(*enabled);
    } catch (const json::DecodeError& error) {
        return ApiResponse::error(400, error.what());
    }
    return ApiResponse::json(captureJson(*capture));
}

} // namespace ringwell
