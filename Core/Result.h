#pragma once

#include <cassert>
#include <string>
#include <utility>
#include <variant>

namespace ringwell {

// Ringwell's error policy is written down in docs/errors.md. In short: the
// core and the model return Result (and std::optional for "nothing there")
// and never throw; decoders and the alarm service throw, and their callers
// catch at the I/O edge named there; the API turns an Error's kind into an
// HTTP status and the command line turns the status into its exit code.

// A failure the caller is expected to handle, with a message fit for a person.
struct Error {
    // What went wrong, in the terms every layer above maps from (see
    // docs/errors.md): the API answers 400, 403, 404, 409 and 500 for them.
    enum class Kind { invalidInput, notAllowed, notFound, conflict, failed };

    std::string message;
    Kind kind = Kind::failed;
};

// The outcome of an operation that can fail: a value or an Error.
template <typename T> class [[nodiscard]] Result {
public:
    Result(T value) : state_(std::move(value)) {}
    Result(Error error) : state_(std::move(error)) {}

    bool ok() const { return std::holds_alternative<T>(state_); }
    explicit operator bool() const { return ok(); }

    const T& value() const& {
        assert(ok());
        return std::get<T>(state_);
    }
    T& value() & {
        assert(ok());
        return std::get<T>(state_);
    }
    T&& value() && {
        assert(ok());
        return std::get<T>(std::move(state_));
    }
    const Error& error() const {
        assert(!ok());
        return std::get<Error>(state_);
    }

private:
    std::variant<T, Error> state_;
};

} // namespace ringwell
