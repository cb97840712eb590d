#include "Alarms/RoutingBudget.h"
#include "Core/ChannelLimits.h"
#include "Core/ConnectionStatus.h"
#include "Core/Json.h"
#include "Core/RuleTemplate.h"
#include "Daemon/ApiJson.h"
#include "Daemon/ApiRoutes.h"
#include "Daemon/RouteSupport.h"
#include "Model/AlarmTone.h"
#include "Model/ChannelPalette.h"
#include "Model/FiringMode.h"

namespace ringwell::routes {
namespace {

json::Json describe(const ChannelRule& rule, MatchBudget budget) {
    auto invalid = rule.invalidPatterns(budget);
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
                      {"invalidPatterns", std::move(invalid)},
                      {"cutShort", budget.wasCutShort()},
                      {"available", std::move(available)}};
}

// The body's "rule", which the rule routes require.
Result<ChannelRule> ruleOf(const json::Json& body) {
    return decoded([&] {
        const json::Json* rule = json::member(body, "rule");
        if (!rule)
            throw json::DecodeError("\"rule\" is required");
        return ruleFromJson(*rule);
    });
}

template <typename Container> json::Json numbers(const Container& values) {
    json::Json out = json::Json::array();
    for (auto value : values)
        out.push_back(value);
    return out;
}

json::Json limitsJson() {
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

} // namespace

ApiResult config(const RouteRequest&, ApiState&) {
    json::Json palette = json::Json::array();
    for (size_t i = 0; i < ChannelPalette::colors.size(); ++i)
        palette.push_back(json::Json{{"hex", std::string(ChannelPalette::colors[i])},
                                     {"name", std::string(ChannelPalette::names[i])}});
    json::Json out{{"palette", std::move(palette)}};
    out.update(limitsJson());
    return ApiResponse::json(out);
}

ApiResult templates(const RouteRequest&, ApiState&) {
    json::Json list = json::Json::array();
    for (const auto& entry : RuleTemplate::all())
        list.push_back(toJson(entry));
    return ApiResponse::json(list);
}

ApiResult tones(const RouteRequest&, ApiState&) {
    json::Json list = json::Json::array();
    for (auto tone : AlarmTones::allCases) {
        json::Json entry{{"id", rawValue(tone)}, {"label", label(tone)}};
        if (auto file = AlarmTones::fileName(tone))
            entry["fileName"] = *file;
        list.push_back(std::move(entry));
    }
    return ApiResponse::json(list);
}

ApiResult previewTone(const RouteRequest& request, ApiState& state) {
    const std::string& name = request.parameter("tone");
    auto tone = alarmToneFromRaw(name);
    if (!tone)
        return Error{"unknown tone " + name, Error::Kind::notFound};
    if (state.services.previewTone)
        state.services.previewTone(*tone);
    return ApiResponse::noContent();
}

ApiResult limits(const RouteRequest&, ApiState&) {
    return ApiResponse::json(limitsJson());
}

ApiResult channelViews(const RouteRequest&, ApiState& state) {
    AppContext& ctx = state.ctx;
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
        views.push_back(json::Json{{"channel", channelForApi(channel)},
                                   {"modeBadge", modeBadge(channel.mode, channel.countdownSeconds)},
                                   {"ruleSummary", channel.rule.summary()},
                                   {"connection", std::move(connection)}});
    }
    return ApiResponse::json(views);
}

ApiResult knownApps(const RouteRequest&, ApiState& state) {
    return ApiResponse::json(state.ctx.store.knownApps());
}

ApiResult knownSenders(const RouteRequest& request, ApiState& state) {
    return ApiResponse::json(state.ctx.store.knownSenders(request.message.queryValues("app")));
}

ApiResult appsToForward(const RouteRequest&, ApiState& state) {
    auto apps = state.ctx.store.appsToForward();
    return ApiResponse::json(json::Json{{"apps", apps ? json::Json(*apps) : json::Json()}});
}

ApiResult describeRule(const RouteRequest& request, ApiState& state) {
    auto body = bodyObject(request.message);
    if (!body)
        return body.error();
    auto rule = ruleOf(body.value());
    if (!rule)
        return rule.error();
    // The editor describes the rule on every keystroke; compiling thousands of
    // patterns must not hold the loop any longer than one routing may.
    return ApiResponse::json(describe(rule.value(), routingBudget(state.ctx.matchingClock)));
}

ApiResult editRuleCondition(const RouteRequest& request, ApiState&) {
    auto body = bodyObject(request.message);
    if (!body)
        return body.error();
    auto rule = ruleOf(body.value());
    if (!rule)
        return rule.error();
    auto fields = decoded([&] {
        return std::pair{json::requireString(body.value(), "condition"),
                         json::requireString(body.value(), "action")};
    });
    if (!fields)
        return fields.error();
    const auto& [conditionId, action] = fields.value();
    auto condition = RuleConditions::fromId(conditionId);
    if (!condition)
        return Error{"unknown condition", Error::Kind::invalidInput};
    if (action == "seed")
        RuleConditions::seed(*condition, rule.value());
    else if (action == "clear")
        RuleConditions::clear(*condition, rule.value());
    else
        return Error{"\"action\" must be \"seed\" or \"clear\"", Error::Kind::invalidInput};
    return ApiResponse::json(json::Json{{"rule", toJson(rule.value())}});
}

} // namespace ringwell::routes
