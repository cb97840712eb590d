#pragma once

#include <string_view>

namespace ringwell {

enum class LogLevel { debug, info, notice, error };

// The platform log: journald with the subsystem and a category per area
// ("SendToRingwell", "AlarmTone", ...) when the journal is there, else standard
// error (Platform/JournalLogger); tests record the lines. Any thread.
class Logger {
public:
    virtual ~Logger() = default;
    virtual void log(LogLevel level, std::string_view category, std::string_view message) = 0;
};

// The subsystem every line is logged under.
inline constexpr std::string_view logSubsystem = "org.ringwell.Ringwell";

} // namespace ringwell
