#pragma once

#include "Core/Date.h"

#include <optional>
#include <string>
#include <string_view>

namespace ringwell {

// ISO 8601 internet date-time, e.g. "2025-01-02T03:04:05Z" or
// "2025-01-02T03:04:05.123+01:00": full date and time with a zone designator.
// A bare date, a missing zone, trailing text, a field out of range or a
// fraction of more than nine digits give no value; the text is checked before
// ICU reads it, so any text is safe to pass.
std::optional<Date> parseIso8601(std::string_view text);

// "2025-01-02T03:04:05Z": UTC, whole seconds (truncated), trailing "Z".
std::string formatIso8601(Date date);

} // namespace ringwell
