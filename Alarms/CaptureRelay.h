#pragma once

#include "Alarms/AppContext.h"
#include "Alarms/NotificationSource.h"
#include "Core/CaptureSightings.h"
#include "Shared/Asio.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ringwell {

// Hands each notification of the desktop to the dispatcher, exactly as a
// Send: capture on or off and the apps it takes are settings
// ("captureEnabled", on unless turned off; "captureApps", every app when
// absent). A notification of an app not chosen is dropped before the
// dispatcher, so it leaves no event; it is still listed among the apps seen,
// so that it can be chosen.
//
// Main thread only; `ctx` and `source` must outlive it.
class CaptureRelay {
public:
    CaptureRelay(AppContext& ctx, NotificationSource& source, asio::any_io_executor executor);

    // Starts the source when capture is on.
    void start();

    bool enabled() const;
    void setEnabled(bool enabled);
    // The chosen apps; none means every app.
    std::optional<std::vector<std::string>> apps() const;
    // Names are kept as typed; blank ones are dropped.
    void setApps(std::optional<std::vector<std::string>> apps);
    // Whether a notification of `app` goes on to the dispatcher.
    bool admits(const std::string& app) const;

    CaptureStatus status() const { return source_.status(); }
    // Notifications handed to the dispatcher since start.
    std::uint64_t forwarded() const { return forwarded_; }
    // The apps and phone bridges seen since start, chosen or not.
    const CaptureSightings& sightings() const { return sightings_; }
    // Called after each captured notification, once the sightings are updated.
    void onSighting(std::function<void()> observer) { onSighting_ = std::move(observer); }

private:
    void forward(CapturedNotice notice);

    AppContext& ctx_;
    NotificationSource& source_;
    asio::any_io_executor executor_;
    std::uint64_t forwarded_ = 0;
    CaptureSightings sightings_;
    std::function<void()> onSighting_;
};

} // namespace ringwell
