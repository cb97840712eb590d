// The bodies of POST /v1/send and /v1/ring decoded into their requests the way
// the API does: a request or a DecodeError, nothing else.
#include "Core/Iso8601.h"
#include "Core/Json.h"
#include "Intents/SendToRingwellIntent.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

using namespace ringwell;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto parsed = json::parse(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!parsed || !parsed.value().is_object())
        return 0;
    const json::Json& body = parsed.value();
    try {
        (void)sendIntentFromJson(body);
    } catch (const json::DecodeError&) {
    }
    try {
        (void)json::requireString(body, "channel");
        (void)json::optionalString(body, "title");
        (void)json::optionalString(body, "subtitle");
        (void)json::optionalString(body, "body");
        if (auto receivedAt = json::optionalString(body, "receivedAt"))
            (void)parseIso8601(*receivedAt);
    } catch (const json::DecodeError&) {
    }
    return 0;
}
