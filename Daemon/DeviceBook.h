#pragma once

#include "Core/Date.h"
#include "Core/JsonFwd.h"
#include "Core/Result.h"

#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// One device allowed to send over the LAN: its name as the person typed it,
// the SHA-256 of its token (the token itself is never kept) and when it was
// added.
struct LanDevice {
    std::string name;
    std::string tokenHash;
    Date addedAt;

    bool operator==(const LanDevice&) const = default;
};

// The devices allowed to send over the LAN, in the order they were added.
// Names are unique ignoring case. Pure; main thread only in the daemon.
class DeviceBook {
public:
    static constexpr std::size_t maxNameBytes = 64;

    DeviceBook() = default;
    explicit DeviceBook(std::vector<LanDevice> devices) : devices_(std::move(devices)) {}

    const std::vector<LanDevice>& devices() const { return devices_; }
    bool empty() const { return devices_.empty(); }

    // Adds a device. Invalid input for a blank name, one longer than
    // maxNameBytes or one with a "/" or a control character; a conflict when
    // a device of that name exists.
    Result<LanDevice> add(const std::string& name, std::string tokenHash, Date now);
    // Removes the device of that name (ignoring case); not found otherwise.
    Result<LanDevice> remove(std::string_view name);
    // The device whose token has this hash, or none. Every stored hash is
    // compared in full, so the time taken tells nothing about the tokens.
    const LanDevice* withTokenHash(std::string_view tokenHash) const;

private:
    std::vector<LanDevice> devices_;
};

// {"devices": [{"name", "tokenHash", "addedAt"}]}
json::Json toJson(const DeviceBook& book);
// Throws json::DecodeError for a missing or mistyped key.
DeviceBook deviceBookFromJson(const json::Json& value);

} // namespace ringwell
