// Sends through the daemon's API socket from one process, so that a burst is
// measured without 200 process starts: COUNT sends one after another, or COUNT
// sends on COUNT connections at once. Each send is the request `ringwell send`
// makes (POST /v1/send on its own connection).
//
// Usage: ringwell-send-burst SOCKET sequential|concurrent COUNT TITLE_PREFIX
// Prints "elapsed_us N", then the title of every acknowledged send (2xx), one
// per line. Exits 1 when a send was not acknowledged.

#include <utility> // before Boost 1.74's awaitable.hpp, which needs std::exchange

#include <boost/asio/awaitable.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using Protocol = asio::local::stream_protocol;

namespace {

struct Burst {
    std::string socket;
    std::string prefix;
    std::vector<std::string> acknowledged;
    int failed = 0;
};

std::string body(const std::string& title) {
    nlohmann::json request = {{"app", "Bench"},
                              {"sender", "Sender " + title},
                              {"notificationTitle", title},
                              {"notificationBody",
                               "Could you call me back as soon as you see this? It is about the "
                               "delivery that was due this morning and the customer is waiting "
                               "on the line."}};
    return request.dump();
}

asio::awaitable<void> send(Burst& burst, std::string title) {
    auto executor = co_await asio::this_coro::executor;
    beast::basic_stream<Protocol> stream(executor);
    stream.expires_after(std::chrono::seconds(60));
    boost::system::error_code ec;
    co_await stream.async_connect(Protocol::endpoint(burst.socket),
                                  asio::redirect_error(asio::use_awaitable, ec));
    http::request<http::string_body> request{http::verb::post, "/v1/send", 11};
    request.set(http::field::host, "localhost");
    request.set(http::field::content_type, "application/json");
    request.body() = body(title);
    request.keep_alive(false);
    request.prepare_payload();
    if (!ec)
        co_await http::async_write(stream, request, asio::redirect_error(asio::use_awaitable, ec));
    beast::flat_buffer buffer;
    http::response<http::string_body> response;
    if (!ec)
        co_await http::async_read(stream, buffer, response,
                                  asio::redirect_error(asio::use_awaitable, ec));
    if (!ec && response.result_int() / 100 == 2) {
        burst.acknowledged.push_back(std::move(title));
    } else {
        ++burst.failed;
        std::cerr << title << ": " << (ec ? ec.message() : response.body()) << "\n";
    }
}

asio::awaitable<void> oneAfterAnother(Burst& burst, int count) {
    for (int i = 1; i <= count; ++i)
        co_await send(burst, burst.prefix + std::to_string(i));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr,
                     "usage: ringwell-send-burst SOCKET sequential|concurrent COUNT PREFIX\n");
        return 2;
    }
    Burst burst{argv[1], argv[4], {}, 0};
    const std::string mode = argv[2];
    const int count = std::atoi(argv[3]);
    asio::io_context io;
    const auto start = std::chrono::steady_clock::now();
    if (mode == "concurrent") {
        for (int i = 1; i <= count; ++i)
            asio::co_spawn(io, send(burst, burst.prefix + std::to_string(i)), asio::detached);
    } else {
        asio::co_spawn(io, oneAfterAnother(burst, count), asio::detached);
    }
    io.run();
    const auto elapsed = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::steady_clock::now() - start);
    std::cout << "elapsed_us " << elapsed.count() << "\n";
    for (const auto& title : burst.acknowledged)
        std::cout << title << "\n";
    return burst.failed == 0 ? 0 : 1;
}
