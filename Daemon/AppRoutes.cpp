#include "Core/SoundSettings.h"
#include "Daemon/ApiJson.h"
#include "Daemon/ApiRoutes.h"
#include "Daemon/CaptureRoutes.h"
#include "Daemon/ChangeFeed.h"
#include "Daemon/LanListener.h"
#include "Daemon/RouteSupport.h"
#include "Support/Diagnostics.h"
#include "Version.h"

namespace ringwell::routes {
namespace {

BreakthroughSettings soundSettings(const AppContext& ctx) {
    return SoundSettings::read([&](std::string_view key) { return ctx.defaults.value(key); });
}

// Checks and stores one sound setting; tells the web app's feed.
Result<bool> storeSoundSetting(ApiState& state, std::string_view key, const json::Json& value) {
    auto checked = SoundSettings::check(key, value);
    if (!checked)
        return checked.error();
    state.ctx.defaults.set(key, checked.value());
    if (state.services.feed)
        state.services.feed->publish("settings");
    return true;
}

json::Json settingsJson(AppContext& ctx) {
    auto text = [&](std::string_view key) -> json::Json {
        auto value = ctx.defaults.value(key);
        return value && value->is_string() ? *value : json::Json();
    };
    auto onboarded = ctx.defaults.value(DefaultsKey::hasCompletedOnboarding);
    json::Json out{
        {"hasCompletedOnboarding", onboarded && onboarded->is_boolean() && onboarded->get<bool>()},
        {"lastSetupTestResult", text(DefaultsKey::lastSetupTestResult)},
        {"setupWarning",
         ctx.store.setupWarning() ? json::Json(*ctx.store.setupWarning()) : json::Json()},
        {"appVersion", std::string(version::shortVersion) + " (" + version::buildNumber + ")"}};
    out.update(SoundSettings::toJson(soundSettings(ctx)));
    return out;
}

DiagnosticsReport diagnosticsReport(ApiState& state) {
    return Diagnostics::report(state.ctx, state.services.osVersion, state.services.device);
}

} // namespace

ApiResult status(const RouteRequest&, ApiState& state) {
    AppContext& ctx = state.ctx;
    const auto& saveError = ctx.store.saveError();
    json::Json out{{"name", "Ringwell"},
                   {"webAddress", state.services.webAddress},
                   {"version", version::shortVersion},
                   {"build", version::buildNumber},
                   {"channels", ctx.store.channels().size()},
                   {"events", ctx.store.events().size()},
                   {"alarms", ctx.alarmService.alarms().size()},
                   {"saveProblem", saveError
                                       ? json::Json(DiagnosticsReport::saveProblem(*saveError))
                                       : json::Json()}};
    json::Json server;
    if (auto found = ctx.notices.server()) {
        server = {{"name", found->name},
                  {"vendor", found->vendor},
                  {"version", found->version},
                  {"doNotDisturb",
                   found->doNotDisturb ? json::Json(*found->doNotDisturb) : json::Json()}};
    }
    out["notifications"] = {{"permission", ctx.notices.permissionStatus()}, {"server", server}};
    if (state.services.capture)
        out["capture"] = captureJson(*state.services.capture);
    if (state.services.soundStatus)
        out["sound"] = state.services.soundStatus();
    if (state.services.devices)
        out["lan"] = state.services.devices->state();
    return ApiResponse::json(out);
}

ApiResult stream(const RouteRequest&, ApiState& state) {
    if (!state.services.feed)
        return Error{"live updates are served to the web app only", Error::Kind::notFound};
    ApiResponse response;
    response.stream = state.services.feed->open();
    return response;
}

ApiResult settings(const RouteRequest&, ApiState& state) {
    return ApiResponse::json(settingsJson(state.ctx));
}

ApiResult updateSettings(const RouteRequest& request, ApiState& state) {
    auto body = bodyObject(request.message);
    if (!body)
        return body.error();
    auto onboarded =
        decoded([&] { return json::optionalBool(body.value(), "hasCompletedOnboarding"); });
    if (!onboarded)
        return onboarded.error();
    // Every value is checked before any is stored: a bad one changes nothing.
    for (auto key : SoundSettings::keys()) {
        if (const json::Json* value = json::member(body.value(), key); value && !value->is_null()) {
            if (auto checked = SoundSettings::check(key, *value); !checked)
                return checked.error();
        }
    }
    for (auto key : SoundSettings::keys()) {
        if (const json::Json* value = json::member(body.value(), key); value && !value->is_null())
            (void)storeSoundSetting(state, key, *value);
    }
    if (onboarded.value()) {
        state.ctx.defaults.set(DefaultsKey::hasCompletedOnboarding, *onboarded.value());
        if (state.services.feed)
            state.services.feed->publish("settings");
    }
    return ApiResponse::json(settingsJson(state.ctx));
}

ApiResult setting(const RouteRequest& request, ApiState& state) {
    const auto& key = request.parameter("key");
    const json::Json all = SoundSettings::toJson(soundSettings(state.ctx));
    if (!all.contains(key))
        return SoundSettings::check(key, json::Json()).error();
    return ApiResponse::json(json::Json{{"key", key}, {"value", all.at(key)}});
}

ApiResult updateSetting(const RouteRequest& request, ApiState& state) {
    const auto& key = request.parameter("key");
    auto body = bodyObject(request.message);
    if (!body)
        return body.error();
    const json::Json* value = json::member(body.value(), "value");
    if (!value)
        return Error{"the body needs a \"value\"", Error::Kind::invalidInput};
    auto stored = storeSoundSetting(state, key, *value);
    if (!stored)
        return stored.error();
    return setting(request, state);
}

ApiResult testAlarmSound(const RouteRequest&, ApiState& state) {
    if (!state.services.testAlarmSound)
        return Error{"this daemon plays no sound", Error::Kind::notFound};
    if (!state.services.testAlarmSound())
        return Error{"an alarm is ringing; stop it to test the alarm volume",
                     Error::Kind::conflict};
    return ApiResponse::json(json::Json{
        {"playing", true},
        {"sound", state.services.soundStatus ? state.services.soundStatus() : json::Json()}});
}

ApiResult events(const RouteRequest& request, ApiState& state) {
    std::optional<Uuid> filter;
    if (auto channel = request.message.queryValue("channel")) {
        auto found = resolveChannel(state.ctx.store, *channel);
        if (!found)
            return found.error();
        filter = found.value().id;
    }
    json::Json out = json::Json::array();
    for (const auto& event : state.ctx.store.events()) {
        if (!filter || event.channelID == filter)
            out.push_back(eventWithLabel(event));
    }
    return ApiResponse::json(out);
}

ApiResult clearEvents(const RouteRequest&, ApiState& state) {
    state.ctx.store.clearEvents();
    return ApiResponse::noContent();
}

ApiResult stats(const RouteRequest&, ApiState& state) {
    AppContext& ctx = state.ctx;
    return ApiResponse::json(toJson(weekStatistics(ctx.store, ctx.clock.now(), ctx.calendar())));
}

ApiResult diagnostics(const RouteRequest& request, ApiState& state) {
    ApiResponse response = ApiResponse::text(diagnosticsReport(state).text());
    if (request.message.queryValue("download"))
        response.headers = {
            {"Content-Disposition", "attachment; filename=\"Ringwell Diagnostics.txt\""}};
    return response;
}

ApiResult diagnosticsEmail(const RouteRequest&, ApiState& state) {
    return ApiResponse::json(json::Json{{"url", Diagnostics::emailURL(diagnosticsReport(state))}});
}

ApiResult setupTest(const RouteRequest&, ApiState& state) {
    return ApiResponse::json(toJson(state.ctx.setupTest.state()));
}

ApiResult startSetupTest(const RouteRequest&, ApiState& state) {
    state.ctx.setupTest.start(state.ctx.clock.now());
    return ApiResponse::json(toJson(state.ctx.setupTest.state()));
}

ApiResult cancelSetupTest(const RouteRequest&, ApiState& state) {
    state.ctx.setupTest.cancel();
    return ApiResponse::json(toJson(state.ctx.setupTest.state()));
}

} // namespace ringwell::routes
