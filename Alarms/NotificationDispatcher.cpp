#include "Alarms/NotificationDispatcher.h"

#include "Alarms/EventRecord.h"
#include "Alarms/RingwellNotifications.h"
#include "Alarms/RoutingBudget.h"
#include "Core/AppName.h"
#include "Core/Cooldown.h"
#include "Core/Json.h"
#include "Core/Router.h"
#include "Core/SetupTest.h"

#include <chrono>
#include <exception>

namespace ringwell::NotificationDispatcher {
namespace {

FireEvent record(AppContext& ctx, const NotificationInfo& notification, FireOutcome outcome) {
    FireEvent event = EventRecord::make(notification, outcome, ctx.clock.now());
    ctx.store.log(event);
    return event;
}

// Ringwell's own failure notice, forwarded back by an automation that selects
// every app. Routing it could ring for it and fail again, in a loop. Other
// notices of Ringwell are routed like any other.
bool isOwnFailureNotice(const NotificationInfo& notification) {
    return isSameApp(notification.app, ownAppName) &&
           notification.title.starts_with(RingwellNotifications::failureTitle);
}

} // namespace

Awaitable<FireEvent> handle(AppContext& ctx, ShortcutInputFields fields) {
    const bool setupTest = ctx.setupTest.isWaiting();
    ctx.logger.log(LogLevel::notice, logCategory,
                   "Send to Ringwell: app=" + fields.app.value_or("nil") +
                       " setupTest=" + (setupTest ? "true" : "false"));
    const Date now = ctx.clock.now();
    ctx.defaults.set(DefaultsKey::lastSendToRingwell, json::dateValue(now));
    NotificationInfo notification = fields.notification(now);

    // While a test waits, nothing is routed and nothing rings: the person is
    // making a notification on purpose to check the automation.
    if (setupTest) {
        ctx.setupTest.receive(fields);
        FireEvent event = EventRecord::make(notification, FireOutcome::setupTest, ctx.clock.now());
        event.isTest = true;
        ctx.store.log(event);
        co_return event;
    }

    ctx.store.setSetupWarning(SetupDiagnostics::warning(fields));

    if (isOwnFailureNotice(notification))
        co_return record(ctx, notification, FireOutcome::ignored);

    FireAttempt result = co_await route(ctx, std::move(notification));
    if (result.error) {
        // The failed event is the most recent failure in the log; its channel
        // names the notice.
        std::optional<std::string> problem;
        try {
            co_await RingwellNotifications::postFailure(ctx.notices, result.error->what(),
                                                        result.event.channelName);
        } catch (const std::exception& error) {
            problem = error.what();
        }
        if (problem)
            ctx.logger.log(LogLevel::error, logCategory,
                           "Posting the failure notice failed: " + *problem);
    }
    co_return std::move(result.event);
}

Awaitable<FireEvent> handle(AppContext& ctx, NotificationInfo notification) {
    FireAttempt result = co_await route(ctx, std::move(notification));
    if (result.error)
        throw *result.error;
    co_return std::move(result.event);
}

Awaitable<FireAttempt> route(AppContext& ctx, NotificationInfo notification) {
    std::vector<RoutableChannel> channels;
    for (const Channel& channel : ctx.store.channels())
        channels.push_back({channel.id, channel.isEnabled, channel.rule});
    MatchBudget budget = routingBudget(ctx.matchingClock);
    const RouteResult verdict = Router::route(
        notification, channels, ctx.store.notificationHistory(), ctx.calendar(), budget);
    // Every event of this routing, the scheduler's included, says whether the
    // budget left patterns unchecked: a notification that rang nothing, or
    // rang a later channel, tells why.
    const bool cutShort = budget.wasCutShort();
    auto recorded = [&](FireEvent event) {
        event.routingCutShort = cutShort;
        ctx.store.log(event);
        return FireAttempt{std::move(event), std::nullopt};
    };
    const Date now = ctx.clock.now();

    switch (verdict.kind()) {
    case RouteResult::Kind::channel: {
        const std::optional<Channel> channel = ctx.store.channel(*verdict.id());
        if (!channel)
            co_return recorded(EventRecord::make(notification, FireOutcome::noMatch, now));
        if (isCoolingDown(*channel, notification, ctx.store))
            co_return recorded(
                EventRecord::make(notification, FireOutcome::cooledDown, now, *channel));
        co_return co_await ctx.scheduler.attempt(*channel, std::move(notification), RingKind::live,
                                                 cutShort);
    }
    case RouteResult::Kind::disabled: {
        if (const std::optional<Channel> channel = ctx.store.channel(*verdict.id()))
            co_return recorded(
                EventRecord::make(notification, FireOutcome::skipped, now, *channel));
        FireEvent event = EventRecord::make(notification, FireOutcome::skipped, now);
        event.channelID = *verdict.id();
        co_return recorded(std::move(event));
    }
    case RouteResult::Kind::noMatch:
        break;
    }
    co_return recorded(EventRecord::make(notification, FireOutcome::noMatch, now));
}

bool isCoolingDown(const Channel& channel, const NotificationInfo& notification,
                   const RingwellStore& store) {
    std::vector<Cooldown::Firing> firings;
    for (const FireEvent& event : store.events()) {
        if (event.channelID == channel.id && event.outcome == FireOutcome::fired && !event.isTest)
            firings.push_back({event.notification().from(), event.receivedAt});
    }
    return Cooldown::isActive(channel.rule.cooldownSeconds, notification.from(), notification.date,
                              firings);
}

} // namespace ringwell::NotificationDispatcher
