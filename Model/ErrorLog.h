#pragma once

#include <functional>
#include <string>

namespace ringwell {

// Where the model layer reports the errors that it deliberately does not let
// escape (a failed save, a failed tone installation, a quarantined file). The
// daemon routes it to the journal under the caller's category; an empty
// function drops the messages. Called on the thread that caused the error.
using ErrorLog = std::function<void(const std::string& message)>;

} // namespace ringwell
