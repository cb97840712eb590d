#pragma once

#include "Daemon/ApiMessage.h"
#include "Daemon/DeviceBook.h"
#include "Daemon/RateLimiter.h"

#include <cstddef>
#include <string>
#include <variant>

namespace ringwell {

// Who may use the LAN listener: one route, POST /v1/send, for a device that
// names itself with its own token ("Authorization: Bearer TOKEN") and stays
// within its rate. The web app's token is no device token, so it never
// passes. Pure apart from the limiter's buckets.
namespace LanGate {

inline constexpr const char* sendPath = "/v1/send";
inline constexpr std::size_t maxBodyBytes = 64 * 1024;
// Each device's rate: 10 sends a second on average, bursts of 50.
inline constexpr double sendsPerSecond = 10;
inline constexpr double burst = 50;

struct Refusal {
    ApiResponse response;
    // What the log says: the refusal and who was refused, the device or the
    // peer's address.
    std::string logLine;
};

// The device that may send, or the answer that refuses the request.
std::variant<const LanDevice*, Refusal> admit(const ApiRequest& request, const DeviceBook& devices,
                                              RateLimiter& limiter,
                                              RateLimiter::Clock::time_point now);

// The refusal of a request the HTTP server itself turned away (a body over
// the limit, a malformed request), as the log says it.
std::string refusalLine(const std::string& peer, const ApiResponse& response);

} // namespace LanGate
} // namespace ringwell
