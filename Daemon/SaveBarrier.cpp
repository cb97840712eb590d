#include "Daemon/SaveBarrier.h"

#include <boost/asio/async_result.hpp>
#include <boost/asio/post.hpp>

#include <memory>

namespace ringwell {

void batchSavesPerLoopTurn(RingwellStore& store, asio::io_context& io) {
    store.batchSaves([&io](std::function<void()> flush) { asio::post(io, std::move(flush)); });
}

Awaitable<void> savedToDisk(RingwellStore& store) {
    auto initiate = [&store](auto handler) {
        // std::function needs a copyable callable; the coroutine's handler is
        // move-only. Posting resumes the coroutine outside the store's flush.
        auto shared = std::make_shared<decltype(handler)>(std::move(handler));
        store.whenSaved([shared] { asio::post(std::move(*shared)); });
    };
    co_await asio::async_initiate<const asio::use_awaitable_t<>&, void()>(initiate,
                                                                          asio::use_awaitable);
}

} // namespace ringwell
