#include "Daemon/ApiJson.h"

#include "Core/Json.h"
#include "Core/RuleMatcher.h"

namespace ringwell {
namespace {

json::Json toJson(const std::vector<ActivityStats::Count>& counts) {
    json::Json out = json::Json::array();
    for (const auto& count : counts)
        out.push_back(json::Json{{"name", count.name}, {"count", count.count}});
    return out;
}

std::string_view rawValue(PreviewVerdict::Kind kind) {
    switch (kind) {
    case PreviewVerdict::Kind::shadowed:
        return "shadowed";
    case PreviewVerdict::Kind::rings:
        return "rings";
    case PreviewVerdict::Kind::cooledDown:
        return "cooledDown";
    case PreviewVerdict::Kind::disabled:
        return "disabled";
    case PreviewVerdict::Kind::noMatch:
        return "noMatch";
    }
    return "noMatch";
}

} // namespace

json::Json channelForApi(const Channel& channel) {
    Channel shown = channel;
    shown.escalation = EscalationSecrets::masked(std::move(shown.escalation));
    return toJson(shown);
}

json::Json eventWithLabel(const FireEvent& event) {
    json::Json out = toJson(event);
    out["label"] = label(event.outcome);
    out["icon"] = icon(event.outcome);
    return out;
}

json::Json toJson(const ActivityStats& stats) {
    json::Json days = json::Json::array();
    for (const auto& day : stats.days) {
        days.push_back(json::Json{
            {"start", json::dateValue(day.start)}, {"received", day.received}, {"rang", day.rang}});
    }
    return json::Json{{"received", stats.received},
                      {"rang", stats.rang},
                      {"days", std::move(days)},
                      {"topApps", toJson(stats.topApps)},
                      {"topChannels", toJson(stats.topChannels)},
                      {"outcomes", toJson(stats.outcomes)}};
}

ActivityStats weekStatistics(const RingwellStore& store, Date now, const Calendar& calendar) {
    std::vector<ActivityStats::Event> events;
    events.reserve(store.events().size());
    for (const auto& event : store.events()) {
        // A silence the watchdog recorded is no notification received.
        if (event.outcome == FireOutcome::silent)
            continue;
        events.push_back({event.receivedAt, event.app, event.channelName,
                          std::string(label(event.outcome)), event.outcome == FireOutcome::fired,
                          event.isTest});
    }
    return ActivityStats::compute(events, 7, now, calendar, 5);
}

json::Json toJson(const PreviewEntry& entry, const ChannelRule& rule, const RingwellStore& store,
                  const Calendar& calendar, MatchBudget& budget) {
    json::Json verdict{{"kind", rawValue(entry.verdict.kind())}};
    if (const auto& by = entry.verdict.shadowedBy()) {
        verdict["by"] = by->toString();
        if (auto channel = store.channel(*by))
            verdict["byName"] = channel->name;
    }
    auto evaluation =
        RuleMatcher::evaluate(rule, entry.notification, entry.history, calendar, budget);
    return json::Json{{"id", entry.id},
                      {"notification", toJson(entry.notification)},
                      {"verdict", std::move(verdict)},
                      {"matchesRule", entry.verdict.matchesRule()},
                      {"checks", toJson(evaluation)["checks"]}};
}

} // namespace ringwell
