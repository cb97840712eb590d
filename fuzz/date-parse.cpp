// Dates as clients and files give them: parsed or refused, never a crash.
#include "Core/Iso8601.h"
#include "Core/NotificationInfo.h"

#include <cstddef>
#include <cstdint>
#include <string>

using namespace ringwell;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    if (auto date = parseIso8601(text))
        (void)parseIso8601(formatIso8601(*date));
    (void)NotificationInfo::parseDate(text);
    return 0;
}
