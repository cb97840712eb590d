#pragma once

#include <string>
#include <string_view>

// The secrets of the devices that send over the LAN, with OpenSSL's random
// source and digest. A token is shown once when its device is added; only its
// SHA-256 is kept, so the devices file alone cannot send.
namespace ringwell::DeviceToken {

// 32 random bytes from OpenSSL's generator, in hex. Throws std::runtime_error
// when the generator cannot be seeded (never on a working Linux system).
std::string generate();

// The SHA-256 of `token`, in hex.
std::string hash(std::string_view token);

// Whether two texts are equal, in a time that does not depend on where they
// differ (only on their length).
bool sameSecret(std::string_view a, std::string_view b);

} // namespace ringwell::DeviceToken
