#pragma once

#include "Core/Result.h"

#include <filesystem>

namespace ringwell {

// Where the running daemon and its clients meet: "$XDG_RUNTIME_DIR/ringwell/",
// or "/tmp/ringwell-<uid>/" when XDG_RUNTIME_DIR is unset or not absolute.
std::filesystem::path runtimeDirectory();

// The local API's socket in the runtime directory.
std::filesystem::path socketPath();

// Creates the directory (and its parents) and makes it private to the user
// (mode 0700). Fails with a message when it cannot, or when it belongs to
// someone else.
Result<std::filesystem::path> makePrivateDirectory(const std::filesystem::path& directory);

} // namespace ringwell
