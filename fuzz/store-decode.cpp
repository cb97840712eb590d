// The store file as read back from disk: any bytes decode or fail cleanly.
#include "Model/RingwellStore.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    auto snapshot = ringwell::decodeSnapshot(text, ringwell::Date{800000000});
    (void)snapshot;
    return 0;
}
