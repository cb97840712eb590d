#include "Alarms/CaptureRelay.h"
#include "Core/Json.h"

#include "Alarms/NotificationDispatcher.h"
#include "Core/AppName.h"
#include "Core/NameList.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace ringwell {
namespace {

constexpr std::string_view logCategory = "Capture";

} // namespace

CaptureRelay::CaptureRelay(AppContext& ctx, NotificationSource& source,
                           asio::any_io_executor executor)
    : ctx_(ctx), source_(source), executor_(std::move(executor)) {}

void CaptureRelay::start() {
    if (enabled())
        source_.start([this](CapturedNotice notice) { forward(std::move(notice)); });
}

bool CaptureRelay::enabled() const {
    auto value = ctx_.defaults.value(DefaultsKey::captureEnabled);
    return !(value && value->is_boolean() && !value->get<bool>());
}

void CaptureRelay::setEnabled(bool enabled) {
    if (enabled == this->enabled())
        return;
    ctx_.defaults.set(DefaultsKey::captureEnabled, enabled);
    ctx_.logger.log(LogLevel::notice, logCategory,
                    enabled ? "Capture turned on" : "Capture turned off");
    if (enabled)
        start();
    else
        source_.stop();
}

std::optional<std::vector<std::string>> CaptureRelay::apps() const {
    auto value = ctx_.defaults.value(DefaultsKey::captureApps);
    if (!value || !value->is_array())
        return std::nullopt;
    std::vector<std::string> names;
    for (const auto& name : *value) {
        if (name.is_string())
            names.push_back(name.get<std::string>());
    }
    return names;
}

void CaptureRelay::setApps(std::optional<std::vector<std::string>> apps) {
    if (!apps) {
        ctx_.defaults.set(DefaultsKey::captureApps, json::Json());
        return;
    }
    std::vector<std::string> names;
    for (const auto& name : *apps)
        addName(names, name);
    ctx_.defaults.set(DefaultsKey::captureApps, names);
}

bool CaptureRelay::admits(const std::string& app) const {
    auto chosen = apps();
    if (!chosen)
        return true;
    return std::any_of(chosen->begin(), chosen->end(),
                       [&](const std::string& name) { return isSameApp(name, app); });
}

void CaptureRelay::forward(CapturedNotice notice) {
    if (!enabled())
        return;
    const Date now = ctx_.clock.now();
    const std::string app = notice.fields.app.value_or("");
    sightings_.sawApp(app, now);
    if (notice.bridge)
        sightings_.sawBridge(notice.bridge->kind, notice.bridge->device, now);
    if (onSighting_)
        onSighting_();
    if (!admits(app))
        return;
    ++forwarded_;
    asio::co_spawn(executor_, NotificationDispatcher::handle(ctx_, std::move(notice.fields)),
                   [&logger = ctx_.logger](std::exception_ptr failure, const FireEvent&) {
                       if (!failure)
                           return;
                       try {
                           std::rethrow_exception(failure);
                       } catch (const std::exception& error) {
                           logger.log(LogLevel::error, logCategory,
                                      std::string("A captured notification was lost: ") +
                                          error.what());
                       }
                   });
}

} // namespace ringwell
