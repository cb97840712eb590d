#pragma once

#include "Alarms/AlarmAmplifier.h"
#include "Alarms/AppContext.h"
#include "Alarms/WebhookSender.h"
#include "Core/Escalation.h"
#include "Shared/Asio.h"

#include <boost/asio/steady_timer.hpp>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ringwell {

// Runs the escalation of a channel while its alarm rings unanswered.
//
// The clock of one escalation starts when the first alarm of a fired event
// starts alerting (the alarm service's alerting date). Each step runs once, at
// start + afterSeconds, if any alarm of the event (the first or a follow-up)
// is still held by the service: ringing, snoozed or paused. When the service
// no longer holds any of them (Stop from the command line, the web app, the
// desktop notice or stop-all), every pending step is dropped. Tests of the
// channel never escalate. What each step did is recorded on the event
// (`escalations`) and logged, without header values or URLs.
//
// A webhook step POSTs its rendered body (EscalationBody) with a timeout of 10
// seconds per attempt and two retries after a failed one.
//
// Main thread only; `ctx`, the sender and the amplifier must outlive it. The
// timer calls `processDue`; tests move their clock and call it.
class EscalationRunner {
public:
    static constexpr const char* logCategory = "Escalation";
    static constexpr int attempts = 3;

    struct Options {
        // The wait between a failed webhook attempt and the next.
        std::chrono::milliseconds retryDelay{5000};
        // The {{stopLink}} of an event's alarm; empty when there is none.
        std::function<std::string(const Uuid& eventID)> stopLink;
    };

    EscalationRunner(asio::io_context& context, AppContext& ctx, WebhookSender& webhooks,
                     AlarmAmplifier& amplifier, Options options);
    ~EscalationRunner();
    EscalationRunner(const EscalationRunner&) = delete;
    EscalationRunner& operator=(const EscalationRunner&) = delete;

    // Runs every step due at the clock's now.
    void processDue();
    // When the next step is due; none when no escalation waits.
    std::optional<Date> nextDue() const;
    // Escalations under way (their alarm still held).
    std::size_t activeCount() const { return running_.size(); }
    // Steps started whose outcome is not yet recorded.
    std::size_t stepsInFlight() const { return inFlight_; }

private:
    struct Running {
        Uuid eventID;
        Uuid channelID;
        std::vector<Uuid> alarms; // the first alarm, then its follow-ups
        std::string channelName;
        std::string title;
        std::vector<EscalationStep> steps;
        Date start;
        std::size_t next = 0;
    };

    void alarmsChanged();
    void track(const Alarm& alarm, const std::vector<Alarm>& held);
    Awaitable<void> runStep(Running escalation, std::size_t index);
    Awaitable<EscalationRecord> webhook(const Running& escalation, const EscalationStep& step);
    Awaitable<EscalationRecord> notice(const Running& escalation);
    EscalationRecord louder(const Running& escalation);
    void arm();
    void log(LogLevel level, const std::string& message);

    asio::io_context& context_;
    AppContext& ctx_;
    WebhookSender& webhooks_;
    AlarmAmplifier& amplifier_;
    Options options_;
    std::uint64_t observer_ = 0;
    std::map<Uuid, Running> running_; // by the first alarm's id
    std::size_t inFlight_ = 0;
    asio::steady_timer timer_;
    std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

} // namespace ringwell
