#include "Cli/DaemonClient.h"

#include "Shared/Asio.h"

#include <boost/asio/local/stream_protocol.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

namespace ringwell::cli {
namespace beast = boost::beast;
namespace http = beast::http;
using Protocol = asio::local::stream_protocol;

DaemonClient::DaemonClient(std::filesystem::path socketPath, std::chrono::seconds timeout)
    : socketPath_(std::move(socketPath)), timeout_(timeout) {}

DaemonClient::Outcome DaemonClient::request(const std::string& method, const std::string& target,
                                            const std::string& body) const {
    Outcome outcome;
    asio::io_context io;
    auto exchange = [&]() -> Awaitable<void> {
        beast::basic_stream<Protocol> stream(io);
        boost::system::error_code ec;
        stream.expires_after(timeout_);
        co_await stream.async_connect(Protocol::endpoint(socketPath_.string()),
                                      asio::redirect_error(asio::use_awaitable, ec));
        if (ec) {
            outcome.failure = ec.message();
            co_return;
        }
        outcome.reachable = true;
        http::request<http::string_body> request{http::string_to_verb(method), target, 11};
        request.set(http::field::host, "localhost");
        request.set(http::field::user_agent, "ringwell-cli");
        if (!body.empty()) {
            request.set(http::field::content_type, "application/json");
            request.body() = body;
        }
        request.keep_alive(false);
        request.prepare_payload();
        co_await http::async_write(stream, request, asio::redirect_error(asio::use_awaitable, ec));
        if (ec) {
            outcome.failure = "sending the request failed: " + ec.message();
            co_return;
        }
        beast::flat_buffer buffer;
        http::response_parser<http::string_body> parser;
        parser.body_limit(64 * 1024 * 1024);
        co_await http::async_read(stream, buffer, parser,
                                  asio::redirect_error(asio::use_awaitable, ec));
        if (ec) {
            outcome.failure = ec == beast::error::timeout
                                  ? "the daemon did not answer in time"
                                  : "reading the answer failed: " + ec.message();
            co_return;
        }
        auto response = parser.release();
        outcome.reply = DaemonReply{response.result_int(), response.body(),
                                    std::string(response[http::field::content_type])};
    };
    asio::co_spawn(
        io, exchange(),
        reportEscaped([&outcome](const std::string& m) { outcome.failure = m; }, "the request"));
    io.run();
    return outcome;
}

} // namespace ringwell::cli
