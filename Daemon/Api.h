#pragma once

#include "Alarms/AppContext.h"
#include "Daemon/ApiMessage.h"
#include "Shared/Asio.h"

#include <functional>
#include <string>

namespace ringwell {

class CaptureRelay;
class ChangeFeed;
enum class AlarmTone;

// The daemon's local API: every request of the command line (and later the
// web app) becomes calls on the app's objects and a JSON answer. The routes
// and their forms are documented in docs/api.md.
//
// Main thread only. Client mistakes answer 4xx with {"error": message};
// nothing a client sends throws out of `handle`.
class Api {
public:
    // What the platform tells about the machine, for the diagnostics report.
    struct SystemDescription {
        std::string osVersion;
        std::string device;
    };

    // What only the daemon's own wiring provides.
    struct Services {
        SystemDescription system;
        // The web app's live feed; none on the Unix socket's API.
        ChangeFeed* feed = nullptr;
        // Plays a tone once on the machine's speakers, for the tone picker.
        std::function<void(AlarmTone)> previewTone;
        // "http://127.0.0.1:PORT/?token=...", the web app's address with its
        // secret; empty when the web app is off.
        std::string webAddress;
        // Capture of the desktop's notifications; none in daemons without it.
        CaptureRelay* capture = nullptr;
    };

    Api(AppContext& ctx, Services services);

    Awaitable<ApiResponse> handle(ApiRequest request);

private:
    AppContext& ctx_;
    Services services_;
};

} // namespace ringwell
