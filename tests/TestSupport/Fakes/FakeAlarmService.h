#pragma once

#include "Core/ObserverList.h"
#include "Shared/AlarmService.h"
#include "Shared/Asio.h"

#include <boost/asio/post.hpp>
#include <boost/asio/this_coro.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace ringwell::testing {

// An alarm service that holds alarms in a list and never rings. Controls:
// the authorization state and the answer to a request, failures of chosen
// schedule calls, a schedule that yields to the io_context before it takes
// the alarm (so that two rings interleave), and failing queries and
// cancellations. Every call is recorded in order in `calls`.
class FakeAlarmService final : public AlarmService {
public:
    struct Scheduled {
        Uuid id;
        AlarmConfiguration configuration;
    };

    // MARK: Controls

    AlarmAuthorizationState state = AlarmAuthorizationState::authorized;
    // What a request answers (it also becomes the state); none makes it throw.
    std::optional<AlarmAuthorizationState> answer = AlarmAuthorizationState::authorized;
    // Whether `schedule` yields once to the io_context before it takes the alarm.
    bool suspendSchedule = false;
    bool failAlarmsQuery = false;
    bool failCancel = false;

    // Makes schedule call number `call` (0-based, counting every call) throw.
    void failScheduleCall(std::size_t call, std::exception_ptr error) {
        scheduleFailures_[call] = std::move(error);
    }
    void failScheduleCall(std::size_t call, AlarmServiceError::Kind kind,
                          const std::string& message = "the service said no") {
        failScheduleCall(call, std::make_exception_ptr(AlarmServiceError(kind, message)));
    }
    void failNextSchedule(AlarmServiceError::Kind kind,
                          const std::string& message = "the service said no") {
        failScheduleCall(scheduleCalls_, kind, message);
    }
    void failNextSchedule(std::exception_ptr error) {
        failScheduleCall(scheduleCalls_, std::move(error));
    }

    // An alarm held from elsewhere (another ring, an earlier run).
    void hold(const Uuid& id) {
        held.push_back(Alarm{id, AlarmState::alerting, {}, {}, {}});
        alarmsChanged();
    }
    // Makes a held alarm alert, as its countdown ending at `at` would.
    void startAlerting(const Uuid& id, Date at) {
        Alarm& alarm = *findHeld("alert", id);
        alarm.state = AlarmState::alerting;
        alarm.fireDate = at;
        alarmsChanged();
    }

    // MARK: Records

    std::vector<Alarm> held;          // what `alarms()` reports
    std::vector<Scheduled> scheduled; // every schedule that succeeded, in order
    std::vector<std::string> calls;   // "schedule <id>", "cancel <id>", ...
    int authorizationRequests = 0;

    const Scheduled* find(const Uuid& id) const {
        auto found = std::find_if(scheduled.begin(), scheduled.end(),
                                  [&](const Scheduled& s) { return s.id == id; });
        return found == scheduled.end() ? nullptr : &*found;
    }

    // MARK: AlarmService

    AlarmAuthorizationState authorizationState() const override { return state; }

    Awaitable<AlarmAuthorizationState> requestAuthorization() override {
        ++authorizationRequests;
        calls.push_back("requestAuthorization");
        if (!answer)
            throw AlarmServiceError(AlarmServiceError::Kind::failed, "nobody answered");
        setAuthorization(*answer);
        co_return *answer;
    }

    void setAuthorization(AlarmAuthorizationState newState) override {
        state = newState;
        observers_.notify(newState);
    }

    std::uint64_t observeAuthorization(AuthorizationObserver observer) override {
        return observers_.subscribe(std::move(observer));
    }
    void stopObservingAuthorization(std::uint64_t token) override { observers_.unsubscribe(token); }
    std::size_t authorizationObserverCount() const { return observers_.size(); }

    std::vector<Alarm> alarms() const override {
        if (failAlarmsQuery)
            throw AlarmServiceError(AlarmServiceError::Kind::failed, "the list is unavailable");
        return held;
    }

    Awaitable<void> schedule(Uuid id, AlarmConfiguration configuration) override {
        const std::size_t call = scheduleCalls_++;
        calls.push_back("schedule " + id.toString());
        if (suspendSchedule) {
            auto executor = co_await asio::this_coro::executor;
            co_await asio::post(executor, asio::use_awaitable);
        }
        if (auto failure = scheduleFailures_.find(call); failure != scheduleFailures_.end())
            std::rethrow_exception(failure->second);
        // Like the real service: nothing is scheduled without permission or twice.
        if (state != AlarmAuthorizationState::authorized)
            throw AlarmServiceError(AlarmServiceError::Kind::failed, "alarms are not allowed");
        if (std::any_of(held.begin(), held.end(), [&](const Alarm& a) { return a.id == id; }))
            throw AlarmServiceError(AlarmServiceError::Kind::failed,
                                    "alarm " + id.toString() + " is already scheduled");
        scheduled.push_back({id, configuration});
        held.push_back(Alarm{id, AlarmState::countdown, std::move(configuration), {}, {}});
        alarmsChanged();
    }

    void stop(const Uuid& id) override { remove("stop", id); }

    void cancel(const Uuid& id) override {
        if (failCancel) {
            calls.push_back("cancel " + id.toString());
            throw AlarmServiceError(AlarmServiceError::Kind::failed, "cannot cancel");
        }
        remove("cancel", id);
    }

    // Like the real service, each of these fits one state only: pausing an
    // alarm that is not counting down, resuming one that is not paused, or
    // snoozing one that is not alerting or has no post-alert throws.
    void pause(const Uuid& id) override {
        change("pause", id, AlarmState::countdown, AlarmState::paused);
    }
    void resume(const Uuid& id) override {
        change("resume", id, AlarmState::paused, AlarmState::countdown);
    }
    void snooze(const Uuid& id) override {
        Alarm& alarm = *findHeld("snooze", id);
        if (alarm.state != AlarmState::alerting || !alarm.configuration.countdownDuration.postAlert)
            throw AlarmServiceError(AlarmServiceError::Kind::failed,
                                    "alarm " + id.toString() + " cannot be snoozed");
        alarm.state = AlarmState::countdown;
        alarmsChanged();
    }

private:
    std::vector<Alarm>::iterator findHeld(const std::string& call, const Uuid& id) {
        calls.push_back(call + " " + id.toString());
        auto found =
            std::find_if(held.begin(), held.end(), [&](const Alarm& a) { return a.id == id; });
        if (found == held.end())
            throw AlarmServiceError(AlarmServiceError::Kind::notFound, "no alarm " + id.toString());
        return found;
    }
    void remove(const std::string& call, const Uuid& id) {
        held.erase(findHeld(call, id));
        alarmsChanged();
    }
    void change(const std::string& call, const Uuid& id, AlarmState from, AlarmState to) {
        Alarm& alarm = *findHeld(call, id);
        if (alarm.state != from)
            throw AlarmServiceError(AlarmServiceError::Kind::failed,
                                    "alarm " + id.toString() + " cannot " + call + " in its state");
        alarm.state = to;
        alarmsChanged();
    }

    std::map<std::size_t, std::exception_ptr> scheduleFailures_;
    std::size_t scheduleCalls_ = 0;
    ObserverList<AlarmAuthorizationState> observers_;
};

} // namespace ringwell::testing
