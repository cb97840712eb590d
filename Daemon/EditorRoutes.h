#pragma once

#include "Alarms/AppContext.h"
#include "Daemon/ApiMessage.h"

#include <optional>

namespace ringwell {

// The routes the channel and rule editors need beyond the records themselves:
// templates, rule descriptions and condition seeding, the channel list's
// badges and connection status, app and sender suggestions, tones and the
// editors' limits. All answer at once (no waiting).
//
// Gives no value when the request is not one of these routes. Throws
// ApiFailure-like errors as an ApiResponse instead: client mistakes come back
// as 4xx answers.
std::optional<ApiResponse> editorRoute(AppContext& ctx, const ApiRequest& request);

} // namespace ringwell
