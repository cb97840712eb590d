#include "Alarms/RoutingBudget.h"
#include "Core/ChannelLimits.h"
#include "Core/RuleLimits.h"
#include "Core/RulePreview.h"
#include "Core/RuleTemplate.h"
#include "Daemon/ApiJson.h"
#include "Daemon/ApiRoutes.h"
#include "Daemon/RouteSupport.h"
#include "Intents/ChannelEntity.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace ringwell::routes {
namespace {

// A rule past RuleLimits is refused with every reason, before anything is saved.
std::optional<Error> overLimits(const ChannelRule& rule) {
    std::string message;
    for (const auto& problem : RuleLimits::problems(rule))
        message += (message.empty() ? "" : " ") + problem;
    if (message.empty())
        return std::nullopt;
    return Error{"\"rule\": " + message, Error::Kind::invalidInput};
}

// An escalation past its limits is refused with every reason, before anything is saved.
std::optional<Error> escalationProblems(const std::vector<EscalationStep>& steps) {
    std::string message;
    for (const auto& problem : EscalationLimits::problems(steps))
        message += (message.empty() ? "" : " ") + problem;
    if (message.empty())
        return std::nullopt;
    return Error{"\"escalation\": " + message, Error::Kind::invalidInput};
}

json::Json channelList(const RingwellStore& store) {
    json::Json out = json::Json::array();
    for (const auto& channel : store.channels())
        out.push_back(channelForApi(channel));
    return out;
}

json::Json entityList(const std::vector<ChannelEntity>& entities) {
    json::Json out = json::Json::array();
    for (const auto& entity : entities)
        out.push_back(toJson(entity));
    return out;
}

ApiResult channelLikeEvent(AppContext& ctx, const json::Json& likeEvent,
                           const std::optional<std::string>& name) {
    auto text = decoded([&] { return json::asString(likeEvent, "likeEvent"); });
    if (!text)
        return text.error();
    auto position = resolveEvent(ctx.store, text.value());
    if (!position)
        return position.error();
    Channel channel = ctx.store.addChannel(ctx.store.events()[position.value()].notification());
    if (name) {
        channel.name = *name;
        channel.usesAutomaticName = false;
        if (auto refused = overLimits(channel.rule))
            return *refused;
        ctx.store.update(channel);
    }
    return ApiResponse::json(channelForApi(*ctx.store.channel(channel.id)), 201);
}

// The rule a new channel starts with: a template's, the one given, or the blank rule.
Result<ChannelRule> newChannelRule(const json::Json* templateId, const json::Json* rule) {
    if (templateId) {
        auto id = decoded([&] { return json::asString(*templateId, "template"); });
        if (!id)
            return id.error();
        const RuleTemplate* found = RuleTemplate::find(id.value());
        if (!found)
            return Error{"unknown template \"" + id.value() + "\" (see `ringwell templates`)",
                         Error::Kind::invalidInput};
        return found->rule;
    }
    if (rule)
        return decoded([&] { return ruleFromJson(*rule); }, "\"rule\": ");
    return ChannelRule();
}

} // namespace

ApiResult listChannels(const RouteRequest&, ApiState& state) {
    return ApiResponse::json(channelList(state.ctx.store));
}

ApiResult getChannel(const RouteRequest& request, ApiState& state) {
    auto channel = resolveChannel(state.ctx.store, request.parameter("channel"));
    if (!channel)
        return channel.error();
    return ApiResponse::json(channelForApi(channel.value()));
}

ApiResult addChannel(const RouteRequest& request, ApiState& state) {
    auto body = bodyObject(request.message);
    if (!body)
        return body.error();
    // The name a person gives is finished as the channel editor does on saving.
    auto givenName = decoded([&] { return json::optionalString(body.value(), "name"); });
    if (!givenName)
        return givenName.error();
    std::optional<std::string> name;
    if (givenName.value())
        name = ChannelLimits::finalizedName(*givenName.value());
    const json::Json* templateId = json::member(body.value(), "template");
    const json::Json* rule = json::member(body.value(), "rule");
    const json::Json* likeEvent = json::member(body.value(), "likeEvent");
    if ((templateId != nullptr) + (rule != nullptr) + (likeEvent != nullptr) > 1)
        return Error{"give only one of \"template\", \"rule\" and \"likeEvent\"",
                     Error::Kind::invalidInput};
    if (likeEvent)
        return channelLikeEvent(state.ctx, *likeEvent, name);
    auto channelRule = newChannelRule(templateId, rule);
    if (!channelRule)
        return channelRule.error();
    if (auto refused = overLimits(channelRule.value()))
        return *refused;
    return ApiResponse::json(channelForApi(state.ctx.store.addChannel(name, channelRule.value())),
                             201);
}

ApiResult updateChannel(const RouteRequest& request, ApiState& state) {
    auto id = uuidArgument(request.parameter("id"), "a channel ID");
    if (!id)
        return id.error();
    auto body = bodyObject(request.message);
    if (!body)
        return body.error();
    AppContext& ctx = state.ctx;
    auto decodedChannel =
        decoded([&] { return channelFromJson(body.value(), ctx.clock.now()); }, "channel: ");
    if (!decodedChannel)
        return decodedChannel.error();
    Channel channel = std::move(decodedChannel).value();
    if (channel.id != id.value())
        return Error{"the channel's \"id\" differs from the one in the address",
                     Error::Kind::invalidInput};
    auto stored = ctx.store.channel(id.value());
    if (!stored)
        return noChannelWithId(id.value());
    // The creation date is the store's; the rest is the editor's values, finished
    // as the editor finishes them.
    channel.createdAt = stored->createdAt;
    channel.name = ChannelLimits::finalizedName(channel.name);
    channel.countdownSeconds = ChannelLimits::clampCountdown(channel.countdownSeconds);
    channel.snoozeSeconds = ChannelLimits::clampSnooze(channel.snoozeSeconds);
    if (auto refused = overLimits(channel.rule))
        return *refused;
    if (auto missing = EscalationSecrets::restore(channel.escalation, stored->escalation))
        return Error{"\"escalation\": the header \"" + *missing +
                         "\" is masked, but no stored value is known for it; give its value",
                     Error::Kind::invalidInput};
    if (auto refused = escalationProblems(channel.escalation))
        return *refused;
    ctx.store.update(channel);
    return ApiResponse::json(channelForApi(*ctx.store.channel(id.value())));
}

ApiResult deleteChannel(const RouteRequest& request, ApiState& state) {
    auto channel = resolveChannelByWholeName(state.ctx.store, request.parameter("channel"));
    if (!channel)
        return channel.error();
    state.ctx.store.deleteChannel(channel.value().id);
    return ApiResponse::noContent();
}

ApiResult moveChannel(const RouteRequest& request, ApiState& state) {
    auto channel = resolveChannelByWholeName(state.ctx.store, request.parameter("channel"));
    if (!channel)
        return channel.error();
    auto body = bodyObject(request.message);
    if (!body)
        return body.error();
    auto position = decoded([&] { return json::optionalInt(body.value(), "position"); });
    if (!position)
        return position.error();
    if (!position.value() || *position.value() < 1)
        return Error{"\"position\" must be a whole number from 1", Error::Kind::invalidInput};
    RingwellStore& store = state.ctx.store;
    const auto& channels = store.channels();
    auto found = std::find_if(channels.begin(), channels.end(), [&](const Channel& candidate) {
        return candidate.id == channel.value().id;
    });
    size_t from = static_cast<size_t>(found - channels.begin());
    size_t to = std::min(static_cast<size_t>(*position.value() - 1), channels.size() - 1);
    // The store takes the destination in terms of the list before the move.
    store.moveChannels({from}, to > from ? to + 1 : to);
    return ApiResponse::json(channelList(store));
}

Awaitable<ApiResult> testChannel(const RouteRequest& request, ApiState& state) {
    auto channel = resolveChannel(state.ctx.store, request.parameter("channel"));
    if (!channel)
        co_return channel.error();
    NotificationInfo payload;
    payload.date = state.ctx.clock.now();
    try {
        FireEvent event =
            co_await state.ctx.scheduler.fire(channel.value(), payload, RingKind::test);
        co_return ApiResponse::json(eventWithLabel(event));
    } catch (const RingwellAlarmError& error) {
        co_return errorOf(error);
    } catch (const AlarmServiceError& error) {
        co_return errorOf(error);
    }
}

ApiResult channelEntities(const RouteRequest& request, ApiState& state) {
    auto matching = request.message.queryValue("matching");
    return ApiResponse::json(entityList(matching
                                            ? ChannelQuery::entities(state.ctx.store, *matching)
                                            : ChannelQuery::suggestedEntities(state.ctx.store)));
}

ApiResult preview(const RouteRequest& request, ApiState& state) {
    auto channelText = request.message.queryValue("channel");
    if (!channelText)
        return Error{"the \"channel\" query parameter is required", Error::Kind::invalidInput};
    AppContext& ctx = state.ctx;
    auto channel = resolveChannel(ctx.store, *channelText);
    if (!channel)
        return channel.error();
    std::vector<RoutableChannel> routable;
    for (const auto& candidate : ctx.store.channels())
        routable.push_back({candidate.id, candidate.isEnabled, candidate.rule});
    auto pinned = calendarAt(request.message.queryValue("at"), ctx.calendar());
    if (!pinned)
        return pinned.error();
    const Calendar& calendar = pinned.value();
    // Replaying the history through hostile rules must not hold the loop any
    // longer than one routing may.
    MatchBudget budget = routingBudget(ctx.matchingClock);
    auto entries = RulePreview::run(channel.value().id, routable, ctx.store.notificationHistory(),
                                    calendar, budget);
    json::Json list = json::Json::array();
    for (const auto& entry : entries)
        list.push_back(toJson(entry, channel.value().rule, ctx.store, calendar, budget));
    return ApiResponse::json(json::Json{{"channelID", channel.value().id.toString()},
                                        {"channelName", channel.value().name},
                                        {"ringCount", RulePreview::ringCount(entries)},
                                        {"cutShort", budget.wasCutShort()},
                                        {"entries", std::move(list)}});
}

} // namespace ringwell::routes
