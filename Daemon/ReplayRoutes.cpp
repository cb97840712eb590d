#include "Alarms/RingwellAlarmError.h"
#include "Alarms/RoutingBudget.h"
#include "Core/RouteExplanation.h"
#include "Core/RuleLimits.h"
#include "Core/Trace.h"
#include "Daemon/ApiRoutes.h"
#include "Daemon/RouteSupport.h"

#include <algorithm>
#include <string>
#include <vector>

namespace ringwell::routes {
namespace {

// The scheduler records a refusal only by its message; the two refusals a
// person can act on are told apart from other failures by it.
RecordedRoute::Outcome recordedOutcome(const FireEvent& event) {
    using Outcome = RecordedRoute::Outcome;
    switch (event.outcome) {
    case FireOutcome::fired:
        return Outcome::fired;
    case FireOutcome::coalesced:
        return Outcome::coalesced;
    case FireOutcome::cooledDown:
        return Outcome::cooledDown;
    case FireOutcome::skipped:
        return Outcome::skipped;
    case FireOutcome::noMatch:
        return Outcome::noMatch;
    case FireOutcome::failed:
        if (event.errorMessage == RingwellAlarmError::notAuthorized().what())
            return Outcome::notAuthorized;
        if (event.errorMessage == RingwellAlarmError::tooManyAlarms().what())
            return Outcome::limit;
        return Outcome::failed;
    case FireOutcome::setupTest:
        return Outcome::setupTest;
    case FireOutcome::ignored:
        return Outcome::ignored;
    case FireOutcome::silent:
        return Outcome::silent;
    }
    return Outcome::failed;
}

RecordedRoute recorded(const FireEvent& event) {
    return {event.id.toString(), event.notification(), recordedOutcome(event),
            event.channelID,     event.channelName,    event.errorMessage,
            event.isTest};
}

std::vector<NamedChannel> namedChannels(const std::vector<Channel>& channels) {
    std::vector<NamedChannel> named;
    named.reserve(channels.size());
    for (const auto& channel : channels)
        named.push_back({{channel.id, channel.isEnabled, channel.rule}, channel.name});
    return named;
}

// The trace's number of notifications: 50 unless given, 1 to 200.
Result<std::size_t> lastCount(const json::Json& body) {
    auto last = decoded([&] { return json::optionalInt(body, "last"); }, "\"last\": ");
    if (!last)
        return last.error();
    const std::int64_t count = last.value().value_or(50);
    if (count < 1 || count > 200)
        return Error{"\"last\": " + std::to_string(count) + " is not between 1 and 200",
                     Error::Kind::invalidInput};
    return static_cast<std::size_t>(count);
}

// Today's channels, with the one in `edited` (a whole channel, as `channel
// show` prints it) in place of the stored channel of the same ID.
Result<std::vector<Channel>> channelsWithEdit(AppContext& ctx, const json::Json& body) {
    std::vector<Channel> channels = ctx.store.channels();
    const json::Json* edited = json::member(body, "channel");
    if (!edited)
        return channels;
    auto channel =
        decoded([&] { return channelFromJson(*edited, ctx.clock.now()); }, "\"channel\": ");
    if (!channel)
        return channel.error();
    if (auto problems = RuleLimits::problems(channel.value().rule); !problems.empty())
        return Error{"\"channel\": " + problems.front(), Error::Kind::invalidInput};
    auto stored = std::find_if(channels.begin(), channels.end(),
                               [&](const Channel& c) { return c.id == channel.value().id; });
    if (stored == channels.end())
        return noChannelWithId(channel.value().id);
    *stored = channel.value();
    return channels;
}

} // namespace

ApiResult why(const RouteRequest& request, ApiState& state) {
    auto position = resolveEvent(state.ctx.store, request.parameter("event"));
    if (!position)
        return position.error();
    const auto& events = state.ctx.store.events(); // newest first
    auto event = std::next(events.begin(), static_cast<std::ptrdiff_t>(position.value()));
    std::vector<RecordedRoute> earlier;
    std::vector<NotificationInfo> history;
    for (auto older = std::next(event); older != events.end(); ++older) {
        earlier.push_back(recorded(*older));
        if (isForwardedNotification(*older))
            history.push_back(older->notification());
    }
    // Hostile rules must not hold the loop any longer than one routing may.
    MatchBudget budget = routingBudget(state.ctx.matchingClock);
    auto explanation = RouteExplainer::explain(recorded(*event), earlier, history,
                                               namedChannels(state.ctx.store.channels()),
                                               state.ctx.calendar(), budget);
    json::Json out = toJson(explanation);
    out["eventID"] = event->id.toString();
    out["outcome"] = rawValue(event->outcome);
    out["cutShort"] = budget.wasCutShort();
    return ApiResponse::json(out);
}

ApiResult trace(const RouteRequest& request, ApiState& state) {
    auto body = bodyObject(request.message);
    if (!body)
        return body.error();
    AppContext& ctx = state.ctx;
    auto count = lastCount(body.value());
    if (!count)
        return count.error();
    auto at = decoded([&] { return json::optionalString(body.value(), "at"); }, "\"at\": ");
    if (!at)
        return at.error();
    auto calendar = calendarAt(at.value(), ctx.calendar());
    if (!calendar)
        return calendar.error();
    auto channels = channelsWithEdit(ctx, body.value());
    if (!channels)
        return channels.error();
    // One routing's budget for the whole replay, as for a preview.
    MatchBudget budget = routingBudget(ctx.matchingClock);
    TraceReport report =
        Trace::run(namedChannels(channels.value()), ctx.store.notificationHistory(), count.value(),
                   calendar.value(), budget);
    json::Json out = toJson(report);
    out["cutShort"] = budget.wasCutShort();
    return ApiResponse::json(out);
}

} // namespace ringwell::routes
