#include "Alarms/SetupTestController.h"
#include "Core/Iso8601.h"
#include "Core/Json.h"

namespace ringwell {

SetupTestController::SetupTestController(UserDefaults& defaults, const Clock& clock)
    : defaults_(defaults), clock_(clock) {}

void SetupTestController::start(Date now) {
    setState(Waiting{SetupTest{now}});
}

void SetupTestController::cancel() {
    setState(Idle{});
}

void SetupTestController::receive(const ShortcutInputFields& fields) {
    const auto* waiting = std::get_if<Waiting>(&state_);
    if (!waiting)
        return;
    const SetupTest test = waiting->test;
    std::vector<SetupCheck> checks = test.evaluate(fields);
    defaults_.set(DefaultsKey::lastSetupTestResult, verdict(checks, clock_.now()));
    setState(Received{test, fields.app.value_or(""), std::move(checks)});
}

std::string SetupTestController::verdict(const std::vector<SetupCheck>& checks, Date at) {
    std::string failed;
    for (const SetupCheck& check : checks) {
        if (check.status != SetupCheck::Status::failed)
            continue;
        if (!failed.empty())
            failed += ", ";
        failed += label(check.field);
    }
    const std::string outcome = failed.empty() ? "passed" : "failed: " + failed;
    return outcome + " (" + formatIso8601(at) + ")";
}

void SetupTestController::setState(State state) {
    if (state == state_)
        return;
    state_ = std::move(state);
    observers_.notify(state_);
}

json::Json toJson(const SetupTestController::State& state) {
    using Controller = SetupTestController;
    if (const auto* waiting = std::get_if<Controller::Waiting>(&state))
        return json::Json{{"state", "waiting"},
                          {"startedAt", json::dateValue(waiting->test.startedAt)}};
    if (const auto* received = std::get_if<Controller::Received>(&state)) {
        json::Json checks = json::Json::array();
        for (const SetupCheck& check : received->checks)
            checks.push_back(toJson(check));
        return json::Json{{"state", "received"},
                          {"startedAt", json::dateValue(received->test.startedAt)},
                          {"app", received->app},
                          {"allPassed", SetupTest::allPassed(received->checks)},
                          {"checks", std::move(checks)}};
    }
    return json::Json{{"state", "idle"}};
}

} // namespace ringwell
