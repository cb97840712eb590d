#pragma once

#include "Alarms/CaptureRelay.h"
#include "Core/Json.h"

namespace ringwell {

// Capture of the desktop's notifications, as the API shows it: on or off,
// whether it is active, the notification server, how many notifications it
// saw since start and handed on, and the chosen apps (null for every app).
// The routes GET and PUT /v1/capture are in the route table (ApiRoutes.h).
json::Json captureJson(const CaptureRelay& capture);

} // namespace ringwell
