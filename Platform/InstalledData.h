#pragma once

#include <filesystem>

namespace ringwell::InstalledData {

// Ringwell's data directory (tones, web app) for the program at `executable`:
// `share/ringwell` of the tree it sits in, found relative to it, so that a
// build tree, an install under any prefix and a DESTDIR copy each use their
// own: <bin>/../share/ringwell (the build tree, bin/ringwell) or
// <libexec>/ringwell/../../share/ringwell (the installed daemon). `fallback`
// when neither exists.
std::filesystem::path directoryFor(const std::filesystem::path& executable,
                                   const std::filesystem::path& fallback);

// The same for the running program (/proc/self/exe).
std::filesystem::path directory(const std::filesystem::path& fallback);

} // namespace ringwell::InstalledData
