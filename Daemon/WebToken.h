#pragma once

#include "Core/Result.h"

#include <filesystem>
#include <string>

namespace ringwell {

// The web app's secret: 32 random bytes in hex, kept in "web-token" (mode
// 0600) in the config directory so that the address `ringwell open` prints
// stays valid across restarts. Created on first use.
Result<std::string> loadOrCreateWebToken(const std::filesystem::path& configDirectory);

} // namespace ringwell
