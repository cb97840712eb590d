#include "Model/AlarmTone.h"
#include "Core/Json.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <system_error>

namespace ringwell {
namespace fs = std::filesystem;
namespace {

// Whether the two files hold exactly the same bytes. A file that cannot be
// read counts as different, so the installer replaces it.
bool sameContents(const fs::path& a, const fs::path& b) {
    std::error_code error;
    const auto sizeA = fs::file_size(a, error);
    if (error)
        return false;
    const auto sizeB = fs::file_size(b, error);
    if (error || sizeA != sizeB)
        return false;
    std::ifstream inA(a, std::ios::binary);
    std::ifstream inB(b, std::ios::binary);
    if (!inA || !inB)
        return false;
    std::array<char, 16384> bufferA;
    std::array<char, 16384> bufferB;
    for (std::uintmax_t remaining = sizeA; remaining > 0;) {
        const auto chunk =
            static_cast<std::streamsize>(std::min<std::uintmax_t>(remaining, bufferA.size()));
        if (!inA.read(bufferA.data(), chunk) || !inB.read(bufferB.data(), chunk))
            return false;
        if (!std::equal(bufferA.begin(), bufferA.begin() + chunk, bufferB.begin()))
            return false;
        remaining -= static_cast<std::uintmax_t>(chunk);
    }
    // Both must end here too, in case a file grew after its size was read.
    return inA.peek() == std::ifstream::traits_type::eof() &&
           inB.peek() == std::ifstream::traits_type::eof();
}

void logFailure(const ErrorLog& log, const std::string& description) {
    if (log)
        log("Installing alarm tones failed: " + description);
}

} // namespace

std::string_view rawValue(AlarmTone tone) {
    switch (tone) {
    case AlarmTone::system:
        return "system";
    case AlarmTone::beacon:
        return "beacon";
    case AlarmTone::klaxon:
        return "klaxon";
    case AlarmTone::chime:
        return "chime";
    case AlarmTone::pulse:
        return "pulse";
    case AlarmTone::sonar:
        return "sonar";
    case AlarmTone::rise:
        return "rise";
    case AlarmTone::pager:
        return "pager";
    case AlarmTone::bark:
        return "bark";
    }
    return "system";
}

std::optional<AlarmTone> alarmToneFromRaw(std::string_view raw) {
    for (auto tone : AlarmTones::allCases) {
        if (rawValue(tone) == raw)
            return tone;
    }
    return std::nullopt;
}

std::string label(AlarmTone tone) {
    if (tone == AlarmTone::system)
        return "Default";
    std::string out(rawValue(tone));
    out[0] = static_cast<char>(out[0] - 'a' + 'A'); // raw values are lower-case ASCII
    return out;
}

json::Json toJson(AlarmTone tone) {
    return std::string(rawValue(tone));
}

AlarmTone alarmToneFromJson(const json::Json& value, std::string_view key) {
    return alarmToneFromRaw(json::asString(value, key)).value_or(AlarmTone::system);
}

namespace AlarmTones {

std::optional<std::string> fileName(AlarmTone tone) {
    if (tone == AlarmTone::system)
        return std::nullopt;
    return "ringwell-" + std::string(rawValue(tone));
}

std::optional<fs::path> bundledPath(AlarmTone tone, const fs::path& sourceDir) {
    auto name = fileName(tone);
    if (!name)
        return std::nullopt;
    fs::path path = sourceDir / (*name + "." + std::string(fileExtension));
    std::error_code error;
    if (!fs::is_regular_file(path, error))
        return std::nullopt;
    return path;
}

std::optional<std::string> alertSoundName(AlarmTone tone) {
    auto name = fileName(tone);
    if (!name)
        return std::nullopt;
    return *name + "." + std::string(fileExtension);
}

void install(const fs::path& sourceDir, const fs::path& soundsDir, const ErrorLog& log) {
    std::error_code error;
    fs::create_directories(soundsDir, error);
    if (error) {
        logFailure(log, "cannot create " + soundsDir.string() + ": " + error.message());
        return;
    }
    for (auto tone : allCases) {
        auto source = bundledPath(tone, sourceDir);
        if (!source)
            continue;
        const fs::path destination = soundsDir / source->filename();
        if (sameContents(*source, destination))
            continue;
        fs::remove(destination, error); // a missing destination is the normal case
        if (!fs::copy_file(*source, destination, error) || error) {
            logFailure(log, "cannot copy " + source->string() + " to " + destination.string() +
                                ": " + error.message());
            return;
        }
    }
}

} // namespace AlarmTones
} // namespace ringwell
