#pragma once

#include "Model/RingwellStore.h"
#include "Shared/Asio.h"

namespace ringwell {

// Has the store write its changes once per turn of the loop: every change made
// before the posted flush runs shares that one save. The write and its fsyncs
// happen on the store's writer thread while the loop serves on; changes made
// meanwhile share the next save. Main thread only.
void batchSavesPerLoopTurn(RingwellStore& store, asio::io_context& io);

// Completes once every change made so far has been through a save (succeeded
// or not; the store's `saveError` says which). A send awaits it so that no
// send is acknowledged before the save that holds its event.
Awaitable<void> savedToDisk(RingwellStore& store);

} // namespace ringwell
