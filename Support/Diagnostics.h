#pragma once

#include "Alarms/AppContext.h"
#include "Core/DiagnosticsReport.h"
#include "Shared/AlarmService.h"

#include <string>
#include <string_view>

namespace ringwell {

// Gathers the privacy-safe diagnostics report from the running app and forms
// the support mail. Main thread only: it reads the store, the alarm
// permission, the notice centre and the settings.
namespace Diagnostics {

inline constexpr std::string_view supportAddress = "support@ringwell.org";

// "0.1.0 (42)": the version, then the build number in parentheses; a missing
// part reads "?".
std::string appVersion();

// "not requested", "denied" or "allowed".
std::string_view alarmsPermission(AlarmAuthorizationState state);

// The report as of now. `osVersion` and `device` come from the platform
// (/etc/os-release and DMI on Linux); everything else from `ctx`. Events name
// their channel by its position in the list, never by name.
DiagnosticsReport report(const AppContext& ctx, std::string osVersion, std::string device);

// "mailto:support@ringwell.org?subject=...&body=...": the subject "Ringwell
// support (<version>)" and a body that asks what happened above the report's
// text. Both values are percent-encoded, keeping only the unreserved
// characters of RFC 3986.
std::string emailURL(const DiagnosticsReport& report);

} // namespace Diagnostics
} // namespace ringwell
