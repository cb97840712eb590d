#include "Daemon/Api.h"

#include "Alarms/RingwellAlarmError.h"
#include "Core/ChannelLimits.h"
#include "Core/RuleLimits.h"
#include "Core/RulePreview.h"
#include "Core/RuleTemplate.h"
#include "Core/Text.h"
#include "Daemon/ApiJson.h"
#include "Daemon/ChangeFeed.h"
#include "Daemon/EditorRoutes.h"
#include "Intents/ChannelEntity.h"
#include "Intents/RingChannelIntent.h"
#include "Intents/SendToRingwellIntent.h"
#include "Intents/StopAllAlarmsIntent.h"
#include "Model/AlarmTone.h"
#include "Shared/AlarmIntents.h"
#include "Support/Diagnostics.h"
#include "Version.h"

#include <algorithm>
#include <vector>

namespace ringwell {
namespace {

// A client mistake, answered with its status and message.
struct ApiFailure {
    unsigned status;
    std::string message;
};

std::vector<std::string> segments(const std::string& path) {
    std::vector<std::string> parts;
    size_t start = 0;
    while (start < path.size()) {
        size_t slash = path.find('/', start);
        if (slash == std::string::npos)
            slash = path.size();
        if (slash > start)
            parts.push_back(path.substr(start, slash - start));
        start = slash + 1;
    }
    return parts;
}

json::Json bodyObject(const ApiRequest& request) {
    if (request.body.empty())
        return json::Json::object();
    auto parsed = json::parse(request.body);
    if (!parsed)
        throw ApiFailure{400, parsed.error().message};
    if (!parsed.value().is_object())
        throw ApiFailure{400, "the request body must be a JSON object"};
    return parsed.value();
}

Uuid uuidArgument(const std::string& text, std::string_view what) {
    auto id = Uuid::parse(text);
    if (!id)
        throw ApiFailure{400, "\"" + text + "\" is not " + std::string(what)};
    return *id;
}

// A channel named by its id, or by a name that identifies one channel: the
// only one containing the text, or the one whose whole name it is.
Channel resolveChannel(const RingwellStore& store, const std::string& text) {
    if (auto id = Uuid::parse(text)) {
        if (auto channel = store.channel(*id))
            return *channel;
        throw ApiFailure{404, "No channel has the ID " + text + "."};
    }
    auto matches = ChannelQuery::entities(store, text);
    if (matches.size() > 1) {
        auto exact = std::find_if(matches.begin(), matches.end(), [&](const ChannelEntity& entity) {
            return text::equalsIgnoringCase(entity.name, text);
        });
        if (exact != matches.end())
            matches = {*exact};
    }
    if (matches.empty())
        throw ApiFailure{404, "No channel matches \"" + text + "\"."};
    if (matches.size() > 1) {
        std::string names;
        for (const auto& entity : matches)
            names += (names.empty() ? "" : ", ") + entity.name;
        throw ApiFailure{409, "\"" + text + "\" matches several channels: " + names +
                                  ". Use a longer name or the channel's ID."};
    }
    return *store.channel(matches.front().id);
}

unsigned statusFor(const RingwellAlarmError& error) {
    switch (error.kind()) {
    case RingwellAlarmError::Kind::channelNotFound:
        return 404;
    case RingwellAlarmError::Kind::notAuthorized:
        return 403;
    case RingwellAlarmError::Kind::tooManyAlarms:
        return 409;
    case RingwellAlarmError::Kind::schedulingFailed:
        return 500;
    }
    return 500;
}

unsigned statusFor(const AlarmServiceError& error) {
    return error.kind() == AlarmServiceError::Kind::notFound ? 404 : 409;
}

json::Json channelList(const RingwellStore& store) {
    json::Json out = json::Json::array();
    for (const auto& channel : store.channels())
        out.push_back(toJson(channel));
    return out;
}

json::Json entityList(const std::vector<ChannelEntity>& entities) {
    json::Json out = json::Json::array();
    for (const auto& entity : entities)
        out.push_back(toJson(entity));
    return out;
}

json::Json permissions(AppContext& ctx) {
    return json::Json{{"alarms", rawValue(ctx.authorization.state())},
                      {"notifications", ctx.notices.permissionStatus()}};
}

// The name a person gives is finished as the channel editor does on saving.
std::optional<std::string> givenName(const json::Json& body) {
    auto name = json::optionalString(body, "name");
    if (!name)
        return std::nullopt;
    return ChannelLimits::finalizedName(*name);
}

// A rule past RuleLimits is refused with every reason, before anything is saved.
void rejectOverLimits(const ChannelRule& rule) {
    std::string message;
    for (const auto& problem : RuleLimits::problems(rule))
        message += (message.empty() ? "" : " ") + problem;
    if (!message.empty())
        throw ApiFailure{400, "\"rule\": " + message};
}

ApiResponse addChannel(AppContext& ctx, const json::Json& body) {
    auto name = givenName(body);
    const json::Json* templateId = json::member(body, "template");
    const json::Json* rule = json::member(body, "rule");
    const json::Json* likeEvent = json::member(body, "likeEvent");
    if ((templateId != nullptr) + (rule != nullptr) + (likeEvent != nullptr) > 1)
        throw ApiFailure{400, "give only one of \"template\", \"rule\" and \"likeEvent\""};

    if (likeEvent) {
        Uuid id = uuidArgument(json::asString(*likeEvent, "likeEvent"), "an event ID");
        const auto& events = ctx.store.events();
        auto event = std::find_if(events.begin(), events.end(),
                                  [&](const FireEvent& candidate) { return candidate.id == id; });
        if (event == events.end())
            throw ApiFailure{404, "No event in the history has the ID " + id.toString() + "."};
        Channel channel = ctx.store.addChannel(event->notification());
        if (name) {
            channel.name = *name;
            channel.usesAutomaticName = false;
            ctx.store.update(channel);
        }
        return ApiResponse::json(toJson(*ctx.store.channel(channel.id)), 201);
    }

    ChannelRule channelRule;
    if (templateId) {
        std::string id = json::asString(*templateId, "template");
        const RuleTemplate* found = RuleTemplate::find(id);
        if (!found)
            throw ApiFailure{400, "unknown template \"" + id + "\" (see `ringwell templates`)"};
        channelRule = found->rule;
    } else if (rule) {
        try {
            channelRule = ruleFromJson(*rule);
        } catch (const json::DecodeError& error) {
            throw ApiFailure{400, std::string("\"rule\": ") + error.what()};
        }
    }
    rejectOverLimits(channelRule); // rule limits, checked on every channel add and update
    return ApiResponse::json(toJson(ctx.store.addChannel(name, channelRule)), 201);
}

ApiResponse updateChannel(AppContext& ctx, const Uuid& id, const json::Json& body) {
    Channel channel;
    try {
        channel = channelFromJson(body, ctx.clock.now());
    } catch (const json::DecodeError& error) {
        throw ApiFailure{400, std::string("channel: ") + error.what()};
    }
    if (channel.id != id)
        throw ApiFailure{400, "the channel's \"id\" differs from the one in the address"};
    auto stored = ctx.store.channel(id);
    if (!stored)
        throw ApiFailure{404, "No channel has the ID " + id.toString() + "."};
    // The creation date is the store's; the rest is the editor's values, finished
    // as the editor finishes them.
    channel.createdAt = stored->createdAt;
    channel.name = ChannelLimits::finalizedName(channel.name);
    channel.countdownSeconds = ChannelLimits::clampCountdown(channel.countdownSeconds);
    channel.snoozeSeconds = ChannelLimits::clampSnooze(channel.snoozeSeconds);
    rejectOverLimits(channel.rule); // rule limits, checked on every channel add and update
    ctx.store.update(channel);
    return ApiResponse::json(toJson(*ctx.store.channel(id)));
}

ApiResponse moveChannel(AppContext& ctx, const Uuid& id, const json::Json& body) {
    auto position = json::optionalInt(body, "position");
    if (!position || *position < 1)
        throw ApiFailure{400, "\"position\" must be a whole number from 1"};
    const auto& channels = ctx.store.channels();
    auto found = std::find_if(channels.begin(), channels.end(),
                              [&](const Channel& channel) { return channel.id == id; });
    if (found == channels.end())
        throw ApiFailure{404, "No channel has the ID " + id.toString() + "."};
    size_t from = static_cast<size_t>(found - channels.begin());
    size_t to = std::min(static_cast<size_t>(*position - 1), channels.size() - 1);
    // The store takes the destination in terms of the list before the move.
    ctx.store.moveChannels({from}, to > from ? to + 1 : to);
    return ApiResponse::json(channelList(ctx.store));
}

ApiResponse preview(AppContext& ctx, const std::string& channelText) {
    Channel channel = resolveChannel(ctx.store, channelText);
    std::vector<RoutableChannel> routable;
    for (const auto& candidate : ctx.store.channels())
        routable.push_back({candidate.id, candidate.isEnabled, candidate.rule});
    Calendar calendar = ctx.calendar();
    auto entries =
        RulePreview::run(channel.id, routable, ctx.store.notificationHistory(), calendar);
    json::Json list = json::Json::array();
    for (const auto& entry : entries)
        list.push_back(toJson(entry, channel.rule, ctx.store, calendar));
    return ApiResponse::json(json::Json{{"channelID", channel.id.toString()},
                                        {"channelName", channel.name},
                                        {"ringCount", RulePreview::ringCount(entries)},
                                        {"entries", std::move(list)}});
}

ApiResponse events(AppContext& ctx, const ApiRequest& request) {
    std::optional<Uuid> filter;
    if (auto channel = request.queryValue("channel"))
        filter = uuidArgument(*channel, "a channel ID");
    json::Json out = json::Json::array();
    for (const auto& event : ctx.store.events()) {
        if (!filter || event.channelID == filter)
            out.push_back(eventWithLabel(event));
    }
    return ApiResponse::json(out);
}

ApiResponse alarmAction(AppContext& ctx, const Uuid& id, const std::string& action,
                        const json::Json& body) {
    if (action == "stop") {
        StopRingwellAlarmIntent intent{id.toString(), {}};
        if (const json::Json* followUps = json::member(body, "followUpIDs")) {
            if (!followUps->is_array())
                throw ApiFailure{400, "\"followUpIDs\" must be an array of alarm IDs"};
            intent.followUpIDs = json::stringList(*followUps, "followUpIDs");
        } else {
            // Without a list, the alarm's own Stop button: its reminders go too.
            for (const auto& alarm : ctx.alarmService.alarms()) {
                if (alarm.id == id)
                    intent.followUpIDs = alarm.configuration.stopIntent.followUpIDs;
            }
        }
        intent.perform(ctx.alarmService);
    } else if (action == "pause") {
        PauseRingwellAlarmIntent{id.toString()}.perform(ctx.alarmService);
    } else if (action == "resume") {
        ResumeRingwellAlarmIntent{id.toString()}.perform(ctx.alarmService);
    } else if (action == "snooze") {
        ctx.alarmService.snooze(id);
    } else {
        throw ApiFailure{404, "unknown alarm action " + action};
    }
    return ApiResponse::noContent();
}

ApiResponse setAlarmPermission(AppContext& ctx, const json::Json& body) {
    auto state = json::optionalString(body, "state");
    auto parsed = state ? authorizationStateFromRaw(*state) : std::nullopt;
    if (!parsed || *parsed == AlarmAuthorizationState::notDetermined)
        throw ApiFailure{400, "\"state\" must be \"authorized\" or \"denied\""};
    ctx.alarmService.setAuthorization(*parsed);
    return ApiResponse::json(permissions(ctx));
}

ApiResponse status(AppContext& ctx, const std::string& webAddress) {
    return ApiResponse::json(json::Json{{"name", "Ringwell"},
                                        {"webAddress", webAddress},
                                        {"version", version::shortVersion},
                                        {"build", version::buildNumber},
                                        {"channels", ctx.store.channels().size()},
                                        {"events", ctx.store.events().size()},
                                        {"alarms", ctx.alarmService.alarms().size()}});
}

json::Json settings(AppContext& ctx) {
    auto text = [&](std::string_view key) -> json::Json {
        auto value = ctx.defaults.value(key);
        return value && value->is_string() ? *value : json::Json();
    };
    auto onboarded = ctx.defaults.value(DefaultsKey::hasCompletedOnboarding);
    return json::Json{
        {"hasCompletedOnboarding", onboarded && onboarded->is_boolean() && onboarded->get<bool>()},
        {"lastSetupTestResult", text(DefaultsKey::lastSetupTestResult)},
        {"setupWarning",
         ctx.store.setupWarning() ? json::Json(*ctx.store.setupWarning()) : json::Json()},
        {"appVersion", std::string(version::shortVersion) + " (" + version::buildNumber + ")"}};
}

} // namespace

Api::Api(AppContext& ctx, Services services) : ctx_(ctx), services_(std::move(services)) {}

Awaitable<ApiResponse> Api::handle(ApiRequest request) {
    const auto path = segments(request.path);
    const std::string& method = request.method;
    auto is = [&](std::string_view wantedMethod, std::initializer_list<std::string_view> wanted) {
        if (method != wantedMethod || path.size() != wanted.size())
            return false;
        size_t i = 0;
        for (auto part : wanted) {
            if (part != "*" && path[i] != part)
                return false;
            ++i;
        }
        return true;
    };

    try {
        if (path.empty() || path[0] != "v1")
            throw ApiFailure{404, "unknown address " + request.path};

        if (is("GET", {"v1", "status"}))
            co_return status(ctx_, services_.webAddress);
        if (auto answer = editorRoute(ctx_, request))
            co_return std::move(*answer);

        if (is("GET", {"v1", "stream"})) {
            if (!services_.feed)
                throw ApiFailure{404, "live updates are served to the web app only"};
            ApiResponse response;
            response.stream = services_.feed->open();
            co_return response;
        }
        if (is("GET", {"v1", "settings"}))
            co_return ApiResponse::json(settings(ctx_));
        if (is("PUT", {"v1", "settings"})) {
            auto body = bodyObject(request);
            if (auto onboarded = json::optionalBool(body, "hasCompletedOnboarding")) {
                ctx_.defaults.set(DefaultsKey::hasCompletedOnboarding, *onboarded);
                if (services_.feed)
                    services_.feed->publish("settings");
            }
            co_return ApiResponse::json(settings(ctx_));
        }
        if (is("POST", {"v1", "tones", "*", "preview"})) {
            auto tone = alarmToneFromRaw(path[2]);
            if (!tone)
                throw ApiFailure{404, "unknown tone " + path[2]};
            if (services_.previewTone)
                services_.previewTone(*tone);
            co_return ApiResponse::noContent();
        }
        if (is("POST", {"v1", "channels", "*", "test"})) {
            Channel channel = resolveChannel(ctx_.store, path[2]);
            NotificationInfo payload;
            payload.date = ctx_.clock.now();
            FireEvent event = co_await ctx_.scheduler.fire(channel, payload, RingKind::test);
            co_return ApiResponse::json(eventWithLabel(event));
        }

        if (is("POST", {"v1", "send"})) {
            SendToRingwellIntent intent;
            try {
                intent = sendIntentFromJson(bodyObject(request));
            } catch (const json::DecodeError& error) {
                throw ApiFailure{400, error.what()};
            }
            FireEvent event = co_await intent.perform(ctx_);
            co_return ApiResponse::json(eventWithLabel(event));
        }

        if (is("POST", {"v1", "ring"})) {
            json::Json body = bodyObject(request);
            RingChannelIntent intent;
            try {
                // An ID goes to the intent as it is: the intent looks it up and
                // answers for a deleted channel with its own message.
                const std::string named = json::requireString(body, "channel");
                const auto id = Uuid::parse(named);
                intent.channel = id ? *id : resolveChannel(ctx_.store, named).id;
                intent.notificationTitle = json::optionalString(body, "title");
                intent.notificationSubtitle = json::optionalString(body, "subtitle");
                intent.notificationBody = json::optionalString(body, "body");
                if (auto receivedAt = json::optionalString(body, "receivedAt")) {
                    intent.receivedAt = parseIso8601(*receivedAt);
                    if (!intent.receivedAt)
                        throw ApiFailure{400, "\"receivedAt\": not an ISO 8601 date-time"};
                }
            } catch (const json::DecodeError& error) {
                throw ApiFailure{400, error.what()};
            }
            FireEvent event = co_await intent.perform(ctx_);
            co_return ApiResponse::json(eventWithLabel(event));
        }

        if (is("POST", {"v1", "stop-all"})) {
            StopAllAlarmsIntent{}.perform(ctx_);
            co_return ApiResponse::noContent();
        }

        if (is("GET", {"v1", "channels"}))
            co_return ApiResponse::json(channelList(ctx_.store));
        if (is("GET", {"v1", "channels", "*"}))
            co_return ApiResponse::json(toJson(resolveChannel(ctx_.store, path[2])));
        if (is("POST", {"v1", "channels"}))
            co_return addChannel(ctx_, bodyObject(request));
        if (is("PUT", {"v1", "channels", "*"}))
            co_return updateChannel(ctx_, uuidArgument(path[2], "a channel ID"),
                                    bodyObject(request));
        if (is("DELETE", {"v1", "channels", "*"})) {
            Uuid id = uuidArgument(path[2], "a channel ID");
            if (!ctx_.store.channel(id))
                throw ApiFailure{404, "No channel has the ID " + id.toString() + "."};
            ctx_.store.deleteChannel(id);
            co_return ApiResponse::noContent();
        }
        if (is("POST", {"v1", "channels", "*", "move"}))
            co_return moveChannel(ctx_, uuidArgument(path[2], "a channel ID"), bodyObject(request));
        if (is("GET", {"v1", "channel-entities"})) {
            auto matching = request.queryValue("matching");
            co_return ApiResponse::json(
                entityList(matching ? ChannelQuery::entities(ctx_.store, *matching)
                                    : ChannelQuery::suggestedEntities(ctx_.store)));
        }
        if (is("GET", {"v1", "preview"})) {
            auto channel = request.queryValue("channel");
            if (!channel)
                throw ApiFailure{400, "the \"channel\" query parameter is required"};
            co_return preview(ctx_, *channel);
        }

        if (is("GET", {"v1", "events"}))
            co_return events(ctx_, request);
        if (is("DELETE", {"v1", "events"})) {
            ctx_.store.clearEvents();
            co_return ApiResponse::noContent();
        }

        if (is("GET", {"v1", "alarms"})) {
            json::Json out = json::Json::array();
            for (const auto& alarm : ctx_.alarmService.alarms())
                out.push_back(toJson(alarm));
            co_return ApiResponse::json(out);
        }
        if (is("POST", {"v1", "alarms", "*", "*"}))
            co_return alarmAction(ctx_, uuidArgument(path[2], "an alarm ID"), path[3],
                                  bodyObject(request));

        if (is("GET", {"v1", "permissions"}))
            co_return ApiResponse::json(permissions(ctx_));
        if (is("PUT", {"v1", "permissions", "alarms"}))
            co_return setAlarmPermission(ctx_, bodyObject(request));

        if (is("GET", {"v1", "setup-test"}))
            co_return ApiResponse::json(toJson(ctx_.setupTest.state()));
        if (is("POST", {"v1", "setup-test", "start"})) {
            ctx_.setupTest.start(ctx_.clock.now());
            co_return ApiResponse::json(toJson(ctx_.setupTest.state()));
        }
        if (is("POST", {"v1", "setup-test", "cancel"})) {
            ctx_.setupTest.cancel();
            co_return ApiResponse::json(toJson(ctx_.setupTest.state()));
        }

        if (is("GET", {"v1", "stats"}))
            co_return ApiResponse::json(
                toJson(weekStatistics(ctx_.store, ctx_.clock.now(), ctx_.calendar())));
        if (is("GET", {"v1", "diagnostics"})) {
            auto report =
                Diagnostics::report(ctx_, services_.system.osVersion, services_.system.device);
            ApiResponse response = ApiResponse::text(report.text());
            if (request.queryValue("download"))
                response.headers = {
                    {"Content-Disposition", "attachment; filename=\"Ringwell Diagnostics.txt\""}};
            co_return response;
        }
        if (is("GET", {"v1", "diagnostics", "email"})) {
            auto report =
                Diagnostics::report(ctx_, services_.system.osVersion, services_.system.device);
            co_return ApiResponse::json(json::Json{{"url", Diagnostics::emailURL(report)}});
        }

        throw ApiFailure{404, "no such route: " + method + " " + request.path};
    } catch (const ApiFailure& failure) {
        co_return ApiResponse::error(failure.status, failure.message);
    } catch (const RingwellAlarmError& error) {
        co_return ApiResponse::error(statusFor(error), error.what());
    } catch (const AlarmServiceError& error) {
        co_return ApiResponse::error(statusFor(error), error.what());
    } catch (const json::DecodeError& error) {
        co_return ApiResponse::error(400, error.what());
    }
}

} // namespace ringwell
