#pragma once

#include <nlohmann/json_fwd.hpp>

#include <stdexcept>

// The names a header needs to declare a JSON form without the cost of
// nlohmann's whole header: only sources that build or read JSON include
// "Core/Json.h".
namespace ringwell::json {

using Json = nlohmann::ordered_json;

// Thrown by the decoders in this project when a JSON value does not have the
// required form. Callers at the edges (store, command line, API) catch it and
// report the message; `decode` in "Core/Json.h" turns it into a Result.
struct DecodeError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace ringwell::json
