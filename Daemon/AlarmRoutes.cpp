#include "Core/Iso8601.h"
#include "Daemon/ApiJson.h"
#include "Daemon/ApiRoutes.h"
#include "Daemon/RouteSupport.h"
#include "Intents/RingChannelIntent.h"
#include "Intents/SendToRingwellIntent.h"
#include "Intents/StopAllAlarmsIntent.h"
#include "Shared/AlarmButtons.h"
#include "Shared/AlarmIntents.h"

namespace ringwell::routes {
namespace {

json::Json permissionsJson(AppContext& ctx) {
    return json::Json{{"alarms", rawValue(ctx.authorization.state())},
                      {"notifications", ctx.notices.permissionStatus()}};
}

Result<RingChannelIntent> ringIntent(const json::Json& body, const RingwellStore& store) {
    auto fields = decoded([&] {
        RingChannelIntent intent;
        intent.notificationTitle = json::optionalString(body, "title");
        intent.notificationSubtitle = json::optionalString(body, "subtitle");
        intent.notificationBody = json::optionalString(body, "body");
        return std::pair{intent, json::optionalString(body, "receivedAt")};
    });
    auto channelText = decoded([&] { return json::requireString(body, "channel"); });
    if (!channelText)
        return channelText.error();
    // An ID goes to the intent as it is: the intent looks it up and answers
    // for a deleted channel with its own message. Names are resolved here.
    std::optional<Uuid> channelId = Uuid::parse(channelText.value());
    if (!channelId) {
        auto channel = resolveChannel(store, channelText.value());
        if (!channel)
            return channel.error();
        channelId = channel.value().id;
    }
    if (!fields)
        return fields.error();
    auto [intent, receivedAt] = std::move(fields).value();
    intent.channel = *channelId;
    if (receivedAt) {
        intent.receivedAt = parseIso8601(*receivedAt);
        if (!intent.receivedAt)
            return Error{"\"receivedAt\": not an ISO 8601 date-time", Error::Kind::invalidInput};
    }
    return intent;
}

// One of the alarm's own buttons, pressed as the desktop notification presses it.
ApiResult alarmButton(const RouteRequest& request, ApiState& state, AlarmButtonKey button) {
    auto id = resolveAlarm(state.ctx.alarmService, request.parameter("alarm"));
    if (!id)
        return id.error();
    return alarmCall([&]() -> ApiResult {
        press(state.ctx.alarmService, id.value(), button);
        return ApiResponse::noContent();
    });
}

// Runs a Send or Ring intent: its fire event, or the alarm service's refusal.
template <typename Intent> Awaitable<ApiResult> performed(Intent& intent, ApiState& state) {
    try {
        FireEvent event = co_await intent.perform(state.ctx);
        co_return ApiResponse::json(eventWithLabel(event));
    } catch (const RingwellAlarmError& error) {
        co_return errorOf(error);
    } catch (const AlarmServiceError& error) {
        co_return errorOf(error);
    }
}

} // namespace

Awaitable<ApiResult> send(const RouteRequest& request, ApiState& state) {
    return sendFrom(request.message, state, std::nullopt);
}

Awaitable<ApiResult> sendFrom(const ApiRequest& request, ApiState& state,
                              std::optional<std::string> device) {
    auto body = bodyObject(request);
    if (!body)
        co_return body.error();
    auto intent = decoded([&] { return sendIntentFromJson(body.value()); });
    if (!intent)
        co_return intent.error();
    intent.value().device = std::move(device);
    co_return co_await performed(intent.value(), state);
}

Awaitable<ApiResult> ring(const RouteRequest& request, ApiState& state) {
    auto body = bodyObject(request.message);
    if (!body)
        co_return body.error();
    auto intent = ringIntent(body.value(), state.ctx.store);
    if (!intent)
        co_return intent.error();
    co_return co_await performed(intent.value(), state);
}

ApiResult stopAll(const RouteRequest&, ApiState& state) {
    return alarmCall([&]() -> ApiResult {
        StopAllAlarmsIntent{}.perform(state.ctx);
        return ApiResponse::noContent();
    });
}

ApiResult listAlarms(const RouteRequest&, ApiState& state) {
    json::Json out = json::Json::array();
    for (const auto& alarm : state.ctx.alarmService.alarms())
        out.push_back(toJson(alarm));
    return ApiResponse::json(out);
}

ApiResult stopAlarm(const RouteRequest& request, ApiState& state) {
    auto id = resolveAlarm(state.ctx.alarmService, request.parameter("alarm"));
    if (!id)
        return id.error();
    auto body = bodyObject(request.message);
    if (!body)
        return body.error();
    const json::Json* followUps = json::member(body.value(), "followUpIDs");
    // Without a list, the alarm's own Stop button: its reminders go too.
    if (!followUps)
        return alarmButton(request, state, AlarmButtonKey::stop);
    if (!followUps->is_array())
        return Error{"\"followUpIDs\" must be an array of alarm IDs", Error::Kind::invalidInput};
    auto ids = decoded([&] { return json::stringList(*followUps, "followUpIDs"); });
    if (!ids)
        return ids.error();
    StopRingwellAlarmIntent intent{id.value().toString(), ids.value()};
    return alarmCall([&]() -> ApiResult {
        intent.perform(state.ctx.alarmService);
        return ApiResponse::noContent();
    });
}

ApiResult pauseAlarm(const RouteRequest& request, ApiState& state) {
    return alarmButton(request, state, AlarmButtonKey::pause);
}

ApiResult resumeAlarm(const RouteRequest& request, ApiState& state) {
    return alarmButton(request, state, AlarmButtonKey::resume);
}

ApiResult snoozeAlarm(const RouteRequest& request, ApiState& state) {
    return alarmButton(request, state, AlarmButtonKey::snooze);
}

ApiResult permissions(const RouteRequest&, ApiState& state) {
    return ApiResponse::json(permissionsJson(state.ctx));
}

ApiResult setAlarmPermission(const RouteRequest& request, ApiState& state) {
    auto body = bodyObject(request.message);
    if (!body)
        return body.error();
    auto given = decoded([&] { return json::optionalString(body.value(), "state"); });
    auto parsed = given && given.value() ? authorizationStateFromRaw(*given.value()) : std::nullopt;
    if (!parsed || *parsed == AlarmAuthorizationState::notDetermined)
        return Error{"\"state\" must be \"authorized\" or \"denied\"", Error::Kind::invalidInput};
    state.ctx.alarmService.setAuthorization(*parsed);
    return ApiResponse::json(permissionsJson(state.ctx));
}

} // namespace ringwell::routes
