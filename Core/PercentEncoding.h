#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ringwell {

// Percent-encoding of URL parts (RFC 3986), shared by the command line, which
// builds the daemon's addresses, and the daemon, which reads them.
namespace PercentEncoding {

// Every byte except A-Z, a-z, 0-9, "-", ".", "_" and "~" as "%XX".
std::string encode(std::string_view text);

// What "+" means in the text being decoded: a space in a query, itself in a path.
enum class Plus { isSpace, isItself };

// The bytes the "%XX" escapes stand for; none for a malformed escape.
std::optional<std::string> decode(std::string_view text, Plus plus);

} // namespace PercentEncoding
} // namespace ringwell
