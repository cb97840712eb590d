#include "Platform/BundledSounds.h"

#include <cstdlib>

namespace ringwell::BundledSounds {

std::filesystem::path directory() {
    const char* overridden = std::getenv("RINGWELL_SOUNDS_DIR");
    if (overridden && *overridden)
        return overridden;
    return RINGWELL_BUNDLED_SOUNDS_DIR;
}

std::filesystem::path defaultTone() {
    return directory() / defaultToneFileName;
}

} // namespace ringwell::BundledSounds
