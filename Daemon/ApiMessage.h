#pragma once

#include "Core/JsonFwd.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ringwell {

class EventStream;

// One request of the local API, independent of the transport that carried it.
struct ApiRequest {
    std::string method; // "GET", "POST", ...
    std::string path;   // "/v1/channels", without the query
    std::map<std::string, std::string> query;
    std::string body;
    // Header names in lower case.
    std::map<std::string, std::string> headers;
    // The original target, path and query, as the client sent it.
    std::string target;
    // "address:port" of a TCP client, for the log; empty on the Unix socket.
    std::string peer;

    std::optional<std::string> queryValue(const std::string& name) const;
    std::optional<std::string> header(const std::string& lowerCaseName) const;
    // Every value of a repeated query parameter ("?app=A&app=B").
    std::vector<std::string> queryValues(const std::string& name) const;
    std::multimap<std::string, std::string> allQuery;
};

// One response: a status and a body, JSON unless said otherwise.
struct ApiResponse {
    unsigned status = 200;
    std::string body;
    std::string contentType = "application/json";
    std::vector<std::pair<std::string, std::string>> headers;
    // Set for a server-sent-events answer: the body is what the stream yields.
    std::shared_ptr<EventStream> stream;

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

} // namespace ringwell
