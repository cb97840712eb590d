#pragma once

#include "Daemon/ApiRoute.h"

#include <span>

namespace ringwell {

// The local API's routes, one table for the Unix socket and the web app. Its
// rows are in RouteTable.cpp and the handlers in the *Routes.cpp files.
std::span<const Route> apiRoutes();

// What a table says of one method and path.
struct RouteMatch {
    // The row that answers; none when no row has this method and path.
    const Route* route = nullptr;
    std::vector<std::pair<std::string_view, std::string>> parameters;
    // When rows have the path but not the method: their methods, "GET, PUT".
    std::string allowed;
};

// Finds the row for a method and path. Empty path segments are ignored, so
// "/v1//channels/" is "/v1/channels". Pure.
RouteMatch matchRoute(std::span<const Route> routes, std::string_view method,
                      std::string_view path);

// The status the API answers for an error of this kind.
unsigned httpStatus(Error::Kind kind);

// Answers a request from a table: 404 when no row has the path, 405 with an
// Allow header when rows have it with other methods, and an Error as
// {"error": message} with the status of its kind. Exceptions pass through.
Awaitable<ApiResponse> dispatch(std::span<const Route> routes, const ApiRequest& request,
                                ApiState& state);

} // namespace ringwell
