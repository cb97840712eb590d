#include "Alarms/EscalationRunner.h"

#include "Core/Iso8601.h"
#include "Model/AlarmTone.h"

#include <boost/asio/post.hpp>

#include <algorithm>

namespace ringwell {
namespace {

// The timer wakes at least this often, so a changed wall clock is noticed.
constexpr double longestTimerWait = 10.0;

bool holdsAny(const std::vector<Alarm>& held, const std::vector<Uuid>& ids) {
    return std::any_of(held.begin(), held.end(), [&](const Alarm& alarm) {
        return std::find(ids.begin(), ids.end(), alarm.id) != ids.end();
    });
}

std::string stepName(const std::string& channel, std::size_t index) {
    return "Escalation step " + std::to_string(index + 1) + " of " + channel;
}

} // namespace

EscalationRunner::EscalationRunner(asio::io_context& context, AppContext& ctx,
                                   WebhookSender& webhooks, AlarmAmplifier& amplifier,
                                   Options options)
    : context_(context), ctx_(ctx), webhooks_(webhooks), amplifier_(amplifier),
      options_(std::move(options)), timer_(context) {
    observer_ = ctx_.alarmService.observeAlarms([this] { alarmsChanged(); });
    alarmsChanged();
}

EscalationRunner::~EscalationRunner() {
    ctx_.alarmService.stopObservingAlarms(observer_);
    alive_.reset();
    timer_.cancel();
}

void EscalationRunner::log(LogLevel level, const std::string& message) {
    ctx_.logger.log(level, logCategory, message);
}

void EscalationRunner::alarmsChanged() {
    std::vector<Alarm> held;
    try {
        held = ctx_.alarmService.alarms();
    } catch (const AlarmServiceError& error) {
        log(LogLevel::error, std::string("The alarms could not be read: ") + error.what());
        return;
    }
    for (auto it = running_.begin(); it != running_.end();) {
        if (holdsAny(held, it->second.alarms)) {
            ++it;
            continue;
        }
        const std::size_t dropped = it->second.steps.size() - it->second.next;
        if (dropped > 0)
            log(LogLevel::info, "The alarm of " + it->second.channelName +
                                    " was stopped: " + std::to_string(dropped) +
                                    " escalation step" + (dropped == 1 ? "" : "s") + " cancelled");
        it = running_.erase(it);
    }
    for (const auto& alarm : held)
        if (alarm.state == AlarmState::alerting && !running_.count(alarm.id))
            track(alarm, held);
    // Steps due at once run after the change that made them due has settled.
    asio::post(context_, [this, alive = std::weak_ptr<int>(alive_)] {
        if (!alive.expired())
            processDue();
    });
}

void EscalationRunner::track(const Alarm& alarm, const std::vector<Alarm>& held) {
    const auto& events = ctx_.store.events();
    auto event = std::find_if(events.begin(), events.end(), [&](const FireEvent& candidate) {
        return candidate.alarmID == alarm.id && candidate.outcome == FireOutcome::fired &&
               !candidate.isTest && candidate.channelID;
    });
    if (event == events.end())
        return; // a follow-up, a test, or an alarm from elsewhere
    auto channel = ctx_.store.channel(*event->channelID);
    if (!channel || channel->escalation.empty())
        return;
    Running escalation;
    escalation.eventID = event->id;
    escalation.channelID = channel->id;
    escalation.alarms.push_back(alarm.id);
    if (event->followUpAlarmIDs)
        escalation.alarms.insert(escalation.alarms.end(), event->followUpAlarmIDs->begin(),
                                 event->followUpAlarmIDs->end());
    if (!holdsAny(held, escalation.alarms))
        return;
    escalation.channelName = channel->name;
    escalation.title = alarm.configuration.attributes.presentation.alert.title;
    if (escalation.title.empty())
        escalation.title = channel->name;
    escalation.steps = channel->escalation;
    escalation.start = alarm.fireDate.value_or(ctx_.clock.now());
    // After a restart the steps already recorded are not run again.
    for (const auto& record : event->escalations)
        escalation.next = std::max(
            escalation.next, static_cast<std::size_t>(std::max<std::int64_t>(record.step, 0)));
    escalation.next = std::min(escalation.next, escalation.steps.size());
    running_.emplace(alarm.id, std::move(escalation));
}

void EscalationRunner::processDue() {
    const Date now = ctx_.clock.now();
    for (auto& [id, escalation] : running_) {
        const std::size_t due =
            EscalationSchedule::dueCount(escalation.steps, escalation.start, escalation.next, now);
        for (std::size_t i = 0; i < due; ++i) {
            const std::size_t index = escalation.next++;
            ++inFlight_;
            asio::co_spawn(
                context_, runStep(escalation, index),
                reportEscaped([this](const std::string& message) { log(LogLevel::error, message); },
                              stepName(escalation.channelName, index)));
        }
    }
    arm();
}

std::optional<Date> EscalationRunner::nextDue() const {
    std::optional<Date> earliest;
    for (const auto& [id, escalation] : running_) {
        auto due = EscalationSchedule::nextDue(escalation.steps, escalation.start, escalation.next);
        if (due && (!earliest || *due < *earliest))
            earliest = due;
    }
    return earliest;
}

void EscalationRunner::arm() {
    auto next = nextDue();
    if (!next) {
        timer_.cancel();
        return;
    }
    const double wait = std::clamp(next->secondsSince(ctx_.clock.now()), 0.0, longestTimerWait);
    timer_.expires_after(std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(wait)));
    timer_.async_wait([this, alive = std::weak_ptr<int>(alive_)](boost::system::error_code error) {
        if (error || alive.expired())
            return;
        processDue();
    });
}

Awaitable<void> EscalationRunner::runStep(Running escalation, std::size_t index) {
    std::weak_ptr<int> alive = alive_;
    const EscalationStep& step = escalation.steps[index];
    EscalationRecord record;
    switch (step.action) {
    case EscalationAction::louder:
        record = louder(escalation);
        break;
    case EscalationAction::notice:
        record = co_await notice(escalation);
        break;
    case EscalationAction::webhook:
        record = co_await webhook(escalation, step);
        break;
    }
    if (alive.expired())
        co_return;
    --inFlight_;
    record.step = static_cast<std::int64_t>(index + 1);
    record.action = step.action;
    log(record.ok ? LogLevel::info : LogLevel::error,
        stepName(escalation.channelName, index) + " (" + std::string(rawValue(step.action)) +
            "): " + (record.ok ? "done, " : "failed, ") + record.detail);
    ctx_.store.recordEscalation(escalation.eventID, std::move(record));
}

EscalationRecord EscalationRunner::louder(const Running& escalation) {
    EscalationRecord record{0, EscalationAction::louder, ctx_.clock.now(), true,
                            "volume +" + std::to_string(EscalationLimits::louderStepPercent) + "%"};
    AlarmSound sound;
    if (auto channel = ctx_.store.channel(escalation.channelID);
        channel && channel->reminderSound) {
        sound = {AlarmTones::alertSoundName(*channel->reminderSound)};
        record.detail += ", tone " + label(*channel->reminderSound);
    }
    amplifier_.louder(escalation.alarms, EscalationLimits::louderStepPercent, sound);
    return record;
}

Awaitable<EscalationRecord> EscalationRunner::notice(const Running& escalation) {
    EscalationRecord record{0, EscalationAction::notice, ctx_.clock.now(), true, "notice shown"};
    NoticeRequest request{
        "escalation-" + escalation.eventID.toString(), "Still ringing: " + escalation.channelName,
        escalation.title + " (ringing since " + formatIso8601(escalation.start) + ")",
        "ringwell-escalation"};
    try {
        co_await ctx_.notices.add(std::move(request));
    } catch (const std::exception& error) {
        record.ok = false;
        record.detail = std::string("the notice was refused: ") + error.what();
    }
    co_return record;
}

Awaitable<EscalationRecord> EscalationRunner::webhook(const Running& escalation,
                                                      const EscalationStep& step) {
    EscalationRecord record{0, EscalationAction::webhook, ctx_.clock.now(), false, ""};
    auto url = parseWebhookUrl(step.url);
    if (!url) {
        record.detail = "the URL is not an http or https URL";
        co_return record;
    }
    EscalationBody::Values values{escalation.title, escalation.channelName, escalation.start,
                                  options_.stopLink ? options_.stopLink(escalation.eventID)
                                                    : std::string()};
    auto body = EscalationBody::render(
        step.body.value_or(std::string(EscalationBody::defaultTemplate)), values);
    WebhookRequest request{*url, {}, body.contentType, body.text};
    for (const auto& [name, value] : step.headers)
        request.headers.emplace_back(name, EscalationBody::renderHeader(value, values));

    std::weak_ptr<int> alive = alive_;
    WebhookReply reply;
    int attempt = 0;
    while (attempt < attempts) {
        if (attempt > 0 && options_.retryDelay.count() > 0) {
            asio::steady_timer wait(context_, options_.retryDelay);
            boost::system::error_code ignored;
            co_await wait.async_wait(asio::redirect_error(asio::use_awaitable, ignored));
            if (alive.expired())
                co_return record;
        }
        ++attempt;
        reply = co_await webhooks_.post(request);
        if (reply.ok)
            break;
    }
    record.ok = reply.ok;
    record.detail = reply.detail;
    if (attempt > 1)
        record.detail +=
            " (attempt " + std::to_string(attempt) + " of " + std::to_string(attempts) + ")";
    co_return record;
}

} // namespace ringwell
