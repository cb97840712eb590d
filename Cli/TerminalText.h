#pragma once

#include "Core/JsonFwd.h"

#include <string>
#include <string_view>

// How the command line shows dates and texts in its rows. Done with the C
// library's time zone and character data, not ICU, which `ringwell` does not
// link (see RuleCommands.cpp).
namespace ringwell::cli {

// Local wall-clock text of a date number (seconds since 2001),
// "2025-01-02 03:04:05", in the zone TZ or the system names; "?" for anything
// that is not a representable date.
std::string localTime(const json::Json& dateNumber);

// The text on one line: every run of white space, line breaks included, becomes
// one space, and the ends are trimmed. Bytes that are not UTF-8 are kept as
// they are.
std::string oneLine(std::string_view text);

// The start of an event's or alarm's ID that its row shows: enough for the
// commands that take one (the daemon resolves a start only one ID has).
std::string idStart(std::string_view id);

} // namespace ringwell::cli
