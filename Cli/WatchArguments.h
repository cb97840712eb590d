#pragma once

#include "Core/JsonFwd.h"
#include "Core/Result.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ringwell::cli {

// "90m", "3h", "1d" (or "45s") in seconds; invalid input otherwise.
Result<std::int64_t> parseDuration(std::string_view text);

// The body of POST /v1/watches from `watch add`'s words: the interval, and
// the weekdays ("mon,tue,...", names of three letters or more, any case) and
// hours ("HH:MM") when given. Weekdays without hours watch those whole days;
// hours without weekdays watch every day. `--from` and `--to` go together.
Result<json::Json> watchBody(const std::string& app, std::string_view every,
                             std::optional<std::string> weekdays, std::optional<std::string> from,
                             std::optional<std::string> to, std::optional<std::string> ring);

} // namespace ringwell::cli
