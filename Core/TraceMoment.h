#pragma once

#include "Core/Calendar.h"

#include <optional>
#include <string>
#include <string_view>

namespace ringwell {

// The moment of a trace: a weekday and a time of day in the person's zone, at
// which every replayed notification is judged as if it had arrived.
namespace TraceMoment {

// "sun 03:00" (a day name, at least its first three letters, any case, then
// H:MM or HH:MM), or an ISO 8601 date-time whose weekday and time are read in
// `calendar`'s zone, so that an instant on a daylight-saving day lands on the
// local time it really is. Anything else gives no value.
std::optional<Calendar::Components> parse(std::string_view text, const Calendar& calendar);

// "Sun 03:00".
std::string format(Calendar::Components moment);

} // namespace TraceMoment
} // namespace ringwell
