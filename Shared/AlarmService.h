#pragma once

#include "Core/Date.h"
#include "Core/JsonFwd.h"
#include "Core/ObserverList.h"
#include "Core/Uuid.h"
#include "Shared/AlarmIntents.h"
#include "Shared/Asio.h"
#include "Shared/RingwellAlarmMetadata.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// Whether the person lets Ringwell schedule alarms.
enum class AlarmAuthorizationState { notDetermined, denied, authorized };
std::string_view rawValue(AlarmAuthorizationState state);
std::optional<AlarmAuthorizationState> authorizationStateFromRaw(std::string_view raw);

struct AlarmButton {
    std::string text;
    std::string textColor; // "#RRGGBB"
    std::string systemImageName;
    bool operator==(const AlarmButton&) const = default;
};

// What pressing the secondary button does; `countdown` restarts the
// post-alert countdown (snooze).
enum class SecondaryButtonBehavior { countdown, custom };

// How an alarm is shown in each of its states.
struct AlarmPresentation {
    struct Alert {
        std::string title;
        std::optional<AlarmButton> stopButton;
        std::optional<AlarmButton> secondaryButton;
        std::optional<SecondaryButtonBehavior> secondaryButtonBehavior;
        bool operator==(const Alert&) const = default;
    };
    struct Countdown {
        std::string title;
        std::optional<AlarmButton> pauseButton;
        bool operator==(const Countdown&) const = default;
    };
    struct Paused {
        std::string title;
        std::optional<AlarmButton> resumeButton;
        bool operator==(const Paused&) const = default;
    };
    Alert alert;
    Countdown countdown;
    Paused paused;
    bool operator==(const AlarmPresentation&) const = default;
};

struct AlarmAttributes {
    AlarmPresentation presentation;
    RingwellAlarmMetadata metadata;
    std::string tintHex;
    bool operator==(const AlarmAttributes&) const = default;
};

// Seconds before the alarm alerts, and of the countdown a snooze restarts.
struct CountdownDuration {
    std::optional<double> preAlert;
    std::optional<double> postAlert;
    bool operator==(const CountdownDuration&) const = default;
};

// A named tone file ("ringwell-beacon.caf") in the user's sounds directory, or
// the service's default tone when absent.
struct AlarmSound {
    std::optional<std::string> named;
    bool operator==(const AlarmSound&) const = default;
};

struct AlarmConfiguration {
    CountdownDuration countdownDuration;
    AlarmAttributes attributes;
    StopRingwellAlarmIntent stopIntent;
    AlarmSound sound;
    bool operator==(const AlarmConfiguration&) const = default;
};

enum class AlarmState { countdown, alerting, paused };
std::string_view rawValue(AlarmState state);
std::optional<AlarmState> alarmStateFromRaw(std::string_view raw);

// One alarm the service holds: scheduled (counting down or paused) or alerting.
struct Alarm {
    Uuid id;
    AlarmState state = AlarmState::countdown;
    AlarmConfiguration configuration;
    // Counting down: when it will alert. Alerting: when it started to alert.
    // Paused: absent.
    std::optional<Date> fireDate;
    // Paused: the seconds that were left of the countdown.
    std::optional<double> remainingSeconds;
    bool operator==(const Alarm&) const = default;
};

// A failure of the alarm service. `maximumLimitReached` when scheduling one
// more alarm would pass the service's limit; `notFound` for an unknown id.
class AlarmServiceError : public std::runtime_error {
public:
    enum class Kind { maximumLimitReached, notFound, failed };
    AlarmServiceError(Kind kind, const std::string& message)
        : std::runtime_error(message), kind_(kind) {}
    Kind kind() const { return kind_; }

private:
    Kind kind_;
};

// The alarm service: it holds alarms under identities chosen by the caller,
// counts them down, makes them alert (tone, presentation, notice) and ends
// them when stopped or cancelled.
//
// The daemon's implementation is LocalAlarmService (Platform/); tests use a
// fake with the same contract. All members are called on the daemon's main
// thread; the awaitables resume there. Operations that fail throw
// AlarmServiceError (that is the service's edge to the app's logic).
class AlarmService {
public:
    virtual ~AlarmService() = default;

    virtual AlarmAuthorizationState authorizationState() const = 0;
    // Asks the person when the state is `notDetermined` and returns the answer.
    virtual Awaitable<AlarmAuthorizationState> requestAuthorization() = 0;
    // Records the person's answer, given through the command line or the web app.
    virtual void setAuthorization(AlarmAuthorizationState state) = 0;

    // Every change of the authorization state, until `stopObserving`.
    using AuthorizationObserver = std::function<void(AlarmAuthorizationState)>;
    virtual std::uint64_t observeAuthorization(AuthorizationObserver observer) = 0;
    virtual void stopObservingAuthorization(std::uint64_t token) = 0;

    // The alarms scheduled or alerting now.
    virtual std::vector<Alarm> alarms() const = 0;
    virtual Awaitable<void> schedule(Uuid id, AlarmConfiguration configuration) = 0;

    // Ends an alerting or scheduled alarm.
    virtual void stop(const Uuid& id) = 0;
    // Removes a scheduled or alerting alarm.
    virtual void cancel(const Uuid& id) = 0;
    virtual void pause(const Uuid& id) = 0;
    virtual void resume(const Uuid& id) = 0;
    // The secondary button with the countdown behaviour: silences an alerting
    // alarm and restarts its post-alert countdown.
    virtual void snooze(const Uuid& id) = 0;

    // Told after every change of the alarms (scheduled, alerting, snoozed,
    // paused, stopped, cancelled), synchronously on the main thread; an
    // observer reads `alarms()` and must not change them from within.
    [[nodiscard]] std::uint64_t observeAlarms(std::function<void()> observer) {
        return alarmObservers_.subscribe(std::move(observer));
    }
    void stopObservingAlarms(std::uint64_t token) { alarmObservers_.unsubscribe(token); }

protected:
    void alarmsChanged() { alarmObservers_.notify(); }

private:
    ObserverList<> alarmObservers_;
};

// JSON forms, for the local API and for the service's own file.
json::Json toJson(const AlarmButton& button);
json::Json toJson(const AlarmPresentation& presentation);
json::Json toJson(const AlarmConfiguration& configuration);
json::Json toJson(const Alarm& alarm);
AlarmConfiguration alarmConfigurationFromJson(const json::Json& value); // throws json::DecodeError
Alarm alarmFromJson(const json::Json& value);                           // throws json::DecodeError

} // namespace ringwell
