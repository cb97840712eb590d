#include "Platform/AlarmSoundFile.h"

#include <system_error>

namespace ringwell {
namespace fs = std::filesystem;
namespace {

bool isPlainFileName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

bool isRegularFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

} // namespace

std::optional<fs::path> alarmSoundFile(const AlarmSound& sound, const fs::path& soundsDirectory,
                                       const fs::path& defaultTone) {
    if (sound.named && isPlainFileName(*sound.named)) {
        fs::path named = soundsDirectory / *sound.named;
        if (isRegularFile(named))
            return named;
    }
    if (isRegularFile(defaultTone))
        return defaultTone;
    return std::nullopt;
}

} // namespace ringwell
