#pragma once

#include "Shared/AlarmService.h"

#include <filesystem>
#include <optional>

namespace ringwell {

// The file to play for an alarm's sound: the named tone in the user's sounds
// directory when that file exists, otherwise the default tone when that
// exists, otherwise none. A name that is not a plain file name ("../x.caf",
// "a/b.caf") never leaves the sounds directory: it gets the default tone.
// Reads the file system (existence checks only).
std::optional<std::filesystem::path> alarmSoundFile(const AlarmSound& sound,
                                                    const std::filesystem::path& soundsDirectory,
                                                    const std::filesystem::path& defaultTone);

} // namespace ringwell
