#include "Platform/InstalledData.h"

namespace ringwell::InstalledData {

std::filesystem::path directoryFor(const std::filesystem::path& executable,
                                   const std::filesystem::path& fallback) {
    const auto folder = executable.parent_path();
    for (const auto& candidate :
         {folder / ".." / "share" / "ringwell", folder / ".." / ".." / "share" / "ringwell"}) {
        std::error_code error;
        if (std::filesystem::is_directory(candidate, error))
            return candidate.lexically_normal();
    }
    return fallback;
}

std::filesystem::path directory(const std::filesystem::path& fallback) {
    std::error_code error;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? fallback : directoryFor(self, fallback);
}

} // namespace ringwell::InstalledData
