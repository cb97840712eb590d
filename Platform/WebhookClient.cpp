#include "Platform/WebhookClient.h"

#include "Version.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/error.hpp>
#include <boost/asio/ssl/host_name_verification.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>

#include <openssl/ssl.h>

namespace ringwell {
namespace {

namespace beast = boost::beast;
namespace http = beast::http;
using tcp = asio::ip::tcp;

// Answers larger than this are cut off; only the status matters.
constexpr std::size_t replyLimit = 64 * 1024;

http::request<http::string_body> buildRequest(const WebhookRequest& request) {
    http::request<http::string_body> message{http::verb::post, request.url.target, 11};
    const bool defaultPort = request.url.port == (request.url.https ? "443" : "80");
    const bool ipv6 = request.url.host.find(':') != std::string::npos;
    const std::string host = ipv6 ? "[" + request.url.host + "]" : request.url.host;
    message.set(http::field::host, defaultPort ? host : host + ":" + request.url.port);
    message.set(http::field::user_agent, std::string("Ringwell/") + version::shortVersion);
    message.set(http::field::content_type, request.contentType);
    for (const auto& [name, value] : request.headers)
        message.set(name, value);
    message.body() = request.body;
    message.prepare_payload();
    return message;
}

std::string describe(const boost::system::error_code& error, const WebhookRequest& request) {
    if (error == beast::error::timeout || error == asio::error::operation_aborted)
        return "timed out after " + std::to_string(request.timeout.count()) + " s";
    return error.message();
}

template <typename Stream>
Awaitable<WebhookReply> exchange(Stream& stream, const WebhookRequest& request) {
    boost::system::error_code error;
    auto message = buildRequest(request);
    co_await http::async_write(stream, message, asio::redirect_error(asio::use_awaitable, error));
    if (error)
        co_return WebhookReply{false, describe(error, request)};
    beast::flat_buffer buffer;
    http::response_parser<http::string_body> parser;
    parser.body_limit(replyLimit);
    co_await http::async_read(stream, buffer, parser,
                              asio::redirect_error(asio::use_awaitable, error));
    if (error && error != http::error::body_limit)
        co_return WebhookReply{false, describe(error, request)};
    const unsigned status = parser.get().result_int();
    co_return WebhookReply{status >= 200 && status < 300, "HTTP " + std::to_string(status)};
}

} // namespace

WebhookClient::WebhookClient(asio::io_context& context)
    : context_(context), tls_(asio::ssl::context::tls_client) {
    tls_.set_default_verify_paths();
    tls_.set_verify_mode(asio::ssl::verify_peer);
}

Awaitable<WebhookReply> WebhookClient::post(WebhookRequest request) {
    boost::system::error_code error;
    tcp::resolver resolver(context_);
    beast::tcp_stream stream(context_);
    stream.expires_after(request.timeout);
    // The resolver has no timeout of its own: the stream's expiry covers the rest.
    auto endpoints = co_await resolver.async_resolve(
        request.url.host, request.url.port, asio::redirect_error(asio::use_awaitable, error));
    if (error)
        co_return WebhookReply{false, "cannot resolve the host: " + error.message()};
    co_await stream.async_connect(endpoints, asio::redirect_error(asio::use_awaitable, error));
    if (error)
        co_return WebhookReply{false, describe(error, request)};
    if (!request.url.https)
        co_return co_await exchange(stream, request);

    asio::ssl::stream<beast::tcp_stream&> tls(stream, tls_);
    if (!SSL_set_tlsext_host_name(tls.native_handle(), request.url.host.c_str()))
        co_return WebhookReply{false, "TLS: cannot set the server name"};
    tls.set_verify_callback(asio::ssl::host_name_verification(request.url.host));
    co_await tls.async_handshake(asio::ssl::stream_base::client,
                                 asio::redirect_error(asio::use_awaitable, error));
    if (error)
        co_return WebhookReply{false, "TLS: " + describe(error, request)};
    auto reply = co_await exchange(tls, request);
    co_await tls.async_shutdown(asio::redirect_error(asio::use_awaitable, error));
    co_return reply;
}

} // namespace ringwell
