#include "Daemon/WebGate.h"

#include "Core/PercentEncoding.h"
#include <algorithm>

namespace ringwell::WebGate {
namespace {

// Compares in time independent of where the texts differ, so the token
// cannot be guessed a character at a time.
bool sameSecret(const std::string& given, const std::string& token) {
    if (given.size() != token.size() || token.empty())
        return false;
    unsigned char difference = 0;
    for (size_t i = 0; i < token.size(); ++i)
        difference |= static_cast<unsigned char>(given[i] ^ token[i]);
    return difference == 0;
}

std::optional<std::string> cookie(const ApiRequest& request, const std::string& name) {
    auto header = request.header("cookie");
    if (!header)
        return std::nullopt;
    std::string_view rest = *header;
    while (!rest.empty()) {
        auto semicolon = rest.find(';');
        std::string_view pair = rest.substr(0, semicolon);
        rest = semicolon == std::string_view::npos ? "" : rest.substr(semicolon + 1);
        while (!pair.empty() && pair.front() == ' ')
            pair.remove_prefix(1);
        if (pair.size() > name.size() && pair.substr(0, name.size()) == name &&
            pair[name.size()] == '=')
            return std::string(pair.substr(name.size() + 1));
    }
    return std::nullopt;
}

bool isPageRequest(const ApiRequest& request) {
    return request.path.rfind("/v1/", 0) != 0;
}

ApiResponse refusal(const ApiRequest& request, unsigned status, const std::string& message) {
    if (!isPageRequest(request))
        return ApiResponse::error(status, message);
    ApiResponse page = ApiResponse::text(
        "<!doctype html><meta charset=utf-8><title>Ringwell</title><p>" + message +
            "</p><p>Open the address that <code>ringwell open</code> prints.</p>",
        "text/html; charset=utf-8");
    page.status = status;
    return page;
}

// The decoded path re-encoded segment by segment, with one leading slash: no
// control character can reach the header and "//host/" cannot name another site.
std::string safePath(const std::string& decoded) {
    std::string out;
    size_t start = 0;
    while (start <= decoded.size()) {
        size_t slash = std::min(decoded.find('/', start), decoded.size());
        if (slash > start)
            out += "/" + PercentEncoding::encode(decoded.substr(start, slash - start));
        start = slash + 1;
    }
    if (out.empty())
        return "/";
    if (decoded.back() == '/')
        out += '/';
    return out;
}

// The address without its token parameter, to redirect to once the cookie is set.
std::string withoutToken(const ApiRequest& request) {
    std::string query;
    for (const auto& [name, value] : request.allQuery) {
        if (name == "token")
            continue;
        query += (query.empty() ? "?" : "&") + PercentEncoding::encode(name) + "=" +
                 PercentEncoding::encode(value);
    }
    return safePath(request.path) + query;
}

} // namespace

std::optional<ApiResponse> check(const ApiRequest& request, const std::string& token,
                                 std::uint16_t port) {
    const std::string suffix = ":" + std::to_string(port);
    auto host = request.header("host");
    if (!host || (*host != "127.0.0.1" + suffix && *host != "localhost" + suffix &&
                  *host != "[::1]" + suffix))
        return refusal(request, 403, "Ringwell only answers on its loopback address.");

    bool changesState = request.method != "GET" && request.method != "HEAD";
    if (auto origin = request.header("origin"); origin && changesState) {
        if (*origin != "http://127.0.0.1" + suffix && *origin != "http://localhost" + suffix &&
            *origin != "http://[::1]" + suffix)
            return refusal(request, 403, "Requests from other sites are refused.");
    }

    if (auto given = request.queryValue("token")) {
        if (!sameSecret(*given, token))
            return refusal(request, 401, "This Ringwell address has an old or wrong token.");
        ApiResponse redirect;
        redirect.status = 303;
        redirect.contentType = "text/plain; charset=utf-8";
        redirect.headers = {{"Location", withoutToken(request)},
                            {"Set-Cookie", std::string(cookieName) + "=" + token +
                                               "; Path=/; HttpOnly; SameSite=Strict"}};
        return redirect;
    }
    auto header = request.header(tokenHeader);
    auto fromCookie = cookie(request, cookieName);
    if ((header && sameSecret(*header, token)) || (fromCookie && sameSecret(*fromCookie, token)))
        return std::nullopt;
    return refusal(request, 401, "Ringwell needs its secret token.");
}

} // namespace ringwell::WebGate
