#include "Daemon/HttpServer.h"

#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

#include <sys/stat.h>
#include <sys/un.h>

#include <system_error>

namespace ringwell {
namespace beast = boost::beast;
namespace http = beast::http;
using Protocol = asio::local::stream_protocol;
using Stream = beast::basic_stream<Protocol>;

struct HttpServer::State {
    Protocol::acceptor acceptor;
    Handler handler;
    Limits limits;
    bool closed = false;

    State(asio::io_context& io, Handler h, Limits l)
        : acceptor(io), handler(std::move(h)), limits(l) {}
};

namespace {

http::response<http::string_body> toHttp(const ApiResponse& response, unsigned version,
                                         bool keepAlive) {
    http::response<http::string_body> out{static_cast<http::status>(response.status), version};
    out.set(http::field::server, "ringwell");
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
    try {
        co_return co_await handler(std::move(*parsed));
    } catch (const std::exception& error) {
        co_return ApiResponse::error(500, std::string("internal error: ") + error.what());
    }
}

Awaitable<void> serveConnection(std::shared_ptr<HttpServer::State> state, Protocol::socket socket) {
    Stream stream(std::move(socket));
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
        auto response = toHttp(result, request.version(), request.keep_alive());
        stream.expires_after(state->limits.readTimeout);
        co_await http::async_write(stream, response, asio::redirect_error(asio::use_awaitable, ec));
        if (ec || !response.keep_alive())
            break;
    }
    stream.socket().shutdown(Protocol::socket::shutdown_send, ec);
}

Awaitable<void> acceptLoop(std::shared_ptr<HttpServer::State> state) {
    for (;;) {
        boost::system::error_code ec;
        Protocol::socket socket =
            co_await state->acceptor.async_accept(asio::redirect_error(asio::use_awaitable, ec));
        if (state->closed || ec == asio::error::operation_aborted)
            co_return;
        if (ec)
            continue; // a failed accept (e.g. out of descriptors) must not end the server
        asio::co_spawn(state->acceptor.get_executor(), serveConnection(state, std::move(socket)),
                       asio::detached);
    }
}

} // namespace

HttpServer::HttpServer(asio::io_context& io, std::filesystem::path socketPath, Handler handler,
                       Limits limits)
    : state_(std::make_shared<State>(io, std::move(handler), limits)),
      socketPath_(std::move(socketPath)) {
    if (socketPath_.native().size() >= sizeof(sockaddr_un::sun_path))
        throw std::system_error(std::make_error_code(std::errc::filename_too_long),
                                "the socket path " + socketPath_.string() +
                                    " is too long for a Unix socket; set XDG_RUNTIME_DIR to a "
                                    "shorter directory");
    std::error_code removeError;
    std::filesystem::remove(socketPath_, removeError);
    Protocol::endpoint endpoint(socketPath_.string());
    state_->acceptor.open(endpoint.protocol());
    // The socket is created with the umask applied; tighten it before anyone can connect.
    mode_t previous = ::umask(0177);
    boost::system::error_code bindError;
    state_->acceptor.bind(endpoint, bindError);
    ::umask(previous);
    if (bindError)
        throw std::system_error(bindError.value(), std::generic_category(),
                                "cannot listen on " + socketPath_.string());
    ::chmod(socketPath_.c_str(), 0600);
    state_->acceptor.listen(asio::socket_base::max_listen_connections);
    asio::co_spawn(io, acceptLoop(state_), asio::detached);
}

HttpServer::~HttpServer() {
    close();
}

void HttpServer::close() {
    if (state_->closed)
        return;
    state_->closed = true;
    boost::system::error_code ignored;
    state_->acceptor.close(ignored);
    std::error_code removeError;
    std::filesystem::remove(socketPath_, removeError);
}

} // namespace ringwell
