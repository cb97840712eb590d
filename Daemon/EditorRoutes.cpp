#include "Daemon/EditorRoutes.h"

#include "Core/ChannelLimits.h"
#include "Core/ConnectionStatus.h"
#include "Core/Json.h"
#include "Core/RuleTemplate.h"
#include "Model/AlarmTone.h"
#include "Model/FiringMode.h"

namespace ringwell {
namespace {

json::Json describe(const ChannelRule& rule) {
    json::Json available = json::Json::array();
    for (auto condition : RuleConditions::available(rule)) {
        available.push_back(json::Json{{"id", RuleConditions::id(condition)},
                                       {"title", RuleConditions::title(condition)},
                                       {"symbolName", RuleConditions::symbolName(condition)},
                                       {"isList", RuleConditions::isList(condition)},
                                       {"isSet", RuleConditions::isSet(condition, rule)}});
    }
    return json::Json{{"summary", rule.summary()},
                      {"suggestedName", rule.suggestedName()},
                      {"invalidPatterns", rule.invalidPatterns()},
                      {"available", std::move(available)}};
}

ChannelRule ruleOf(const json::Json& body) {
    const json::Json* rule = json::member(body, "rule");
    if (!rule)
        throw json::DecodeError("\"rule\" is required");
    return ruleFromJson(*rule);
}

json::Json channelViews(AppContext& ctx) {
    std::vector<ConnectionStatus::Trigger> triggers;
    for (const auto& event : ctx.store.events())
        triggers.push_back({event.channelID, event.receivedAt});
    Date now = ctx.clock.now();
    json::Json views = json::Json::array();
    for (const auto& channel : ctx.store.channels()) {
        auto status = ConnectionStatus::of(channel.id, triggers);
        json::Json connection{{"count", status.count}, {"label", status.label(now)}};
        if (status.lastTriggered)
            connection["lastTriggered"] = json::dateValue(*status.lastTriggered);
        views.push_back(json::Json{{"channel", toJson(channel)},
                                   {"modeBadge", modeBadge(channel.mode, channel.countdownSeconds)},
                                   {"ruleSummary", channel.rule.summary()},
                                   {"connection", std::move(connection)}});
    }
    return views;
}

json::Json tones() {
    json::Json list = json::Json::array();
    for (auto tone : AlarmTones::allCases) {
        json::Json entry{{"id", rawValue(tone)}, {"label", label(tone)}};
        if (auto file = AlarmTones::fileName(tone))
            entry["fileName"] = *file;
        list.push_back(std::move(entry));
    }
    return list;
}

template <typename Container> json::Json numbers(const Container& values) {
    json::Json out = json::Json::array();
    for (auto value : values)
        out.push_back(value);
    return out;
}

json::Json limits() {
    return json::Json{
        {"nameLimit", ChannelLimits::nameLimit},
        {"countdownRange",
         {ChannelLimits::countdownRange.lower, ChannelLimits::countdownRange.upper}},
        {"snoozeRange", {ChannelLimits::snoozeRange.lower, ChannelLimits::snoozeRange.upper}},
        {"countdownPresets", numbers(ChannelLimits::countdownPresets)},
        {"snoozePresets", numbers(ChannelLimits::snoozePresets)},
        {"cooldownPresets", numbers(ChannelRule::cooldownPresets())},
        {"frequencyWindowPresets", numbers(FrequencyCondition::windowPresets())},
        {"frequencyCountRange",
         {FrequencyCondition::countRangeMin, FrequencyCondition::countRangeMax}}};
}

json::Json templates() {
    json::Json list = json::Json::array();
    for (const auto& entry : RuleTemplate::all())
        list.push_back(toJson(entry));
    return list;
}

} // namespace

std::optional<ApiResponse> editorRoute(AppContext& ctx, const ApiRequest& request) {
    const std::string& path = request.path;
    const bool get = request.method == "GET";
    const bool post = request.method == "POST";
    try {
        if (get && path == "/v1/templates")
            return ApiResponse::json(templates());
        if (get && path == "/v1/tones")
            return ApiResponse::json(tones());
        if (get && path == "/v1/limits")
            return ApiResponse::json(limits());
        if (get && path == "/v1/channel-views")
            return ApiResponse::json(channelViews(ctx));
        if (get && path == "/v1/known-apps")
            return ApiResponse::json(ctx.store.knownApps());
        if (get && path == "/v1/known-senders")
            return ApiResponse::json(ctx.store.knownSenders(request.queryValues("app")));
        if (get && path == "/v1/apps-to-forward") {
            auto apps = ctx.store.appsToForward();
            return ApiResponse::json(json::Json{{"apps", apps ? json::Json(*apps) : json::Json()}});
        }
        if (post && path == "/v1/rules/describe") {
            auto body = json::parse(request.body);
            if (!body)
                return ApiResponse::error(400, body.error().message);
            return ApiResponse::json(describe(ruleOf(body.value())));
        }
        if (post && path == "/v1/rules/condition") {
            auto body = json::parse(request.body);
            if (!body)
                return ApiResponse::error(400, body.error().message);
            ChannelRule rule = ruleOf(body.value());
            auto condition = RuleConditions::fromId(json::requireString(body.value(), "condition"));
            auto action = json::requireString(body.value(), "action");
            if (!condition)
                return ApiResponse::error(400, "unknown condition");
            if (action == "seed")
                RuleConditions::seed(*condition, rule);
            else if (action == "clear")
                RuleConditions::clear(*condition, rule);
            else
                return ApiResponse::error(400, "\"action\" must be \"seed\" or \"clear\"");
            return ApiResponse::json(json::Json{{"rule", toJson(rule)}});
        }
    } catch (const json::DecodeError& error) {
        return ApiResponse::error(400, error.what());
    } catch (const nlohmann::json::exception& error) {
        return ApiResponse::error(400, error.what());
    }
    return std::nullopt;
}

} // namespace ringwell
