#pragma once

#include "Core/JsonFwd.h"
#include "Model/ErrorLog.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace ringwell {

// The sound of an alarm: the alarm service's default (`system`) or one of the
// eight bundled tones, each a file "ringwell-<tone>.caf" that is installed into
// the user's sounds directory and handed to the alarm service by name.
//
// Decoding is tolerant on purpose: an unknown tone name reads as `system`, so a
// file written by a newer version still loads (contrast FiringMode).
enum class AlarmTone { system, beacon, klaxon, chime, pulse, sonar, rise, pager, bark };

std::string_view rawValue(AlarmTone tone);
// The tone with this raw value, or none (the strict form; JSON decoding is tolerant).
std::optional<AlarmTone> alarmToneFromRaw(std::string_view raw);
// "Default" for `system`, else the raw value capitalised ("Beacon").
std::string label(AlarmTone tone);

json::Json toJson(AlarmTone tone);
// Reads one string; any string that names no tone gives `system`. A value that
// is not a string throws json::DecodeError naming `key`.
AlarmTone alarmToneFromJson(const json::Json& value, std::string_view key);

namespace AlarmTones {

inline constexpr AlarmTone allCases[] = {AlarmTone::system, AlarmTone::beacon, AlarmTone::klaxon,
                                         AlarmTone::chime,  AlarmTone::pulse,  AlarmTone::sonar,
                                         AlarmTone::rise,   AlarmTone::pager,  AlarmTone::bark};

inline constexpr std::string_view fileExtension = "caf";

// "ringwell-beacon" (without extension); none for `system`.
std::optional<std::string> fileName(AlarmTone tone);

// The bundled source file "<sourceDir>/ringwell-<tone>.caf" when it exists as a
// regular file; none for `system` or a missing file.
std::optional<std::filesystem::path> bundledPath(AlarmTone tone,
                                                 const std::filesystem::path& sourceDir);

// The named sound handed to the alarm service: "ringwell-beacon.caf", a file
// name in the user's sounds directory, not a path. None for `system`, which
// means the service's default sound.
std::optional<std::string> alertSoundName(AlarmTone tone);

// Copies the bundled tone files from `sourceDir` into `soundsDir`, once at
// every start before any alarm is scheduled:
// - `soundsDir` is created with its parents; if that fails, the error is
//   logged and nothing is copied;
// - a tone whose source file is missing is skipped;
// - a destination with exactly the source's bytes is left untouched; any other
//   destination is removed (failure ignored) and the source copied over it;
// - the first failed copy stops the loop.
// Errors go to `log` as "Installing alarm tones failed: <description>"; none
// escapes. Blocking file I/O; call it from the main thread at start-up.
void install(const std::filesystem::path& sourceDir, const std::filesystem::path& soundsDir,
             const ErrorLog& log);

} // namespace AlarmTones
} // namespace ringwell
