#pragma once

#include "Core/Calendar.h"
#include "Core/Iso8601.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace ringwell::testing {

// A calendar pinned to a named zone; fails the test when the zone is unknown.
inline Calendar calendarIn(const char* zone) {
    auto calendar = Calendar::inTimeZone(zone);
    EXPECT_TRUE(calendar.has_value()) << zone;
    return calendar ? *calendar : Calendar::userDefault();
}

// A date from an ISO 8601 text; fails the test when the text does not parse.
inline Date at(const char* iso) {
    auto date = parseIso8601(iso);
    EXPECT_TRUE(date.has_value()) << iso;
    return date.value_or(Date{});
}

} // namespace ringwell::testing
