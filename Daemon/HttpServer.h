#pragma once

#include "Daemon/ApiMessage.h"
#include "Shared/Asio.h"

#include <boost/asio/local/stream_protocol.hpp>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>

namespace ringwell {

// Serves HTTP/1.1 on a Unix socket, one coroutine per connection on the
// daemon's io_context, keep-alive included. Every read has a timeout and a
// body limit; malformed requests get a JSON error and never reach the handler.
// A handler that throws answers 500 with the exception's message; nothing a
// client sends can stop the daemon.
class HttpServer {
public:
    using Handler = std::function<Awaitable<ApiResponse>(ApiRequest)>;

    struct Limits {
        std::size_t maxBodyBytes = 1 << 20;
        std::chrono::seconds readTimeout{30};
    };

    // Binds the socket (replacing a stale file, then mode 0600) and starts
    // accepting. Throws std::system_error when the socket cannot be bound.
    HttpServer(asio::io_context& io, std::filesystem::path socketPath, Handler handler,
               Limits limits);
    HttpServer(asio::io_context& io, std::filesystem::path socketPath, Handler handler)
        : HttpServer(io, std::move(socketPath), std::move(handler), Limits{}) {}
    ~HttpServer();

    // Stops accepting and removes the socket file; open connections finish.
    void close();

    const std::filesystem::path& socketPath() const { return socketPath_; }

    // Shared by the accept loop and every connection, so they outlive `close`.
    struct State;

private:
    std::shared_ptr<State> state_;
    std::filesystem::path socketPath_;
};

} // namespace ringwell
