#pragma once

#include "Core/Date.h"
#include "Model/Clock.h"
#include "Shared/AlarmService.h"
#include "Shared/Asio.h"
#include "TestSupport/EnvironmentGuard.h"
#include "TestSupport/Fakes/FakeClock.h"
#include "TestSupport/Fakes/FakeNoticeCenter.h"
#include "TestSupport/Fakes/RecordingLogger.h"
#include "TestSupport/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <chrono>
#include <exception>
#include <functional>
#include <optional>
#include <string>

// Helpers for the platform tests.
namespace ringwell::platformtest {

using TestClock = testing::FakeClock;
using testing::EnvironmentGuard;
using testing::FakeNoticeCenter;
using testing::readFile;
using testing::RecordingLogger;
using testing::TemporaryDirectory;
using testing::writeFile;

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
    config.attributes.metadata.channelName = "Urgent";
    config.attributes.metadata.app = "Messages";
    config.attributes.metadata.title = "Mom";
    config.attributes.metadata.body = "call me";
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
