#include "Core/RouteExplanation.h"

#include "Core/Cooldown.h"
#include "Core/Iso8601.h"
#include "Core/Json.h"
#include "Core/TextFolding.h"

#include <algorithm>

namespace ringwell {

using Role = RouteExplanation::ChannelCheck::Role;
using StepKind = RouteExplanation::Step::Kind;
using Outcome = RecordedRoute::Outcome;

std::string_view rawValue(Role role) {
    switch (role) {
    case Role::wins:
        return "wins";
    case Role::disabledMatch:
        return "disabledMatch";
    case Role::noMatch:
        return "noMatch";
    case Role::notReached:
        return "notReached";
    }
    return "noMatch";
}

std::string_view rawValue(StepKind kind) {
    switch (kind) {
    case StepKind::rang:
        return "rang";
    case StepKind::disabled:
        return "disabled";
    case StepKind::cooldown:
        return "cooldown";
    case StepKind::alreadyActive:
        return "alreadyActive";
    case StepKind::notAuthorized:
        return "notAuthorized";
    case StepKind::limit:
        return "limit";
    case StepKind::failed:
        return "failed";
    case StepKind::noMatch:
        return "noMatch";
    case StepKind::notRouted:
        return "notRouted";
    }
    return "noMatch";
}

json::Json toJson(const RouteExplanation& explanation) {
    json::Json channels = json::Json::array();
    for (const auto& channel : explanation.channels) {
        json::Json checks = toJson(channel.evaluation);
        channels.push_back({{"id", channel.id.toString()},
                            {"name", channel.name},
                            {"isEnabled", channel.isEnabled},
                            {"role", rawValue(channel.role)},
                            {"matches", checks["matches"]},
                            {"checks", checks["checks"]}});
    }
    json::Json step{{"kind", rawValue(explanation.step.kind)}, {"text", explanation.step.text}};
    if (explanation.step.earlierEventID)
        step["earlierEventID"] = *explanation.step.earlierEventID;
    if (explanation.step.earlierDate)
        step["earlierDate"] = json::dateValue(*explanation.step.earlierDate);
    json::Json out{{"channels", std::move(channels)}};
    if (explanation.winner)
        out["winner"] = explanation.winner->toString();
    out["step"] = std::move(step);
    if (explanation.difference)
        out["difference"] = *explanation.difference;
    if (explanation.changedChannel)
        out["changedChannel"] = *explanation.changedChannel;
    return out;
}

namespace RouteExplainer {
namespace {

// What routing decided, before the scheduler had its say: the scheduler's
// own outcomes (already active, not authorised, limit) say nothing about the
// channels.
struct Verdict {
    enum class Kind { ring, cooledDown, disabled, noMatch };
    Kind kind = Kind::noMatch;
    std::optional<Uuid> channel;

    bool operator==(const Verdict&) const = default;
};

std::optional<Verdict> recordedVerdict(const RecordedRoute& event) {
    switch (event.outcome) {
    case Outcome::fired:
    case Outcome::coalesced:
    case Outcome::notAuthorized:
    case Outcome::limit:
    case Outcome::failed:
        return Verdict{Verdict::Kind::ring, event.channelID};
    case Outcome::cooledDown:
        return Verdict{Verdict::Kind::cooledDown, event.channelID};
    case Outcome::skipped:
        return Verdict{Verdict::Kind::disabled, event.channelID};
    case Outcome::noMatch:
        return Verdict{Verdict::Kind::noMatch, std::nullopt};
    case Outcome::setupTest:
    case Outcome::ignored:
    case Outcome::silent:
        break;
    }
    return std::nullopt;
}

// The live rings of one channel, newest first.
std::vector<const RecordedRoute*> ringsOf(const Uuid& channel,
                                          const std::vector<RecordedRoute>& earlier) {
    std::vector<const RecordedRoute*> rings;
    for (const auto& event : earlier) {
        if (event.outcome == Outcome::fired && !event.isTest && event.channelID == channel)
            rings.push_back(&event);
    }
    return rings;
}

std::vector<Cooldown::Firing> firings(const std::vector<const RecordedRoute*>& rings) {
    std::vector<Cooldown::Firing> out;
    out.reserve(rings.size());
    for (const auto* ring : rings)
        out.push_back({ring->notification.from(), ring->notification.date});
    return out;
}

std::string curlyQuoted(std::string_view name) {
    return "\u201C" + std::string(name) + "\u201D";
}

class Explainer {
public:
    Explainer(const RecordedRoute& event, const std::vector<RecordedRoute>& earlier,
              const std::vector<NamedChannel>& channels)
        : event_(event), earlier_(earlier), channels_(channels) {}

    const NamedChannel* channel(const std::optional<Uuid>& id) const {
        if (!id)
            return nullptr;
        auto found = std::find_if(channels_.begin(), channels_.end(),
                                  [&](const NamedChannel& c) { return c.routable.id == *id; });
        return found == channels_.end() ? nullptr : &*found;
    }

    // Today's name, else the name the record kept.
    std::string nameOf(const std::optional<Uuid>& id) const {
        if (const NamedChannel* now = channel(id))
            return now->name;
        if (id && id == event_.channelID && event_.channelName)
            return *event_.channelName;
        return "a deleted channel";
    }

    RouteExplanation::Step step() const {
        const std::string name = curlyQuoted(nameOf(event_.channelID));
        RouteExplanation::Step step;
        switch (event_.outcome) {
        case Outcome::fired:
            step.kind = StepKind::rang;
            step.text = "Rang " + name + ": the first enabled channel whose rule matched.";
            break;
        case Outcome::coalesced: {
            step.kind = StepKind::alreadyActive;
            step.text = "Alarm already active: " + name +
                        " already had an alarm ringing or counting down, so no second one rang";
            if (event_.channelID) {
                auto rings = ringsOf(*event_.channelID, earlier_);
                if (!rings.empty())
                    attach(step, *rings.front(), " (the alarm of ", ")");
            }
            step.text += ".";
            break;
        }
        case Outcome::cooledDown: {
            step.kind = StepKind::cooldown;
            const std::string& from = event_.notification.from();
            step.text = "Cooldown: " + (from.empty() ? std::string("this sender") : from) +
                        " had already rung " + name;
            if (event_.channelID) {
                for (const auto* ring : ringsOf(*event_.channelID, earlier_)) {
                    if (text::equalsIgnoringCase(ring->notification.from(), from) &&
                        ring->notification.date <= event_.notification.date) {
                        attach(step, *ring, " at ", "");
                        break;
                    }
                }
            }
            if (const NamedChannel* now = channel(event_.channelID))
                step.text += ", within its cooldown of " +
                             std::to_string(now->routable.rule.cooldownSeconds) + " s";
            step.text += ".";
            break;
        }
        case Outcome::skipped:
            step.kind = StepKind::disabled;
            step.text = "Disabled: " + name +
                        " matched but is switched off, and no enabled channel matched.";
            break;
        case Outcome::noMatch:
            step.kind = StepKind::noMatch;
            step.text = "No match: no channel's rule matched.";
            break;
        case Outcome::notAuthorized:
            step.kind = StepKind::notAuthorized;
            step.text = "Not authorised: Ringwell wasn't allowed to ring alarms, so " + name +
                        " could not ring.";
            break;
        case Outcome::limit:
            step.kind = StepKind::limit;
            step.text =
                "Limit: too many alarms were already scheduled, so " + name + " could not ring.";
            break;
        case Outcome::failed:
            step.kind = StepKind::failed;
            step.text = "Failed: " + event_.errorMessage.value_or(name + " could not ring.");
            break;
        case Outcome::setupTest:
            step.kind = StepKind::notRouted;
            step.text = "Not routed: the setup test took this notification, so nothing rang.";
            break;
        case Outcome::ignored:
            step.kind = StepKind::notRouted;
            step.text = "Not routed: Ringwell's own failure notice is never routed, so it "
                        "cannot ring again in a loop.";
            break;
        case Outcome::silent:
            step.kind = StepKind::notRouted;
            step.text = "Not routed: Ringwell recorded this silence of a watched app itself; "
                        "no notification arrived.";
            break;
        }
        return step;
    }

    enum class Tense { now, then };
    std::string describe(const Verdict& verdict, Tense tense) const {
        const bool now = tense == Tense::now;
        const std::string name = curlyQuoted(nameOf(verdict.channel));
        switch (verdict.kind) {
        case Verdict::Kind::ring:
            return name + (now ? " would ring" : " rang");
        case Verdict::Kind::cooledDown:
            return name +
                   (now ? " would be held back by its cooldown" : " was held back by its cooldown");
        case Verdict::Kind::disabled:
            return name + (now ? " would match but is off" : " matched but was off");
        case Verdict::Kind::noMatch:
            break;
        }
        return now ? "no channel would match" : "no channel matched";
    }

private:
    static void attach(RouteExplanation::Step& step, const RecordedRoute& ring,
                       std::string_view before, std::string_view after) {
        step.earlierEventID = ring.eventID;
        step.earlierDate = ring.notification.date;
        step.text +=
            std::string(before) + formatIso8601(ring.notification.date) + std::string(after);
    }

    const RecordedRoute& event_;
    const std::vector<RecordedRoute>& earlier_;
    const std::vector<NamedChannel>& channels_;
};

// The channel that made today's verdict differ from the recorded one.
std::string changedChannel(const Explainer& explainer, const RouteExplanation& explanation,
                           const Verdict& then, const Verdict& now) {
    if (!then.channel)
        return explainer.nameOf(now.channel);
    auto check = std::find_if(explanation.channels.begin(), explanation.channels.end(),
                              [&](const auto& c) { return c.id == *then.channel; });
    if (check == explanation.channels.end())
        return explainer.nameOf(then.channel);
    // An earlier channel that matches now took over; otherwise the recorded
    // channel itself changed (its rule, its switch or its cooldown).
    if (check->role == Role::notReached)
        return explainer.nameOf(now.channel);
    return check->name;
}

} // namespace

RouteExplanation explain(const RecordedRoute& event, const std::vector<RecordedRoute>& earlier,
                         const std::vector<NotificationInfo>& history,
                         const std::vector<NamedChannel>& channels, const Calendar& calendar,
                         MatchBudget& budget) {
    const NotificationInfo& notification = event.notification;
    RouteExplanation explanation;
    std::optional<Uuid> firstDisabled;
    for (const auto& channel : channels) {
        RouteExplanation::ChannelCheck check{
            channel.routable.id, channel.name, channel.routable.isEnabled,
            RuleMatcher::evaluate(channel.routable.rule, notification, history, calendar, budget),
            Role::noMatch};
        if (explanation.winner)
            check.role = Role::notReached;
        else if (check.evaluation.matches() && channel.routable.isEnabled)
            check.role = Role::wins, explanation.winner = channel.routable.id;
        else if (check.evaluation.matches())
            check.role = Role::disabledMatch,
            firstDisabled = firstDisabled.value_or(channel.routable.id);
        explanation.channels.push_back(std::move(check));
    }

    Explainer explainer(event, earlier, channels);
    explanation.step = explainer.step();

    Verdict now;
    if (explanation.winner) {
        const NamedChannel* winner = explainer.channel(explanation.winner);
        const bool cooling =
            Cooldown::isActive(winner->routable.rule.cooldownSeconds, notification.from(),
                               notification.date, firings(ringsOf(*explanation.winner, earlier)));
        now = {cooling ? Verdict::Kind::cooledDown : Verdict::Kind::ring, explanation.winner};
    } else if (firstDisabled) {
        now = {Verdict::Kind::disabled, firstDisabled};
    }
    if (auto then = recordedVerdict(event); then && *then != now) {
        using Tense = Explainer::Tense;
        explanation.difference =
            "Today's channels would decide differently: " + explainer.describe(now, Tense::now) +
            ", where at the time " + explainer.describe(*then, Tense::then) + ".";
        explanation.changedChannel = changedChannel(explainer, explanation, *then, now);
    }
    return explanation;
}

} // namespace RouteExplainer
} // namespace ringwell
