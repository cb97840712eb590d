#pragma once

#include "Alarms/AlarmAuthorization.h"
#include "Alarms/AlarmScheduler.h"
#include "Alarms/AppContext.h"
#include "Alarms/SetupTestController.h"
#include "Model/RingwellStore.h"
#include "Shared/Asio.h"
#include "TestSupport/Fakes/FakeAlarmService.h"
#include "TestSupport/Fakes/FakeClock.h"
#include "TestSupport/Fakes/FakeNoticeCenter.h"
#include "TestSupport/Fakes/MemoryUserDefaults.h"
#include "TestSupport/Fakes/RecordingLogger.h"
#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

#include <exception>
#include <optional>
#include <utility>

namespace ringwell::testing {

// Runs an awaitable to its end on `io` and returns its value, rethrowing what
// it threw.
template <typename T> T run(asio::io_context& io, Awaitable<T> awaitable) {
    std::optional<T> result;
    std::exception_ptr failure;
    asio::co_spawn(io, std::move(awaitable), [&](std::exception_ptr error, T value) {
        failure = error;
        if (!error)
            result.emplace(std::move(value));
    });
    io.restart();
    io.run();
    if (failure)
        std::rethrow_exception(failure);
    if (!result)
        throw std::logic_error("the awaitable did not finish");
    return std::move(*result);
}

inline void run(asio::io_context& io, Awaitable<void> awaitable) {
    run(io, [](Awaitable<void> inner) -> Awaitable<bool> {
        co_await std::move(inner);
        co_return true;
    }(std::move(awaitable)));
}

// Runs several awaitables side by side on `io`, as near-simultaneous requests
// of the daemon do, and returns each one's value (or its error) in order.
template <typename T> struct Outcome {
    std::optional<T> value;
    std::exception_ptr error;
};
template <typename T>
std::vector<Outcome<T>> runTogether(asio::io_context& io, std::vector<Awaitable<T>> awaitables) {
    std::vector<Outcome<T>> outcomes(awaitables.size());
    for (std::size_t i = 0; i < awaitables.size(); ++i) {
        asio::co_spawn(io, std::move(awaitables[i]),
                       [&outcomes, i](std::exception_ptr error, T value) {
                           outcomes[i].error = error;
                           if (!error)
                               outcomes[i].value.emplace(std::move(value));
                       });
    }
    io.restart();
    io.run();
    return outcomes;
}

// The app's objects wired to fakes around an in-memory store, which starts
// with the seeded "Urgent" channel (enabled, immediate, matching everything).
class AppTest : public ::testing::Test {
protected:
    template <typename T> T run(Awaitable<T> awaitable) {
        return testing::run(io, std::move(awaitable));
    }

    const Channel& urgent() const { return store.channels().front(); }

    // Changes a stored channel in place and returns it as stored.
    template <typename Change> Channel change(const Uuid& id, Change change) {
        Channel channel = *store.channel(id);
        change(channel);
        store.update(channel);
        return *store.channel(id);
    }

    static ChannelRule appRule(std::string app) {
        ChannelRule rule;
        rule.apps = {std::move(app)};
        return rule;
    }

    // A forwarded notification as the Send intent builds it.
    static ShortcutInputFields send(std::optional<std::string> app,
                                    std::optional<std::string> sender = std::nullopt,
                                    std::optional<std::string> title = std::string("Hello"),
                                    std::optional<std::string> body = std::nullopt) {
        return ShortcutInputFields::fromShortcutInput(std::nullopt, title, std::nullopt, body, app,
                                                      std::nullopt, sender, std::nullopt,
                                                      std::nullopt, std::nullopt);
    }

    asio::io_context io;
    FakeClock clock{at("2026-03-01T09:30:00Z")};
    RingwellStore store{clock};
    FakeAlarmService service;
    FakeNoticeCenter notices;
    MemoryUserDefaults defaults;
    RecordingLogger logger;
    AlarmScheduler scheduler{service, store, clock};
    AlarmAuthorization authorization{service};
    SetupTestController setupTest{defaults, clock};
    AppContext ctx{
        store,   service,  scheduler, authorization, setupTest,
        notices, defaults, logger,    clock,         [] { return calendarIn("Europe/Berlin"); }};
};

} // namespace ringwell::testing
