#include "Core/Uuid.h"

#include "Core/HexDigit.h"

#include <random>

namespace ringwell {
namespace {

bool isDashPosition(size_t i) {
    return i == 8 || i == 13 || i == 18 || i == 23;
}

} // namespace

Uuid Uuid::random() {
    thread_local std::random_device device;
    thread_local std::mt19937_64 engine((static_cast<std::uint64_t>(device()) << 32) ^
                                        static_cast<std::uint64_t>(device()));
    Uuid uuid;
    for (size_t i = 0; i < uuid.bytes.size(); i += 8) {
        std::uint64_t word = engine();
        for (size_t j = 0; j < 8; ++j)
            uuid.bytes[i + j] = static_cast<std::uint8_t>(word >> (8 * j));
    }
    uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0F) | 0x40); // version 4
    uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3F) | 0x80); // RFC 4122 variant
    return uuid;
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != 36)
        return std::nullopt;
    Uuid uuid;
    size_t byte = 0;
    for (size_t i = 0; i < text.size();) {
        if (isDashPosition(i)) {
            if (text[i] != '-')
                return std::nullopt;
            ++i;
            continue;
        }
        int high = text::hexDigitValue(text[i]);
        int low = text::hexDigitValue(text[i + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        uuid.bytes[byte++] = static_cast<std::uint8_t>(high * 16 + low);
        i += 2;
    }
    return uuid;
}

std::string Uuid::toString() const {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(36);
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            out.push_back('-');
        out.push_back(digits[bytes[i] >> 4]);
        out.push_back(digits[bytes[i] & 0x0F]);
    }
    return out;
}

} // namespace ringwell
