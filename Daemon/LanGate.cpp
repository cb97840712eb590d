#include "Daemon/LanGate.h"

#include "Core/Json.h"
#include "Core/Whitespace.h"
#include "Daemon/DeviceToken.h"

#include <boost/beast/core/string.hpp>

namespace ringwell::LanGate {
namespace {

Refusal refuse(unsigned status, const std::string& message, const std::string& who) {
    return {ApiResponse::error(status, message),
            "refused " + who + ": " + std::to_string(status) + " " + message};
}

std::string peerName(const ApiRequest& request) {
    return "peer " + (request.peer.empty() ? std::string("(unknown)") : request.peer);
}

// The token of "Authorization: Bearer TOKEN", or empty. HTTP reads the scheme
// in any ASCII case.
std::string bearerToken(const ApiRequest& request) {
    auto header = request.header("authorization");
    if (!header)
        return "";
    std::string value = text::trimmed(*header);
    constexpr std::string_view scheme = "bearer ";
    if (value.size() <= scheme.size() ||
        !boost::beast::iequals(boost::beast::string_view(value).substr(0, scheme.size()),
                               boost::beast::string_view(scheme.data(), scheme.size())))
        return "";
    return text::trimmed(std::string_view(value).substr(scheme.size()));
}

} // namespace

std::variant<const LanDevice*, Refusal> admit(const ApiRequest& request, const DeviceBook& devices,
                                              RateLimiter& limiter,
                                              RateLimiter::Clock::time_point now) {
    if (request.path != sendPath)
        return refuse(404, "this address serves only POST /v1/send", peerName(request));
    if (request.method != "POST") {
        Refusal refusal = refuse(405, "only POST is allowed on /v1/send", peerName(request));
        refusal.response.headers = {{"Allow", "POST"}};
        return refusal;
    }
    const std::string token = bearerToken(request);
    if (token.empty()) {
        Refusal refusal = refuse(401, "a device token is required (Authorization: Bearer TOKEN)",
                                 peerName(request));
        refusal.response.headers = {{"WWW-Authenticate", "Bearer"}};
        return refusal;
    }
    const LanDevice* device = devices.withTokenHash(DeviceToken::hash(token));
    if (!device) {
        Refusal refusal = refuse(401, "unknown or revoked device token", peerName(request));
        refusal.response.headers = {{"WWW-Authenticate", "Bearer"}};
        return refusal;
    }
    if (!limiter.take(device->name, now)) {
        Refusal refusal = refuse(429, "too many sends; at most 10 a second, bursts of 50",
                                 "device \"" + device->name + "\" (" + peerName(request) + ")");
        refusal.response.headers = {{"Retry-After", "1"}};
        return refusal;
    }
    return device;
}

std::string refusalLine(const std::string& peer, const ApiResponse& response) {
    std::string message;
    auto parsed = json::parse(response.body);
    if (parsed && parsed.value().is_object())
        message = parsed.value().value("error", "");
    return "refused peer " + (peer.empty() ? std::string("(unknown)") : peer) + ": " +
           std::to_string(response.status) + " " + message;
}

} // namespace ringwell::LanGate
