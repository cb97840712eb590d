#include "Daemon/RouteTable.h"

#include "Daemon/ApiRoutes.h"

#include <array>
#include <cassert>
#include <optional>
#include <string>
#include <vector>

namespace ringwell {
namespace routes {
namespace {

// Adding a route: one row here and one handler in the area's *Routes.cpp.
const std::array table = std::to_array<Route>({
    {"POST", "/v1/send", send},
    {"POST", "/v1/ring", ring},
    {"POST", "/v1/stop-all", stopAll},

    {"GET", "/v1/alarms", listAlarms},
    {"POST", "/v1/alarms/{alarm}/stop", stopAlarm},
    {"POST", "/v1/alarms/{alarm}/pause", pauseAlarm},
    {"POST", "/v1/alarms/{alarm}/resume", resumeAlarm},
    {"POST", "/v1/alarms/{alarm}/snooze", snoozeAlarm},
    {"GET", "/v1/permissions", permissions},
    {"PUT", "/v1/permissions/alarms", setAlarmPermission},

    {"GET", "/v1/channels", listChannels},
    {"POST", "/v1/channels", addChannel},
    {"GET", "/v1/channels/{channel}", getChannel},
    {"PUT", "/v1/channels/{id}", updateChannel},
    {"DELETE", "/v1/channels/{channel}", deleteChannel},
    {"POST", "/v1/channels/{channel}/move", moveChannel},
    {"POST", "/v1/channels/{channel}/test", testChannel},
    {"GET", "/v1/channel-entities", channelEntities},
    {"GET", "/v1/preview", preview},

    {"GET", "/v1/status", status},
    {"GET", "/v1/stream", stream},
    {"GET", "/v1/settings", settings},
    {"PUT", "/v1/settings", updateSettings},
    {"GET", "/v1/settings/{key}", setting},
    {"PUT", "/v1/settings/{key}", updateSetting},
    {"POST", "/v1/sound-test", testAlarmSound},
    {"GET", "/v1/events", events},
    {"DELETE", "/v1/events", clearEvents},
    {"GET", "/v1/events/{event}/why", why},
    {"POST", "/v1/trace", trace},
    {"GET", "/v1/stats", stats},
    {"GET", "/v1/diagnostics", diagnostics},
    {"GET", "/v1/diagnostics/email", diagnosticsEmail},
    {"GET", "/v1/setup-test", setupTest},
    {"POST", "/v1/setup-test/start", startSetupTest},
    {"POST", "/v1/setup-test/cancel", cancelSetupTest},
    {"GET", "/v1/capture", captureState},
    {"PUT", "/v1/capture", updateCapture},
    {"GET", "/v1/devices", listDevices},
    {"POST", "/v1/devices", addDevice},
    {"DELETE", "/v1/devices/{name}", removeDevice},
    {"GET", "/v1/watches", listWatches},
    {"POST", "/v1/watches", addWatch},
    {"DELETE", "/v1/watches/{app}", removeWatch},

    {"GET", "/v1/config", config},
    {"GET", "/v1/templates", templates},
    {"GET", "/v1/tones", tones},
    {"POST", "/v1/tones/{tone}/preview", previewTone},
    {"GET", "/v1/limits", limits},
    {"GET", "/v1/channel-views", channelViews},
    {"GET", "/v1/known-apps", knownApps},
    {"GET", "/v1/known-senders", knownSenders},
    {"GET", "/v1/apps-to-forward", appsToForward},
    {"POST", "/v1/rules/describe", describeRule},
    {"POST", "/v1/rules/condition", editRuleCondition},
});

} // namespace
} // namespace routes

namespace {

std::vector<std::string_view> segments(std::string_view path) {
    std::vector<std::string_view> parts;
    size_t start = 0;
    while (start < path.size()) {
        size_t slash = path.find('/', start);
        if (slash == std::string_view::npos)
            slash = path.size();
        if (slash > start)
            parts.push_back(path.substr(start, slash - start));
        start = slash + 1;
    }
    return parts;
}

bool isParameter(std::string_view segment) {
    return segment.size() > 2 && segment.front() == '{' && segment.back() == '}';
}

// The values of the pattern's parameters when the path fits it.
std::optional<std::vector<std::pair<std::string_view, std::string>>>
fit(std::string_view pattern, const std::vector<std::string_view>& path) {
    auto wanted = segments(pattern);
    if (wanted.size() != path.size())
        return std::nullopt;
    std::vector<std::pair<std::string_view, std::string>> parameters;
    for (size_t i = 0; i < wanted.size(); ++i) {
        if (isParameter(wanted[i]))
            parameters.emplace_back(wanted[i].substr(1, wanted[i].size() - 2),
                                    std::string(path[i]));
        else if (wanted[i] != path[i])
            return std::nullopt;
    }
    return parameters;
}

ApiResponse answer(ApiResult result) {
    if (!result)
        return ApiResponse::error(httpStatus(result.error().kind), result.error().message);
    return std::move(result).value();
}

} // namespace

const std::string& RouteRequest::parameter(std::string_view name) const {
    for (const auto& [key, value] : parameters) {
        if (key == name)
            return value;
    }
    assert(false && "the route's pattern has no such parameter");
    static const std::string none;
    return none;
}

std::span<const Route> apiRoutes() {
    return routes::table;
}

RouteMatch matchRoute(std::span<const Route> routes, std::string_view method,
                      std::string_view path) {
    const auto parts = segments(path);
    RouteMatch match;
    for (const auto& route : routes) {
        auto parameters = fit(route.pattern, parts);
        if (!parameters)
            continue;
        if (route.method == method) {
            match.route = &route;
            match.parameters = std::move(*parameters);
            match.allowed.clear();
            return match;
        }
        if (match.allowed.find(route.method) == std::string::npos)
            match.allowed += (match.allowed.empty() ? "" : ", ") + std::string(route.method);
    }
    return match;
}

unsigned httpStatus(Error::Kind kind) {
    switch (kind) {
    case Error::Kind::invalidInput:
        return 400;
    case Error::Kind::notAllowed:
        return 403;
    case Error::Kind::notFound:
        return 404;
    case Error::Kind::conflict:
        return 409;
    case Error::Kind::failed:
        return 500;
    }
    return 500;
}

Awaitable<ApiResponse> dispatch(std::span<const Route> routes, const ApiRequest& request,
                                ApiState& state) {
    RouteMatch match = matchRoute(routes, request.method, request.path);
    if (!match.route) {
        if (match.allowed.empty())
            co_return ApiResponse::error(404,
                                         "no such route: " + request.method + " " + request.path);
        ApiResponse refusal =
            ApiResponse::error(405, request.method + " is not allowed on " + request.path +
                                        " (only " + match.allowed + ")");
        refusal.headers = {{"Allow", match.allowed}};
        co_return refusal;
    }
    RouteRequest routeRequest{request, std::move(match.parameters)};
    const auto& handler = match.route->handler;
    if (const auto* plain = std::get_if<PlainHandler>(&handler))
        co_return answer((*plain)(routeRequest, state));
    co_return answer(co_await std::get<AwaitingHandler>(handler)(routeRequest, state));
}

} // namespace ringwell
