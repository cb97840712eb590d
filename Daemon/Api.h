#pragma once

#include "Alarms/AppContext.h"
#include "Daemon/ApiMessage.h"
#include "Shared/Asio.h"

#include <string>

namespace ringwell {

// The daemon's local API: every request of the command line (and later the
// web app) becomes calls on the app's objects and a JSON answer. The routes
// and their forms are documented in docs/api.md.
//
// Main thread only. Client mistakes answer 4xx with {"error": message};
// nothing a client sends throws out of `handle`.
class Api {
public:
    // What the platform tells about the machine, for the diagnostics report.
    struct SystemDescription {
        std::string osVersion;
        std::string device;
    };

    Api(AppContext& ctx, SystemDescription system);

    Awaitable<ApiResponse> handle(ApiRequest request);

private:
    AppContext& ctx_;
    SystemDescription system_;
};

} // namespace ringwell
