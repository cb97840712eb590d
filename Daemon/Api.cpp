#include "Daemon/Api.h"

#include "Daemon/RouteTable.h"

#include <exception>

namespace ringwell {

Api::Api(AppContext& ctx, Services services) : ctx_(ctx), services_(std::move(services)) {}

Awaitable<ApiResponse> Api::handle(ApiRequest request) {
    ApiState state{ctx_, services_};
    std::string failure;
    try {
        co_return co_await dispatch(apiRoutes(), request, state);
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
