#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace ringwell {

// A 128-bit identifier. Written in the canonical 8-4-4-4-12 form in upper
// case; read in either case.
struct Uuid {
    std::array<std::uint8_t, 16> bytes{};

    // A random (version 4) identifier from the system's random source.
    static Uuid random();
    static std::optional<Uuid> parse(std::string_view text);
    std::string toString() const;

    auto operator<=>(const Uuid&) const = default;
    bool operator==(const Uuid&) const = default;
};

} // namespace ringwell

template <> struct std::hash<ringwell::Uuid> {
    std::size_t operator()(const ringwell::Uuid& uuid) const noexcept {
        std::size_t h = 0;
        for (auto byte : uuid.bytes)
            h = h * 131 + byte;
        return h;
    }
};
