#include "Daemon/HttpServer.h"

#include "Daemon/EventStream.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <cctype>
#include <optional>
#include <system_error>

namespace ringwell {
namespace beast = boost::beast;
namespace http = beast::http;
using Local = asio::local::stream_protocol;
using Tcp = asio::ip::tcp;

struct HttpServer::State {
    std::optional<Local::acceptor> localAcceptor;
    std::optional<Tcp::acceptor> tcpAcceptor;
    Handler handler;
    Limits limits;
    bool closed = false;
};

namespace {

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

template <typename Body> void setHeaders(http::response<Body>& out, const ApiResponse& response) {
    out.set(http::field::server, "ringwell");
    out.set(http::field::cache_control, "no-store");
    for (const auto& [name, value] : response.headers)
        out.set(name, value);
}

http::response<http::string_body> toHttp(const ApiResponse& response, unsigned version,
                                         bool keepAlive) {
    http::response<http::string_body> out{static_cast<http::status>(response.status), version};
    setHeaders(out, response);
    if (response.status != 204) {
        out.set(http::field::content_type, response.contentType);
        out.body() = response.body;
    }
    out.keep_alive(keepAlive);
    out.prepare_payload();
    return out;
}

Awaitable<ApiResponse> answer(HttpServer::Handler& handler,
                              const http::request<http::string_body>& request) {
    auto parsed = parseTarget(std::string(request.method_string()), std::string(request.target()));
    if (!parsed)
        co_return ApiResponse::error(400, "malformed request target");
    parsed->body = request.body();
    for (const auto& field : request)
        parsed->headers[lowerCase(std::string(field.name_string()))] = std::string(field.value());
    try {
        co_return co_await handler(std::move(*parsed));
    } catch (const std::exception& error) {
        co_return ApiResponse::error(500, std::string("internal error: ") + error.what());
    }
}

// Writes a server-sent-events answer until the stream ends or the client goes.
template <typename Stream>
Awaitable<void> writeEventStream(Stream& stream, const ApiResponse& response, unsigned version,
                                 std::chrono::seconds heartbeat) {
    http::response<http::empty_body> head{static_cast<http::status>(response.status), version};
    setHeaders(head, response);
    head.set(http::field::content_type, "text/event-stream");
    head.keep_alive(false); // the body ends when the connection closes
    http::response_serializer<http::empty_body> serializer(head);
    boost::system::error_code ec;
    stream.expires_never();
    co_await http::async_write_header(stream, serializer,
                                      asio::redirect_error(asio::use_awaitable, ec));
    while (!ec) {
        auto message = co_await response.stream->next(heartbeat);
        if (!message)
            break;
        stream.expires_after(std::chrono::seconds(30));
        co_await asio::async_write(stream, asio::buffer(*message),
                                   asio::redirect_error(asio::use_awaitable, ec));
    }
    response.stream->close();
}

template <typename Protocol>
Awaitable<void> serveConnection(std::shared_ptr<HttpServer::State> state,
                                typename Protocol::socket socket) {
    beast::basic_stream<Protocol> stream(std::move(socket));
    beast::flat_buffer buffer;
    boost::system::error_code ec;
    for (;;) {
        http::request_parser<http::string_body> parser;
        parser.body_limit(state->limits.maxBodyBytes);
        parser.header_limit(16 * 1024);
        stream.expires_after(state->limits.readTimeout);
        co_await http::async_read(stream, buffer, parser,
                                  asio::redirect_error(asio::use_awaitable, ec));
        if (ec == http::error::end_of_stream || ec == beast::error::timeout ||
            ec == asio::error::connection_reset || ec == asio::error::eof)
            break;
        if (ec) {
            // Anything the parser rejects gets one error answer, then the
            // connection closes: its framing can no longer be trusted.
            ApiResponse failure =
                ec == http::error::body_limit
                    ? ApiResponse::error(413, "request body too large")
                    : ApiResponse::error(400, "malformed request: " + ec.message());
            auto response = toHttp(failure, 11, false);
            stream.expires_after(std::chrono::seconds(5));
            co_await http::async_write(stream, response,
                                       asio::redirect_error(asio::use_awaitable, ec));
            break;
        }
        auto request = parser.release();
        stream.expires_never();
        ApiResponse result = co_await answer(state->handler, request);
        if (result.stream) {
            co_await writeEventStream(stream, result, request.version(), state->limits.heartbeat);
            break;
        }
        auto response = toHttp(result, request.version(), request.keep_alive());
        stream.expires_after(state->limits.readTimeout);
        co_await http::async_write(stream, response, asio::redirect_error(asio::use_awaitable, ec));
        if (ec || !response.keep_alive())
            break;
    }
    stream.socket().shutdown(Protocol::socket::shutdown_send, ec);
}

template <typename Protocol>
Awaitable<void> acceptLoop(std::shared_ptr<HttpServer::State> state,
                           typename Protocol::acceptor& acceptor) {
    for (;;) {
        boost::system::error_code ec;
        typename Protocol::socket socket =
            co_await acceptor.async_accept(asio::redirect_error(asio::use_awaitable, ec));
        if (state->closed || ec == asio::error::operation_aborted)
            co_return;
        if (ec)
            continue; // a failed accept (e.g. out of descriptors) must not end the server
        asio::co_spawn(acceptor.get_executor(), serveConnection<Protocol>(state, std::move(socket)),
                       asio::detached);
    }
}

} // namespace

std::unique_ptr<HttpServer> HttpServer::onSocket(asio::io_context& io, std::filesystem::path path,
                                                 Handler handler, Limits limits) {
    if (path.native().size() >= sizeof(sockaddr_un::sun_path))
        throw std::system_error(std::make_error_code(std::errc::filename_too_long),
                                "the socket path " + path.string() +
                                    " is too long for a Unix socket; set XDG_RUNTIME_DIR to a "
                                    "shorter directory");
    std::unique_ptr<HttpServer> server(new HttpServer());
    server->state_ = std::make_shared<State>();
    server->state_->handler = std::move(handler);
    server->state_->limits = limits;
    server->socketPath_ = path;
    auto& acceptor = server->state_->localAcceptor.emplace(io);

    std::error_code removeError;
    std::filesystem::remove(path, removeError);
    Local::endpoint endpoint(path.string());
    acceptor.open(endpoint.protocol());
    // The socket is created with the umask applied; tighten it before anyone can connect.
    mode_t previous = ::umask(0177);
    boost::system::error_code bindError;
    acceptor.bind(endpoint, bindError);
    ::umask(previous);
    if (bindError)
        throw std::system_error(bindError.value(), std::generic_category(),
                                "cannot listen on " + path.string());
    ::chmod(path.c_str(), 0600);
    acceptor.listen(asio::socket_base::max_listen_connections);
    asio::co_spawn(io, acceptLoop<Local>(server->state_, acceptor), asio::detached);
    return server;
}

std::unique_ptr<HttpServer> HttpServer::onLoopback(asio::io_context& io, std::uint16_t port,
                                                   Handler handler, Limits limits) {
    std::unique_ptr<HttpServer> server(new HttpServer());
    server->state_ = std::make_shared<State>();
    server->state_->handler = std::move(handler);
    server->state_->limits = limits;
    auto& acceptor = server->state_->tcpAcceptor.emplace(io);
    Tcp::endpoint endpoint(asio::ip::address_v4::loopback(), port);
    boost::system::error_code ec;
    acceptor.open(endpoint.protocol(), ec);
    if (!ec)
        acceptor.set_option(asio::socket_base::reuse_address(true), ec);
    if (!ec)
        acceptor.bind(endpoint, ec);
    if (!ec)
        acceptor.listen(asio::socket_base::max_listen_connections, ec);
    if (ec)
        throw std::system_error(ec.value(), std::generic_category(),
                                "cannot listen on 127.0.0.1:" + std::to_string(port));
    server->port_ = acceptor.local_endpoint().port();
    asio::co_spawn(io, acceptLoop<Tcp>(server->state_, acceptor), asio::detached);
    return server;
}

HttpServer::~HttpServer() {
    close();
}

void HttpServer::close() {
    if (!state_ || state_->closed)
        return;
    state_->closed = true;
    boost::system::error_code ignored;
    if (state_->localAcceptor)
        state_->localAcceptor->close(ignored);
    if (state_->tcpAcceptor)
        state_->tcpAcceptor->close(ignored);
    if (!socketPath_.empty()) {
        std::error_code removeError;
        std::filesystem::remove(socketPath_, removeError);
    }
}

} // namespace ringwell
