#pragma once

#include "Alarms/AppContext.h"
#include "Daemon/ApiMessage.h"
#include "Daemon/ApiRoute.h"
#include "Shared/Asio.h"

namespace ringwell {

// The daemon's local API, served to the command line on the Unix socket and
// to the web app on loopback: each request is answered from the route table
// (RouteTable.cpp) with calls on the app's objects and a JSON answer. The
// routes and their forms are documented in docs/api.md, the errors in
// docs/errors.md.
//
// Main thread only. Client mistakes answer 4xx with {"error": message}. An
// exception that escapes a route is a fault of Ringwell's: it is logged and
// answered 500, so nothing a client sends throws out of `handle`.
class Api {
public:
    using Services = ApiServices;

    Api(AppContext& ctx, Services services);

    Awaitable<ApiResponse> handle(ApiRequest request);

private:
    AppContext& ctx_;
    Services services_;
};

} // namespace ringwell
