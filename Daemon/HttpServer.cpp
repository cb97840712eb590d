#include "Daemon/HttpServer.h"

#include "Daemon/EventStream.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl.hpp>

#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
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
    // Set for a TCP server that speaks TLS only.
    std::shared_ptr<asio::ssl::context> tls;
    bool closed = false;
    std::size_t active = 0;
    std::size_t failedAccepts = 0;
    // The accept loop's timer while it waits for a free connection slot or
    // backs off; cancelled when a connection ends or the server closes.
    asio::steady_timer* pause = nullptr;

    void report(const std::string& message) const {
        if (limits.log)
            limits.log(message);
        else
            std::fprintf(stderr, "ringwell http: %s\n", message.c_str());
    }
    void refuse(const std::string& peer, const ApiResponse& response) const {
        if (limits.refused)
            limits.refused(peer, response);
    }
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
                                         bool keepAlive, bool headOnly = false) {
    http::response<http::string_body> out{static_cast<http::status>(response.status), version};
    setHeaders(out, response);
    if (response.status != 204) {
        out.set(http::field::content_type, response.contentType);
        out.body() = response.body;
    }
    out.keep_alive(keepAlive);
    out.prepare_payload();
    if (headOnly)
        out.body().clear(); // the length stays what a GET would carry
    return out;
}

// Framing and header faults the parser lets through but that would make the
// request mean something else to us than to a proxy or the client.
std::optional<ApiResponse> framingFault(const http::request<http::string_body>& request) {
    if (request.count(http::field::host) > 1)
        return ApiResponse::error(400, "malformed request: more than one Host header");
    auto encodings = request.equal_range(http::field::transfer_encoding);
    std::size_t count = std::distance(encodings.first, encodings.second);
    if (count > 1 || (count == 1 && lowerCase(std::string(encodings.first->value())) != "chunked"))
        return ApiResponse::error(400, "malformed request: only \"Transfer-Encoding: chunked\" "
                                       "is understood");
    return std::nullopt;
}

Awaitable<ApiResponse> answer(HttpServer::Handler& handler,
                              const http::request<http::string_body>& request,
                              const std::string& peer) {
    auto parsed = parseTarget(std::string(request.method_string()), std::string(request.target()));
    if (!parsed)
        co_return ApiResponse::error(400, "malformed request target");
    parsed->body = request.body();
    parsed->peer = peer;
    for (const auto& field : request)
        parsed->headers[lowerCase(std::string(field.name_string()))] = std::string(field.value());
    try {
        co_return co_await handler(std::move(*parsed));
    } catch (const std::exception& error) {
        co_return ApiResponse::error(500, std::string("internal error: ") + error.what());
    } catch (...) {
        co_return ApiResponse::error(500, "internal error");
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
    beast::get_lowest_layer(stream).expires_never();
    co_await http::async_write_header(stream, serializer,
                                      asio::redirect_error(asio::use_awaitable, ec));
    while (!ec) {
        auto message = co_await response.stream->next(heartbeat);
        if (!message)
            break;
        beast::get_lowest_layer(stream).expires_after(std::chrono::seconds(30));
        co_await asio::async_write(stream, asio::buffer(*message),
                                   asio::redirect_error(asio::use_awaitable, ec));
    }
    response.stream->close();
}

// Holds one of the server's connection slots for as long as a connection lives.
class ConnectionSlot {
public:
    explicit ConnectionSlot(std::shared_ptr<HttpServer::State> state) : state_(std::move(state)) {
        ++state_->active;
    }
    ConnectionSlot(ConnectionSlot&& other) noexcept : state_(std::move(other.state_)) {}
    ConnectionSlot(const ConnectionSlot&) = delete;
    ConnectionSlot& operator=(const ConnectionSlot&) = delete;
    ConnectionSlot& operator=(ConnectionSlot&&) = delete;
    ~ConnectionSlot() {
        if (!state_)
            return;
        --state_->active;
        if (state_->pause)
            state_->pause->cancel();
    }
    HttpServer::State& state() const { return *state_; }

private:
    std::shared_ptr<HttpServer::State> state_;
};

// "address:port" of a TCP client; empty for a Unix socket's.
std::string peerOf(const Tcp::socket& socket) {
    boost::system::error_code ec;
    auto endpoint = socket.remote_endpoint(ec);
    if (ec)
        return "";
    auto address = endpoint.address();
    return (address.is_v6() ? "[" + address.to_string() + "]" : address.to_string()) + ":" +
           std::to_string(endpoint.port());
}
std::string peerOf(const Local::socket&) {
    return "";
}

// Reads requests and writes answers on one connection until either side ends it.
template <typename Stream>
Awaitable<void> serveRequests(HttpServer::State* state, Stream& stream, const std::string& peer) {
    auto& lowest = beast::get_lowest_layer(stream);
    beast::flat_buffer buffer;
    boost::system::error_code ec;
    for (;;) {
        http::request_parser<http::string_body> parser;
        parser.body_limit(state->limits.maxBodyBytes);
        parser.header_limit(16 * 1024);
        lowest.expires_after(state->limits.readTimeout);
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
            state->refuse(peer, failure);
            auto response = toHttp(failure, 11, false);
            lowest.expires_after(std::chrono::seconds(5));
            co_await http::async_write(stream, response,
                                       asio::redirect_error(asio::use_awaitable, ec));
            break;
        }
        auto request = parser.release();
        if (auto fault = framingFault(request)) {
            state->refuse(peer, *fault);
            auto response = toHttp(*fault, 11, false);
            lowest.expires_after(std::chrono::seconds(5));
            co_await http::async_write(stream, response,
                                       asio::redirect_error(asio::use_awaitable, ec));
            break;
        }
        lowest.expires_never();
        ApiResponse result = co_await answer(state->handler, request, peer);
        if (result.stream) {
            co_await writeEventStream(stream, result, request.version(), state->limits.heartbeat);
            break;
        }
        auto response = toHttp(result, request.version(), request.keep_alive(),
                               request.method() == http::verb::head);
        lowest.expires_after(state->limits.readTimeout);
        co_await http::async_write(stream, response, asio::redirect_error(asio::use_awaitable, ec));
        if (ec || !response.keep_alive())
            break;
    }
}

template <typename Protocol>
Awaitable<void> serveConnection(ConnectionSlot slot, typename Protocol::socket socket) {
    const std::string peer = peerOf(socket);
    beast::basic_stream<Protocol> stream(std::move(socket));
    co_await serveRequests(&slot.state(), stream, peer);
    boost::system::error_code ignored;
    stream.socket().shutdown(Protocol::socket::shutdown_send, ignored);
}

// The same behind TLS: a handshake first (within the read timeout), a TLS
// shutdown at the end.
Awaitable<void> serveTlsConnection(ConnectionSlot slot, Tcp::socket socket) {
    HttpServer::State* state = &slot.state();
    const std::string peer = peerOf(socket);
    beast::ssl_stream<beast::tcp_stream> stream(beast::tcp_stream(std::move(socket)), *state->tls);
    boost::system::error_code ec;
    beast::get_lowest_layer(stream).expires_after(state->limits.readTimeout);
    co_await stream.async_handshake(asio::ssl::stream_base::server,
                                    asio::redirect_error(asio::use_awaitable, ec));
    if (ec) {
        state->refuse(peer, ApiResponse::error(400, "TLS handshake failed: " + ec.message()));
        co_return;
    }
    co_await serveRequests(state, stream, peer);
    beast::get_lowest_layer(stream).expires_after(std::chrono::seconds(5));
    co_await stream.async_shutdown(asio::redirect_error(asio::use_awaitable, ec));
}

// Waits on `timer` (until `until`, or until cancelled) where close() and a
// finishing connection can cancel it.
Awaitable<void> pauseOn(HttpServer::State& state, asio::steady_timer& timer,
                        asio::steady_timer::time_point until) {
    boost::system::error_code ignored;
    timer.expires_at(until);
    state.pause = &timer;
    // Cleared however the wait ends, also when the io_context drops the frame.
    struct Clear {
        HttpServer::State& state;
        ~Clear() { state.pause = nullptr; }
    } clear{state};
    co_await timer.async_wait(asio::redirect_error(asio::use_awaitable, ignored));
}

template <typename Protocol>
Awaitable<void> acceptLoop(std::shared_ptr<HttpServer::State> state,
                           typename Protocol::acceptor& acceptor) {
    asio::steady_timer timer(acceptor.get_executor());
    bool failing = false;
    for (;;) {
        // At the cap, further clients wait in the listen backlog.
        if (state->active >= state->limits.maxConnections && !state->closed) {
            state->report("serving " + std::to_string(state->active) +
                          " connections, the most at once; new ones wait");
            while (state->active >= state->limits.maxConnections && !state->closed)
                co_await pauseOn(*state, timer, asio::steady_timer::time_point::max());
        }
        if (state->closed)
            co_return;
        boost::system::error_code ec;
        typename Protocol::socket socket =
            co_await acceptor.async_accept(asio::redirect_error(asio::use_awaitable, ec));
        if (state->closed || ec == asio::error::operation_aborted)
            co_return;
        if (ec) {
            // Out of descriptors (EMFILE, ENFILE) or another transient failure:
            // retrying at once would spin while the condition lasts.
            ++state->failedAccepts;
            if (!failing)
                state->report("cannot accept a connection (" + ec.message() +
                              "); retrying after a pause");
            failing = true;
            co_await pauseOn(*state, timer,
                             asio::steady_timer::clock_type::now() + state->limits.acceptBackoff);
            continue;
        }
        if (failing)
            state->report("accepting connections again");
        failing = false;
        auto report =
            reportEscaped([state](const std::string& m) { state->report(m); }, "a connection");
        if constexpr (std::is_same_v<Protocol, Tcp>) {
            if (state->tls) {
                asio::co_spawn(acceptor.get_executor(),
                               serveTlsConnection(ConnectionSlot(state), std::move(socket)),
                               std::move(report));
                continue;
            }
        }
        asio::co_spawn(acceptor.get_executor(),
                       serveConnection<Protocol>(ConnectionSlot(state), std::move(socket)),
                       std::move(report));
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
    server->ownsSocketFile_ = true;
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
    asio::co_spawn(
        io, acceptLoop<Local>(server->state_, acceptor),
        reportEscaped([state = server->state_](const std::string& m) { state->report(m); },
                      "the accept loop"));
    return server;
}

std::unique_ptr<HttpServer> HttpServer::onListeningSocket(asio::io_context& io, int descriptor,
                                                          std::filesystem::path path,
                                                          Handler handler) {
    std::unique_ptr<HttpServer> server(new HttpServer());
    server->state_ = std::make_shared<State>();
    server->state_->handler = std::move(handler);
    server->socketPath_ = std::move(path);
    auto& acceptor = server->state_->localAcceptor.emplace(io);
    boost::system::error_code error;
    acceptor.assign(Local(), descriptor, error);
    if (error)
        throw std::system_error(error.value(), std::generic_category(),
                                "cannot accept on the socket handed over");
    asio::co_spawn(
        io, acceptLoop<Local>(server->state_, acceptor),
        reportEscaped([state = server->state_](const std::string& m) { state->report(m); },
                      "the accept loop"));
    return server;
}

std::unique_ptr<HttpServer> HttpServer::onLoopback(asio::io_context& io, std::uint16_t port,
                                                   Handler handler, Limits limits) {
    return onAddress(io, "127.0.0.1", port, std::move(handler), std::move(limits));
}

std::unique_ptr<HttpServer> HttpServer::onAddress(asio::io_context& io, const std::string& address,
                                                  std::uint16_t port, Handler handler,
                                                  Limits limits,
                                                  std::shared_ptr<asio::ssl::context> tls) {
    boost::system::error_code ec;
    auto ip = asio::ip::make_address(address, ec);
    if (ec)
        throw std::system_error(std::make_error_code(std::errc::invalid_argument),
                                "not an IP address: " + address);
    std::unique_ptr<HttpServer> server(new HttpServer());
    server->state_ = std::make_shared<State>();
    server->state_->handler = std::move(handler);
    server->state_->limits = std::move(limits);
    server->state_->tls = std::move(tls);
    auto& acceptor = server->state_->tcpAcceptor.emplace(io);
    Tcp::endpoint endpoint(ip, port);
    acceptor.open(endpoint.protocol(), ec);
    if (!ec)
        acceptor.set_option(asio::socket_base::reuse_address(true), ec);
    if (!ec)
        acceptor.bind(endpoint, ec);
    if (!ec)
        acceptor.listen(asio::socket_base::max_listen_connections, ec);
    if (ec)
        throw std::system_error(ec.value(), std::generic_category(),
                                "cannot listen on " + address + ":" + std::to_string(port));
    server->port_ = acceptor.local_endpoint().port();
    asio::co_spawn(
        io, acceptLoop<Tcp>(server->state_, acceptor),
        reportEscaped([state = server->state_](const std::string& m) { state->report(m); },
                      "the accept loop"));
    return server;
}

std::size_t HttpServer::failedAccepts() const {
    return state_->failedAccepts;
}

std::size_t HttpServer::openConnections() const {
    return state_->active;
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
    if (state_->pause)
        state_->pause->cancel();
    if (ownsSocketFile_) {
        std::error_code removeError;
        std::filesystem::remove(socketPath_, removeError);
    }
}

} // namespace ringwell
