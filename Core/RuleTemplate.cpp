#include "Core/RuleTemplate.h"
#include "Core/Json.h"

namespace ringwell {
namespace {

std::vector<RuleTemplate> makeCatalogue() {
    using Blank = RuleTemplate::Blank;
    using Calls = ChannelRule::CallFilter;

    ChannelRule callsFrom;
    callsFrom.apps = {"Phone"};
    callsFrom.calls = Calls::incoming;
    callsFrom.cooldownSeconds = 300;

    ChannelRule missedCalls;
    missedCalls.apps = {"Phone"};
    missedCalls.calls = Calls::missed;
    missedCalls.cooldownSeconds = 300;

    ChannelRule messagesFrom;
    messagesFrom.apps = {"Messages"};
    messagesFrom.cooldownSeconds = 120;

    ChannelRule urgentWords;
    urgentWords.apps = {"Messages"};
    urgentWords.keywords = {"urgent", "emergency", "asap"};
    urgentWords.cooldownSeconds = 300;

    ChannelRule doorbell;
    doorbell.apps = {"Ring"};
    doorbell.cooldownSeconds = 60;

    ChannelRule onCall;
    onCall.apps = {"PagerDuty", "Opsgenie"};
    onCall.cooldownSeconds = 60;

    ChannelRule repeated;
    repeated.frequency = FrequencyCondition{3, 600};

    ChannelRule night;
    night.activeHours = ActiveHours{ActiveHours::allDays(), 1320, 420};

    return {
        {"calls-from", "Calls from someone", "Rings while their call is ringing, even when muted",
         "phone.fill", callsFrom, Blank::sender},
        {"missed-calls", "Missed calls", "Rings after a call you didn't answer",
         "phone.arrow.down.left", missedCalls, std::nullopt},
        {"messages-from", "Messages from someone", "Rings when a specific person texts",
         "message.fill", messagesFrom, Blank::sender},
        {"urgent-words", "Urgent messages",
         "Messages containing \"urgent\", \"emergency\" or \"asap\"", "exclamationmark.bubble.fill",
         urgentWords, std::nullopt},
        {"doorbell", "Doorbell or camera", "Motion and rings from your doorbell app",
         "door.left.hand.closed", doorbell, Blank::app},
        {"on-call", "On-call pages", "PagerDuty or Opsgenie, any hour", "waveform.path.ecg", onCall,
         std::nullopt},
        {"repeated", "Repeated alerts", "Rings when an app notifies 3 times in 10 minutes",
         "repeat", repeated, Blank::app},
        {"night", "Only at night", "Anything from your chosen apps, 22:00\u201307:00", "moon.fill",
         night, Blank::app},
    };
}

} // namespace

const std::vector<RuleTemplate>& RuleTemplate::all() {
    static const std::vector<RuleTemplate> catalogue = makeCatalogue();
    return catalogue;
}

const RuleTemplate* RuleTemplate::find(std::string_view id) {
    for (const auto& candidate : all()) {
        if (candidate.id == id)
            return &candidate;
    }
    return nullptr;
}

std::string_view rawValue(RuleTemplate::Blank blank) {
    return blank == RuleTemplate::Blank::sender ? "sender" : "app";
}

json::Json toJson(const RuleTemplate& ruleTemplate) {
    json::Json out{{"id", ruleTemplate.id},
                   {"title", ruleTemplate.title},
                   {"subtitle", ruleTemplate.subtitle},
                   {"systemImage", ruleTemplate.systemImage},
                   {"rule", toJson(ruleTemplate.rule)}};
    if (ruleTemplate.blank)
        out["blank"] = rawValue(*ruleTemplate.blank);
    return out;
}

} // namespace ringwell
