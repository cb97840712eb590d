#include "Platform/BundledSounds.h"

#include "Platform/InstalledData.h"

#include <cstdlib>

namespace ringwell::BundledSounds {

std::filesystem::path directory() {
    const char* overridden = std::getenv("RINGWELL_SOUNDS_DIR");
    if (overridden && *overridden)
        return overridden;
    const std::filesystem::path built = RINGWELL_BUNDLED_SOUNDS_DIR;
    return InstalledData::directory(built.parent_path()) / "Sounds";
}

std::filesystem::path defaultTone() {
    return directory() / defaultToneFileName;
}

} // namespace ringwell::BundledSounds
