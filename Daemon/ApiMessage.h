#pragma once

#include "Core/Json.h"

#include <map>
#include <optional>
#include <string>

namespace ringwell {

// One request of the local API, independent of the transport that carried it.
struct ApiRequest {
    std::string method; // "GET", "POST", ...
    std::string path;   // "/v1/channels", without the query
    std::map<std::string, std::string> query;
    std::string body;

    std::optional<std::string> queryValue(const std::string& name) const;
};

// One response: a status and a body, JSON unless said otherwise.
struct ApiResponse {
    unsigned status = 200;
    std::string body;
    std::string contentType = "application/json";

    static ApiResponse json(const json::Json& value, unsigned status = 200);
    // {"error": message}
    static ApiResponse error(unsigned status, const std::string& message);
    static ApiResponse text(std::string body,
                            std::string contentType = "text/plain; charset=utf-8");
    static ApiResponse noContent();
};

// Splits "/v1/events?channel=ID&x=%20y" into its path and decoded query.
// Fails on a malformed percent escape.
std::optional<ApiRequest> parseTarget(const std::string& method, const std::string& target);

// Percent-encodes a query value (RFC 3986 unreserved characters kept).
std::string percentEncode(const std::string& text);

} // namespace ringwell
