#pragma once

#include "Alarms/Logger.h"

#include <string>
#include <vector>

namespace ringwell::testing {

// A log that keeps every line.
class RecordingLogger final : public Logger {
public:
    struct Line {
        LogLevel level;
        std::string category;
        std::string message;
        bool operator==(const Line&) const = default;
    };
    std::vector<Line> lines;

    void log(LogLevel level, std::string_view category, std::string_view message) override {
        lines.push_back({level, std::string(category), std::string(message)});
    }
};

} // namespace ringwell::testing
