#pragma once

#include <cassert>
#include <string>
#include <utility>
#include <variant>

namespace ringwell {

// A failure the caller is expected to handle, with a message fit for a person.
struct Error {
    std::string message;
};

// The outcome of an operation that can fail: a value or an Error. The core
// returns these instead of throwing.
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
