#include "Daemon/Api.h"

#include "Daemon/RouteTable.h"
#include "Daemon/SaveBarrier.h"

#include <exception>

namespace ringwell {

Api::Api(AppContext& ctx, Services services) : ctx_(ctx), services_(std::move(services)) {}

Awaitable<ApiResponse> Api::handle(ApiRequest request) {
    ApiState state{ctx_, services_};
    std::string failure;
    try {
        ApiResponse response = co_await dispatch(apiRoutes(), request, state);
        // Whatever a request changed is on disk before it is acknowledged,
        // so a client never hears of a send or an edit that a crash can undo.
        if (request.method != "GET" && request.method != "HEAD")
            co_await savedToDisk(ctx_.store);
        co_return response;
    } catch (const std::exception& error) {
        failure = error.what();
    }
    // The last line of defence: routes answer every error they expect
    // themselves (docs/errors.md), so whatever arrives here is a fault.
    ctx_.logger.log(LogLevel::error, "Api",
                    request.method + " " + request.path + " failed: " + failure);
    co_return ApiResponse::error(500, failure);
}

} // namespace ringwell
