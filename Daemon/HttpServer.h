#pragma once

#include "Daemon/ApiMessage.h"
#include "Shared/Asio.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace boost::asio::ssl {
class context;
}

namespace ringwell {

// Serves HTTP/1.1 (optionally over TLS) on a Unix socket or a TCP port, one coroutine
// per connection on the daemon's io_context, keep-alive included. Every read
// has a timeout and a body limit; malformed requests get a JSON error and
// never reach the handler. A handler that throws answers 500 with the
// exception's message; nothing a client sends can stop the daemon. An answer
// with an EventStream stays open and carries the stream's messages.
class HttpServer {
public:
    using Handler = std::function<Awaitable<ApiResponse>(ApiRequest)>;

    struct Limits {
        std::size_t maxBodyBytes = 1 << 20;
        std::chrono::seconds readTimeout{30};
        std::chrono::seconds heartbeat{15};
        // Connections served at once; further clients wait in the listen
        // backlog until one ends.
        std::size_t maxConnections = 256;
        // The pause before accepting again when the process is out of
        // descriptors, so the loop does not spin while they stay taken.
        std::chrono::milliseconds acceptBackoff{100};
        // Where the listener reports trouble; standard error when empty.
        std::function<void(const std::string&)> log;
        // Told of every request the server refuses itself, before any
        // handler (malformed, body over the limit, failed TLS handshake),
        // with the client's "address:port"; nothing is told when empty.
        std::function<void(const std::string& peer, const ApiResponse& refusal)> refused;
    };

    // Binds the Unix socket (replacing a stale file, then mode 0600) and
    // starts accepting. Throws std::system_error when it cannot.
    static std::unique_ptr<HttpServer> onSocket(asio::io_context& io, std::filesystem::path path,
                                                Handler handler, Limits limits);
    static std::unique_ptr<HttpServer> onSocket(asio::io_context& io, std::filesystem::path path,
                                                Handler handler) {
        return onSocket(io, std::move(path), std::move(handler), Limits{});
    }
    // Accepts on a listening Unix socket that was handed over (systemd's
    // socket activation); `path` only names it. Its file belongs to whoever
    // made it and stays when the server closes. Throws std::system_error when
    // the descriptor cannot be used.
    static std::unique_ptr<HttpServer> onListeningSocket(asio::io_context& io, int descriptor,
                                                         std::filesystem::path path,
                                                         Handler handler);
    // Listens on 127.0.0.1:`port` (0 picks a free port). Throws
    // std::system_error when the port is taken.
    static std::unique_ptr<HttpServer> onLoopback(asio::io_context& io, std::uint16_t port,
                                                  Handler handler, Limits limits);
    static std::unique_ptr<HttpServer> onLoopback(asio::io_context& io, std::uint16_t port,
                                                  Handler handler) {
        return onLoopback(io, port, std::move(handler), Limits{});
    }
    // Listens on `address` ("0.0.0.0", "192.168.1.2", "::"), port 0 picking
    // a free one; with `tls`, every connection starts with a TLS handshake.
    // Throws std::system_error for a malformed address or a taken port.
    static std::unique_ptr<HttpServer> onAddress(asio::io_context& io, const std::string& address,
                                                 std::uint16_t port, Handler handler, Limits limits,
                                                 std::shared_ptr<asio::ssl::context> tls = nullptr);

    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    // Stops accepting (and removes the socket file); open connections finish.
    void close();

    // The socket's path, or empty for a TCP server.
    const std::filesystem::path& socketPath() const { return socketPath_; }
    // The TCP port, or 0 for a Unix socket.
    std::uint16_t port() const { return port_; }

    // Counters for tests and diagnostics.
    std::size_t failedAccepts() const;
    std::size_t openConnections() const;

    // Shared by the accept loop and every connection, so they outlive `close`.
    struct State;

private:
    HttpServer() = default;
    std::shared_ptr<State> state_;
    std::filesystem::path socketPath_;
    bool ownsSocketFile_ = false;
    std::uint16_t port_ = 0;
};

} // namespace ringwell
