#pragma once

#include "Alarms/CaptureRelay.h"
#include "Core/Json.h"
#include "Daemon/ApiMessage.h"

#include <optional>

namespace ringwell {

// Capture of the desktop's notifications, as the API shows it: on or off,
// whether it is active, the notification server, how many notifications it
// saw since start and handed on, and the chosen apps (null for every app).
json::Json captureJson(const CaptureRelay& capture);

// GET /v1/capture, and PUT /v1/capture with {"enabled": bool, "apps": [names]
// or null}, either key optional. Gives no value for other requests; without
// a capture (tests' daemons may have none) the route answers 404. Client
// mistakes come back as 400 answers.
std::optional<ApiResponse> captureRoute(CaptureRelay* capture, const ApiRequest& request);

} // namespace ringwell
