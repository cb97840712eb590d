#pragma once

#include "Daemon/ApiMessage.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ringwell {

// Who may use the web app: only pages of this loopback address (against DNS
// rebinding, the Host must be 127.0.0.1, localhost or [::1] with our port),
// only with the secret token (given once in the address, then kept in an
// HttpOnly cookie, or sent by scripts in the X-Ringwell-Token header), and no
// state-changing request from another origin. Pure.
namespace WebGate {

inline constexpr const char* cookieName = "ringwell_token";
inline constexpr const char* tokenHeader = "x-ringwell-token";

// The answer that refuses or redirects the request, or none when it may pass.
std::optional<ApiResponse> check(const ApiRequest& request, const std::string& token,
                                 std::uint16_t port);

} // namespace WebGate
} // namespace ringwell
