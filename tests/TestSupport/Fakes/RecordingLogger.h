#pragma once

#include "Alarms/Logger.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace ringwell::testing {

// A log that keeps every line; safe from any thread, as the Logger contract
// requires.
class RecordingLogger final : public Logger {
public:
    struct Line {
        LogLevel level;
        std::string category;
        std::string message;
        bool operator==(const Line&) const = default;
    };

    void log(LogLevel level, std::string_view category, std::string_view message) override {
        std::lock_guard lock(mutex_);
        lines_.push_back({level, std::string(category), std::string(message)});
    }
    std::vector<Line> lines() const {
        std::lock_guard lock(mutex_);
        return lines_;
    }
    // How many lines contain `part`.
    int count(std::string_view part) const {
        std::lock_guard lock(mutex_);
        return static_cast<int>(std::count_if(lines_.begin(), lines_.end(), [&](const Line& line) {
            return line.message.find(part) != std::string::npos;
        }));
    }

private:
    mutable std::mutex mutex_;
    std::vector<Line> lines_;
};

} // namespace ringwell::testing
