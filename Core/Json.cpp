#include "Core/Json.h"

#include "Core/Date.h"
#include "Core/Uuid.h"

#include <cmath>

namespace ringwell::json {
namespace {

[[noreturn]] void fail(std::string_view key, std::string_view expected) {
    throw DecodeError("\"" + std::string(key) + "\": expected " + std::string(expected));
}

} // namespace

std::string encode(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string encodePretty(const Json& value) {
    return value.dump(2, ' ', false, Json::error_handler_t::replace);
}

Result<Json> parse(std::string_view text) {
    try {
        return Json::parse(text.begin(), text.end());
    } catch (const nlohmann::json::parse_error& error) {
        return Error{std::string("invalid JSON: ") + error.what()};
    } catch (const nlohmann::json::exception& error) {
        // A number beyond a double's range ("1e999") is out_of_range, not a parse error.
        return Error{std::string("invalid JSON: ") + error.what()};
    }
}

const Json& requireObject(const Json& value, std::string_view what) {
    if (!value.is_object())
        fail(what, "an object");
    return value;
}

const Json* member(const Json& object, std::string_view key) {
    auto found = object.find(std::string(key));
    return found == object.end() || found->is_null() ? nullptr : &*found;
}

std::string asString(const Json& value, std::string_view what) {
    if (!value.is_string())
        fail(what, "a string");
    return value.get<std::string>();
}

Uuid asUuid(const Json& value, std::string_view what) {
    auto uuid = Uuid::parse(asString(value, what));
    if (!uuid)
        fail(what, "a UUID");
    return *uuid;
}

Json dateValue(Date date) {
    return date.secondsSinceReferenceDate;
}

Date asDate(const Json& value, std::string_view what) {
    if (!value.is_number() || !std::isfinite(value.get<double>()))
        fail(what, "a date (seconds since 2001-01-01)");
    return Date{value.get<double>()};
}

std::string requireString(const Json& object, std::string_view key) {
    const Json* value = member(object, key);
    if (!value)
        fail(key, "a string, but the key is missing or null");
    return asString(*value, key);
}

std::optional<std::string> optionalString(const Json& object, std::string_view key) {
    const Json* value = member(object, key);
    if (!value)
        return std::nullopt;
    return asString(*value, key);
}

bool requireBool(const Json& object, std::string_view key) {
    auto value = optionalBool(object, key);
    if (!value)
        fail(key, "true or false, but the key is missing or null");
    return *value;
}

std::optional<bool> optionalBool(const Json& object, std::string_view key) {
    const Json* value = member(object, key);
    if (!value)
        return std::nullopt;
    if (!value->is_boolean())
        fail(key, "true or false");
    return value->get<bool>();
}

std::int64_t requireInt(const Json& object, std::string_view key) {
    auto value = optionalInt(object, key);
    if (!value)
        fail(key, "an integer, but the key is missing or null");
    return *value;
}

std::optional<std::int64_t> optionalInt(const Json& object, std::string_view key) {
    const Json* value = member(object, key);
    if (!value)
        return std::nullopt;
    if (value->is_number_unsigned() && value->get<std::uint64_t>() > INT64_MAX)
        fail(key, "an integer within 64 bits");
    if (!value->is_number_integer())
        fail(key, "an integer");
    return value->get<std::int64_t>();
}

Date requireDate(const Json& object, std::string_view key) {
    const Json* value = member(object, key);
    if (!value)
        fail(key, "a date, but the key is missing or null");
    return asDate(*value, key);
}

std::optional<Date> optionalDate(const Json& object, std::string_view key) {
    const Json* value = member(object, key);
    if (!value)
        return std::nullopt;
    return asDate(*value, key);
}

Uuid requireUuid(const Json& object, std::string_view key) {
    const Json* value = member(object, key);
    if (!value)
        fail(key, "a UUID, but the key is missing or null");
    return asUuid(*value, key);
}

std::optional<Uuid> optionalUuid(const Json& object, std::string_view key) {
    const Json* value = member(object, key);
    if (!value)
        return std::nullopt;
    return asUuid(*value, key);
}

const Json* optionalArray(const Json& object, std::string_view key) {
    const Json* value = member(object, key);
    if (value && !value->is_array())
        fail(key, "an array");
    return value;
}

const Json& requireArray(const Json& object, std::string_view key) {
    const Json* value = optionalArray(object, key);
    if (!value)
        fail(key, "an array, but the key is missing or null");
    return *value;
}

std::vector<std::string> stringList(const Json& array, std::string_view key) {
    std::vector<std::string> out;
    out.reserve(array.size());
    for (const Json& element : array)
        out.push_back(asString(element, key));
    return out;
}

} // namespace ringwell::json
