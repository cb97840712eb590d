#include "Core/Trace.h"

#include "Core/Cooldown.h"
#include "Core/Json.h"

#include <algorithm>
#include <map>

namespace ringwell {
namespace {

std::string plural(std::int64_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

} // namespace

std::string_view rawValue(TraceLine::Kind kind) {
    switch (kind) {
    case TraceLine::Kind::rings:
        return "rings";
    case TraceLine::Kind::cooledDown:
        return "cooledDown";
    case TraceLine::Kind::disabled:
        return "disabled";
    case TraceLine::Kind::noMatch:
        return "noMatch";
    }
    return "noMatch";
}

std::string TraceReport::summary() const {
    std::string text = std::to_string(rings) + " would ring";
    for (std::size_t i = 0; i < ringsByChannel.size(); ++i) {
        text += (i == 0 ? ": " : ", ") + std::to_string(ringsByChannel[i].count) + " " +
                ringsByChannel[i].channelName;
    }
    return text + "; " + plural(quiet, "stays quiet", "stay quiet");
}

json::Json toJson(const TraceReport& report) {
    json::Json counts = json::Json::array();
    for (const auto& count : report.ringsByChannel)
        counts.push_back({{"channelName", count.channelName}, {"count", count.count}});
    json::Json lines = json::Json::array();
    for (const auto& line : report.lines) {
        json::Json entry{{"notification", toJson(line.notification)},
                         {"kind", rawValue(line.kind)}};
        if (line.channelID) {
            entry["channelID"] = line.channelID->toString();
            entry["channelName"] = line.channelName;
        }
        lines.push_back(std::move(entry));
    }
    return json::Json{{"summary", report.summary()},
                      {"rings", report.rings},
                      {"quiet", report.quiet},
                      {"ringsByChannel", std::move(counts)},
                      {"lines", std::move(lines)}};
}

namespace Trace {

TraceReport run(const std::vector<NamedChannel>& channels,
                const std::vector<NotificationInfo>& notificationsNewestFirst, std::size_t count,
                const Calendar& calendar, MatchBudget& budget) {
    std::vector<RoutableChannel> routable;
    routable.reserve(channels.size());
    for (const auto& channel : channels)
        routable.push_back(channel.routable);
    auto named = [&](const Uuid& id) -> const NamedChannel& {
        return *std::find_if(channels.begin(), channels.end(),
                             [&](const NamedChannel& c) { return c.routable.id == id; });
    };

    // Oldest first; the notifications before `firstReplayed` are history only.
    std::vector<NotificationInfo> oldestFirst(notificationsNewestFirst.rbegin(),
                                              notificationsNewestFirst.rend());
    const std::size_t replayed = std::min(count, oldestFirst.size());
    const std::size_t firstReplayed = oldestFirst.size() - replayed;
    std::vector<NotificationInfo> history(oldestFirst.begin(),
                                          oldestFirst.begin() + static_cast<long>(firstReplayed));
    history.reserve(oldestFirst.size());

    TraceReport report;
    std::map<Uuid, std::vector<Cooldown::Firing>> ringLog;
    std::map<Uuid, std::int64_t> rings;
    for (std::size_t i = firstReplayed; i < oldestFirst.size(); ++i) {
        const NotificationInfo& notification = oldestFirst[i];
        TraceLine line{notification, TraceLine::Kind::noMatch, std::nullopt, {}};
        const RouteResult verdict =
            Router::route(notification, routable, history, calendar, budget);
        if (verdict.id()) {
            const NamedChannel& channel = named(*verdict.id());
            line.channelID = channel.routable.id;
            line.channelName = channel.name;
            if (verdict.kind() == RouteResult::Kind::disabled) {
                line.kind = TraceLine::Kind::disabled;
            } else if (auto& log = ringLog[channel.routable.id];
                       Cooldown::isActive(channel.routable.rule.cooldownSeconds,
                                          notification.from(), notification.date, log)) {
                line.kind = TraceLine::Kind::cooledDown;
            } else {
                line.kind = TraceLine::Kind::rings;
                log.push_back({notification.from(), notification.date});
                ++rings[channel.routable.id];
            }
        }
        (line.kind == TraceLine::Kind::rings ? report.rings : report.quiet) += 1;
        report.lines.push_back(std::move(line));
        history.push_back(notification);
    }
    std::reverse(report.lines.begin(), report.lines.end());

    // Channel order first, then a stable sort by count keeps it among equals.
    for (const auto& channel : channels) {
        if (auto found = rings.find(channel.routable.id); found != rings.end())
            report.ringsByChannel.push_back({channel.name, found->second});
    }
    std::stable_sort(report.ringsByChannel.begin(), report.ringsByChannel.end(),
                     [](const auto& a, const auto& b) { return a.count > b.count; });
    return report;
}

} // namespace Trace
} // namespace ringwell
