#pragma once

#include "Core/JsonFwd.h"
#include "Core/Result.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {
// The value types the readers return; their users include their headers.
struct Date;
struct Uuid;
} // namespace ringwell

// JSON forms of the records. Objects keep the order in which keys are written,
// so encoded records show their keys in declaration order.
namespace ringwell::json {

// Compact text; invalid UTF-8 in strings is written as U+FFFD instead of failing.
std::string encode(const Json& value);
// Indented text for people, with the same repair.
std::string encodePretty(const Json& value);

// Parses JSON text; invalid text or invalid UTF-8 gives a message instead of throwing.
Result<Json> parse(std::string_view text);

// Parses and decodes in one step with a decoder that may throw DecodeError.
template <typename Decoder>
auto decode(std::string_view text, Decoder decoder) -> Result<decltype(decoder(Json()))> {
    auto parsed = parse(text);
    if (!parsed)
        return parsed.error();
    try {
        return decoder(parsed.value());
    } catch (const DecodeError& error) {
        return Error{error.what()};
    } catch (const nlohmann::json::exception& error) {
        return Error{error.what()};
    }
}

// Readers for keyed records. A null value reads as an absent key, so optional
// keys may be left out or written as null alike. Each throws DecodeError naming
// the key when the value has the wrong type; `require*` also when the key is
// missing or null.
const Json& requireObject(const Json& value, std::string_view what);
const Json* member(const Json& object, std::string_view key);

std::string requireString(const Json& object, std::string_view key);
std::optional<std::string> optionalString(const Json& object, std::string_view key);
bool requireBool(const Json& object, std::string_view key);
std::optional<bool> optionalBool(const Json& object, std::string_view key);
std::int64_t requireInt(const Json& object, std::string_view key);
std::optional<std::int64_t> optionalInt(const Json& object, std::string_view key);
Date requireDate(const Json& object, std::string_view key);
std::optional<Date> optionalDate(const Json& object, std::string_view key);
Uuid requireUuid(const Json& object, std::string_view key);
std::optional<Uuid> optionalUuid(const Json& object, std::string_view key);
const Json* optionalArray(const Json& object, std::string_view key);
const Json& requireArray(const Json& object, std::string_view key);
std::vector<std::string> stringList(const Json& array, std::string_view key);

// Scalar readers for array elements and whole values.
std::string asString(const Json& value, std::string_view what);
Uuid asUuid(const Json& value, std::string_view what);
Date asDate(const Json& value, std::string_view what);

// A date's JSON form: seconds since the reference date.
Json dateValue(Date date);

} // namespace ringwell::json
