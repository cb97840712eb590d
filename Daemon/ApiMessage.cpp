#include "Daemon/ApiMessage.h"

#include "Core/Json.h"
#include "Core/PercentEncoding.h"

namespace ringwell {

std::optional<std::string> ApiRequest::queryValue(const std::string& name) const {
    auto found = query.find(name);
    if (found == query.end())
        return std::nullopt;
    return found->second;
}

std::optional<std::string> ApiRequest::header(const std::string& lowerCaseName) const {
    auto found = headers.find(lowerCaseName);
    if (found == headers.end())
        return std::nullopt;
    return found->second;
}

std::vector<std::string> ApiRequest::queryValues(const std::string& name) const {
    std::vector<std::string> values;
    auto [begin, end] = allQuery.equal_range(name);
    for (auto it = begin; it != end; ++it)
        values.push_back(it->second);
    return values;
}

ApiResponse ApiResponse::json(const json::Json& value, unsigned status) {
    ApiResponse response;
    response.status = status;
    response.body = json::encode(value);
    return response;
}

ApiResponse ApiResponse::error(unsigned status, const std::string& message) {
    return json(json::Json{{"error", message}}, status);
}

ApiResponse ApiResponse::text(std::string body, std::string contentType) {
    ApiResponse response;
    response.body = std::move(body);
    response.contentType = std::move(contentType);
    return response;
}

ApiResponse ApiResponse::noContent() {
    ApiResponse response;
    response.status = 204;
    return response;
}

std::optional<ApiRequest> parseTarget(const std::string& method, const std::string& target) {
    ApiRequest request;
    request.method = method;
    request.target = target;
    std::string_view view = target;
    auto question = view.find('?');
    auto path = PercentEncoding::decode(view.substr(0, question), PercentEncoding::Plus::isItself);
    if (!path)
        return std::nullopt;
    request.path = *path;
    if (question == std::string_view::npos)
        return request;
    std::string_view query = view.substr(question + 1);
    while (!query.empty()) {
        auto ampersand = query.find('&');
        std::string_view pair = query.substr(0, ampersand);
        query = ampersand == std::string_view::npos ? "" : query.substr(ampersand + 1);
        if (pair.empty())
            continue;
        auto equals = pair.find('=');
        auto name = PercentEncoding::decode(pair.substr(0, equals), PercentEncoding::Plus::isSpace);
        auto value =
            equals == std::string_view::npos
                ? std::optional<std::string>("")
                : PercentEncoding::decode(pair.substr(equals + 1), PercentEncoding::Plus::isSpace);
        if (!name || !value)
            return std::nullopt;
        request.query[*name] = *value;
        request.allQuery.emplace(*name, *value);
    }
    return request;
}

} // namespace ringwell
