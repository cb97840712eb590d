#pragma once

#include <cstdlib>
#include <optional>
#include <string>

#include <stdlib.h> // NOLINT(modernize-deprecated-headers): POSIX declares setenv here

namespace ringwell::testing {

// Sets (or, with none, unsets) an environment variable for a scope.
class EnvironmentGuard {
public:
    EnvironmentGuard(const char* name, std::optional<std::string> value) : name_(name) {
        if (const char* old = std::getenv(name))
            previous_ = old;
        if (value)
            ::setenv(name, value->c_str(), 1);
        else
            ::unsetenv(name);
    }
    ~EnvironmentGuard() {
        if (previous_)
            ::setenv(name_.c_str(), previous_->c_str(), 1);
        else
            ::unsetenv(name_.c_str());
    }
    EnvironmentGuard(const EnvironmentGuard&) = delete;
    EnvironmentGuard& operator=(const EnvironmentGuard&) = delete;

private:
    std::string name_;
    std::optional<std::string> previous_;
};

} // namespace ringwell::testing
