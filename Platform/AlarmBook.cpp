#include "Platform/AlarmBook.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace ringwell {
namespace {

using Kind = AlarmServiceError::Kind;

[[noreturn]] void fail(Kind kind, const std::string& message) {
    throw AlarmServiceError(kind, message);
}

// A duration must be a real number of seconds; NaN or a negative value would
// give a deadline that never comes or one in the past.
void checkSeconds(const std::optional<double>& seconds, const char* what) {
    if (seconds && (!std::isfinite(*seconds) || *seconds < 0))
        fail(Kind::failed, std::string("The ") + what + " must be a number of seconds, at least 0");
}

} // namespace

AlarmBook::AlarmBook(std::vector<Alarm> alarms) : alarms_(std::move(alarms)) {}

const Alarm* AlarmBook::find(const Uuid& id) const {
    auto found = std::find_if(alarms_.begin(), alarms_.end(),
                              [&](const Alarm& alarm) { return alarm.id == id; });
    return found == alarms_.end() ? nullptr : &*found;
}

Alarm& AlarmBook::require(const Uuid& id) {
    auto found = std::find_if(alarms_.begin(), alarms_.end(),
                              [&](const Alarm& alarm) { return alarm.id == id; });
    if (found == alarms_.end())
        fail(Kind::notFound, "No alarm has the id " + id.toString());
    return *found;
}

void AlarmBook::remove(const Uuid& id) {
    require(id);
    std::erase_if(alarms_, [&](const Alarm& alarm) { return alarm.id == id; });
}

void AlarmBook::schedule(const Uuid& id, AlarmConfiguration configuration, Date now) {
    if (find(id))
        fail(Kind::failed, "An alarm with the id " + id.toString() + " is already scheduled");
    if (alarms_.size() >= limit)
        fail(Kind::maximumLimitReached,
             "The limit of " + std::to_string(limit) + " alarms is reached");
    checkSeconds(configuration.countdownDuration.preAlert, "pre-alert countdown");
    checkSeconds(configuration.countdownDuration.postAlert, "post-alert countdown");

    Alarm alarm;
    alarm.id = id;
    alarm.state = AlarmState::countdown;
    alarm.fireDate = now.addingSeconds(configuration.countdownDuration.preAlert.value_or(0));
    alarm.configuration = std::move(configuration);
    alarms_.push_back(std::move(alarm));
}

void AlarmBook::stop(const Uuid& id) {
    remove(id);
}

void AlarmBook::cancel(const Uuid& id) {
    remove(id);
}

void AlarmBook::pause(const Uuid& id, Date now) {
    Alarm& alarm = require(id);
    if (alarm.state != AlarmState::countdown || !alarm.fireDate)
        fail(Kind::failed, "Alarm " + id.toString() + " is not counting down");
    alarm.remainingSeconds = std::max(0.0, alarm.fireDate->secondsSince(now));
    alarm.fireDate.reset();
    alarm.state = AlarmState::paused;
}

void AlarmBook::resume(const Uuid& id, Date now) {
    Alarm& alarm = require(id);
    if (alarm.state != AlarmState::paused)
        fail(Kind::failed, "Alarm " + id.toString() + " is not paused");
    alarm.fireDate = now.addingSeconds(alarm.remainingSeconds.value_or(0));
    alarm.remainingSeconds.reset();
    alarm.state = AlarmState::countdown;
}

void AlarmBook::snooze(const Uuid& id, Date now) {
    Alarm& alarm = require(id);
    if (alarm.state != AlarmState::alerting)
        fail(Kind::failed, "Alarm " + id.toString() + " is not alerting");
    const auto& postAlert = alarm.configuration.countdownDuration.postAlert;
    if (!postAlert)
        fail(Kind::failed, "Alarm " + id.toString() + " cannot be snoozed");
    alarm.fireDate = now.addingSeconds(*postAlert);
    alarm.state = AlarmState::countdown;
}

std::vector<Uuid> AlarmBook::advance(Date now) {
    std::vector<Alarm*> due;
    for (auto& alarm : alarms_) {
        if (alarm.state == AlarmState::countdown && alarm.fireDate && *alarm.fireDate <= now)
            due.push_back(&alarm);
    }
    std::stable_sort(due.begin(), due.end(),
                     [](const Alarm* a, const Alarm* b) { return *a->fireDate < *b->fireDate; });
    std::vector<Uuid> started;
    for (Alarm* alarm : due) {
        alarm->state = AlarmState::alerting;
        started.push_back(alarm->id);
    }
    return started;
}

std::optional<Date> AlarmBook::nextDeadline() const {
    std::optional<Date> next;
    for (const auto& alarm : alarms_) {
        if (alarm.state == AlarmState::countdown && alarm.fireDate &&
            (!next || *alarm.fireDate < *next))
            next = alarm.fireDate;
    }
    return next;
}

} // namespace ringwell
