#include "Support/Diagnostics.h"

#include "Core/Json.h"
#include "Core/PercentEncoding.h"
#include "Version.h"

#include <map>

namespace ringwell::Diagnostics {
namespace {

std::string orUnknown(std::string_view text) {
    return text.empty() ? std::string("?") : std::string(text);
}

} // namespace

std::string appVersion() {
    return orUnknown(version::shortVersion) + " (" + orUnknown(version::buildNumber) + ")";
}

std::string_view alarmsPermission(AlarmAuthorizationState state) {
    switch (state) {
    case AlarmAuthorizationState::notDetermined:
        return "not requested";
    case AlarmAuthorizationState::denied:
        return "denied";
    case AlarmAuthorizationState::authorized:
        return "allowed";
    }
    return "unknown";
}

DiagnosticsReport report(const AppContext& ctx, std::string osVersion, std::string device) {
    DiagnosticsReport result;
    result.appVersion = appVersion();
    result.osVersion = std::move(osVersion);
    result.device = std::move(device);
    result.alarmsPermission = alarmsPermission(ctx.authorization.state());
    result.notificationsPermission = ctx.notices.permissionStatus();
    const auto lastSetupTest = ctx.defaults.value(DefaultsKey::lastSetupTestResult);
    result.lastSetupTest = lastSetupTest && lastSetupTest->is_string()
                               ? lastSetupTest->get<std::string>()
                               : std::string("never run");
    result.setupWarning = ctx.store.setupWarning();
    result.saveError = ctx.store.saveError();

    std::map<Uuid, std::int64_t> numbers;
    for (const Channel& channel : ctx.store.channels()) {
        result.channels.push_back(
            {channel.isEnabled, std::string(rawValue(channel.mode)), channel.rule});
        // The first of two channels sharing an id keeps its number, as the
        // store's lookup finds the first.
        numbers.emplace(channel.id, static_cast<std::int64_t>(result.channels.size()));
    }

    for (const FireEvent& event : ctx.store.events()) {
        DiagnosticsReport::EventInfo info;
        info.date = event.receivedAt;
        info.app = event.app;
        info.outcome = std::string(label(event.outcome));
        if (event.channelID) {
            if (auto number = numbers.find(*event.channelID); number != numbers.end())
                info.channelNumber = number->second;
        }
        info.isTest = event.isTest;
        info.error = event.errorMessage;
        result.events.push_back(std::move(info));
    }

    // No source of crash or hang reports is attached; the section still says so.
    result.performanceReports = {};
    result.generatedAt = ctx.clock.now();
    return result;
}

std::string emailURL(const DiagnosticsReport& report) {
    const std::string subject = "Ringwell support (" + report.appVersion + ")";
    const std::string body = "Describe what happened:\n\n\n---\n" + report.text();
    return "mailto:" + std::string(supportAddress) +
           "?subject=" + PercentEncoding::encode(subject) +
           "&body=" + PercentEncoding::encode(body);
}

} // namespace ringwell::Diagnostics
