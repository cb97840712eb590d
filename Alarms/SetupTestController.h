#pragma once

#include "Alarms/UserDefaults.h"
#include "Core/Date.h"
#include "Core/JsonFwd.h"
#include "Core/NotificationInfo.h"
#include "Core/ObserverList.h"
#include "Core/SetupTest.h"
#include "Model/Clock.h"

#include <string>
#include <variant>
#include <vector>

namespace ringwell {

// The live setup test: started by the person, it takes the next forwarded
// notification instead of routing it, judges the automation's mapping field
// by field and saves a one-line verdict under "lastSetupTestResult".
//
// The state lives in memory only and a waiting test never times out. Main
// thread only; observers hear of every change of state.
class SetupTestController {
public:
    // No test: forwarded notifications take the ordinary road. The start.
    struct Idle {
        bool operator==(const Idle&) const = default;
    };
    // The next forwarded notification is taken for the test.
    struct Waiting {
        SetupTest test;
        bool operator==(const Waiting&) const = default;
    };
    // A notification arrived: the raw app that sent it (empty when absent)
    // and the checks in evaluation order.
    struct Received {
        SetupTest test;
        std::string app;
        std::vector<SetupCheck> checks;
        bool operator==(const Received&) const = default;
    };
    using State = std::variant<Idle, Waiting, Received>;

    using Observer = ObserverList<State>::Observer;
    using Token = ObserverList<State>::Token;

    // `defaults` and `clock` must outlive the controller.
    SetupTestController(UserDefaults& defaults, const Clock& clock);
    SetupTestController(const SetupTestController&) = delete;
    SetupTestController& operator=(const SetupTestController&) = delete;

    const State& state() const { return state_; }
    bool isWaiting() const { return std::holds_alternative<Waiting>(state_); }

    // "Start Test", "Test Again": waits for the next notification, from any state.
    void start(Date now);
    // "Cancel": back to idle.
    void cancel();

    // Judges the forwarded input when a test waits, saves the verdict and
    // keeps the result on show; does nothing in any other state.
    void receive(const ShortcutInputFields& fields);

    [[nodiscard]] Token subscribe(Observer observer) { return observers_.subscribe(observer); }
    void unsubscribe(Token token) { observers_.unsubscribe(token); }

    // "passed (2026-03-01T09:30:00Z)" or "failed: Title, Body (2026-03-01T09:30:00Z)":
    // the labels of the failed checks in check order; unverifiable ones are
    // not failures.
    static std::string verdict(const std::vector<SetupCheck>& checks, Date at);

private:
    void setState(State state);

    UserDefaults& defaults_;
    const Clock& clock_;
    State state_ = Idle{};
    ObserverList<State> observers_;
};

// {"state": "idle"}, {"state": "waiting", "startedAt": date}, or
// {"state": "received", "startedAt", "app", "allPassed", "checks": [...]}.
json::Json toJson(const SetupTestController::State& state);

} // namespace ringwell
