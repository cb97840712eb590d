#pragma once

#include "Alarms/Logger.h"
#include "Alarms/NoticeCenter.h"
#include "Core/Date.h"
#include "Model/Clock.h"
#include "Shared/AlarmService.h"
#include "Shared/Asio.h"
#include "TestSupport/EnvironmentGuard.h"
#include "TestSupport/Fakes/FakeClock.h"
#include "TestSupport/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <chrono>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

// Small fakes and helpers for the platform tests, kept here so that this
// suite depends on nothing but the platform layer.
namespace ringwell::platformtest {

using TestClock = testing::FakeClock;
using testing::EnvironmentGuard;
using testing::readFile;
using testing::TemporaryDirectory;
using testing::writeFile;

struct LogLine {
    LogLevel level;
    std::string category;
    std::string message;
};

// Keeps every line; safe from any thread, as the Logger contract requires.
class RecordingLogger final : public Logger {
public:
    void log(LogLevel level, std::string_view category, std::string_view message) override {
        std::lock_guard lock(mutex_);
        lines_.push_back({level, std::string(category), std::string(message)});
    }
    std::vector<LogLine> lines() const {
        std::lock_guard lock(mutex_);
        return lines_;
    }
    // Lines whose message contains `part`.
    int count(std::string_view part) const {
        std::lock_guard lock(mutex_);
        int found = 0;
        for (const auto& line : lines_)
            found += line.message.find(part) != std::string::npos;
        return found;
    }

private:
    mutable std::mutex mutex_;
    std::vector<LogLine> lines_;
};

// Records the notices it is given; refuses them all when told to.
class RecordingNoticeCenter final : public NoticeCenter {
public:
    Awaitable<void> add(NoticeRequest request) override {
        requests.push_back(request);
        if (refuse)
            throw std::runtime_error("refused by the test");
        co_return;
    }
    Awaitable<void> withdraw(std::string identifier) override {
        withdrawn.push_back(identifier);
        co_return;
    }
    std::string permissionStatus() const override { return "allowed"; }
    // As the person answering a notice on the desktop.
    void answer(const NoticeResponse& response) { respond(response); }

    std::vector<NoticeRequest> requests;
    std::vector<std::string> withdrawn;
    bool refuse = false;
};

// Runs the io_context's handlers until `done` holds or `limit` passes; true
// when `done` holds. For work that finishes on another thread or process.
inline bool runUntil(asio::io_context& context, const std::function<bool()>& done,
                     std::chrono::milliseconds limit = std::chrono::seconds(10)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        context.restart();
        context.run_one_for(std::chrono::milliseconds(20));
    }
    return true;
}

// Runs every handler that is ready now, without waiting for timers.
inline void drain(asio::io_context& context) {
    context.restart();
    context.poll();
}

// Runs `service.schedule` to its end without waiting for timers; rethrows what
// it threw.
inline void scheduleNow(asio::io_context& context, AlarmService& service, const Uuid& id,
                        AlarmConfiguration config) {
    std::exception_ptr failure;
    bool finished = false;
    asio::co_spawn(context, service.schedule(id, std::move(config)), [&](std::exception_ptr error) {
        failure = error;
        finished = true;
    });
    drain(context);
    EXPECT_TRUE(finished);
    if (failure)
        std::rethrow_exception(failure);
}

// An alarm configuration as the scheduler builds one, reduced to what the
// service looks at.
inline AlarmConfiguration configuration(std::optional<double> preAlert,
                                        std::optional<double> postAlert = std::nullopt,
                                        std::optional<std::string> sound = std::nullopt,
                                        std::string title = "Urgent: Mom") {
    AlarmConfiguration config;
    config.countdownDuration = {preAlert, postAlert};
    config.attributes.presentation.alert.title = std::move(title);
    config.attributes.presentation.countdown.title = "Urgent";
    config.attributes.presentation.paused.title = "Paused";
    config.attributes.metadata.channelID = Uuid::random();
    config.attributes.metadata.channelName = "Urgent";
    config.attributes.metadata.app = "Messages";
    config.attributes.metadata.title = "Mom";
    config.attributes.metadata.body = "call me";
    config.attributes.tintHex = "#FF3B30";
    config.sound.named = std::move(sound);
    return config;
}

// The kind of AlarmServiceError that `operation` throws; none when it throws
// nothing.
template <typename Operation>
std::optional<AlarmServiceError::Kind> errorKind(Operation&& operation) {
    try {
        operation();
    } catch (const AlarmServiceError& error) {
        return error.kind();
    }
    return std::nullopt;
}

} // namespace ringwell::platformtest
