#pragma once

#include "Alarms/UserDefaults.h"
#include "Core/Json.h"

#include <map>
#include <string>

namespace ringwell::testing {

// Settings kept in a map; `writes` counts every set.
class MemoryUserDefaults final : public UserDefaults {
public:
    std::map<std::string, json::Json, std::less<>> values;
    int writes = 0;

    std::optional<json::Json> value(std::string_view key) const override {
        auto found = values.find(key);
        if (found == values.end())
            return std::nullopt;
        return found->second;
    }

    void set(std::string_view key, json::Json value) override {
        ++writes;
        values[std::string(key)] = std::move(value);
    }
};

} // namespace ringwell::testing
