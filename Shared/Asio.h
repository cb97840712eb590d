#pragma once

// Every use of Boost.Asio goes through this header. Boost 1.74's awaitable.hpp
// uses std::exchange without including <utility>, so it must come first.
#include <utility>

#include <boost/asio/awaitable.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace ringwell {
namespace asio = boost::asio;

template <typename T = void> using Awaitable = asio::awaitable<T>;
} // namespace ringwell
