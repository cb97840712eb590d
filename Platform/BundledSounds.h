#pragma once

#include <filesystem>

// The tone files built with Ringwell (ringwell-<tone>.caf and the default
// tone ringwell-default.caf), which the daemon installs into the user's sounds
// directory at start.
namespace ringwell::BundledSounds {

// $RINGWELL_SOUNDS_DIR when set and not empty, otherwise "Sounds" in the
// data directory of the running program's tree (InstalledData).
std::filesystem::path directory();

// "ringwell-default.caf" in `directory()`: what an alarm with the service's
// default sound plays, and what a missing named tone falls back to.
std::filesystem::path defaultTone();

inline constexpr const char* defaultToneFileName = "ringwell-default.caf";

} // namespace ringwell::BundledSounds
