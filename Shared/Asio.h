#pragma once

// Every use of Boost.Asio goes through this header. Boost 1.74's awaitable.hpp
// uses std::exchange without including <utility>, so it must come first.
#include <utility>

#include <exception>
#include <string>

#include <boost/asio/awaitable.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace ringwell {
namespace asio = boost::asio;

template <typename T = void> using Awaitable = asio::awaitable<T>;

// A co_spawn completion that reports an exception escaping the coroutine
// instead of dropping it as asio::detached does. `report` takes one message.
template <typename Report> auto reportEscaped(Report report, std::string what) {
    return
        [report = std::move(report), what = std::move(what)](std::exception_ptr error, auto&&...) {
            if (!error)
                return;
            try {
                std::rethrow_exception(error);
            } catch (const std::exception& escaped) {
                report(what + " failed: " + escaped.what());
            } catch (...) {
                report(what + " failed with an unknown exception");
            }
        };
}
} // namespace ringwell
