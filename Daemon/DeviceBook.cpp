#include "Daemon/DeviceBook.h"

#include "Core/Json.h"
#include "Core/TextFolding.h"
#include "Core/Utf8.h"
#include "Core/Whitespace.h"
#include "Daemon/DeviceToken.h"

#include <algorithm>

namespace ringwell {
namespace {

bool hasControlCharacter(std::string_view text) {
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

} // namespace

Result<LanDevice> DeviceBook::add(const std::string& name, std::string tokenHash, Date now) {
    if (text::isBlank(name))
        return Error{"a device needs a name", Error::Kind::invalidInput};
    if (name.size() > maxNameBytes)
        return Error{"a device name has at most " + std::to_string(maxNameBytes) + " bytes",
                     Error::Kind::invalidInput};
    if (name.find('/') != std::string::npos || hasControlCharacter(name) ||
        !text::isValidUtf8(name))
        return Error{"a device name cannot hold \"/\" or control characters",
                     Error::Kind::invalidInput};
    for (const auto& device : devices_) {
        if (text::equalsIgnoringCase(device.name, name))
            return Error{"a device named \"" + device.name + "\" exists; remove it first",
                         Error::Kind::conflict};
    }
    devices_.push_back({name, std::move(tokenHash), now});
    return devices_.back();
}

Result<LanDevice> DeviceBook::remove(std::string_view name) {
    auto found = std::find_if(devices_.begin(), devices_.end(), [&](const LanDevice& device) {
        return text::equalsIgnoringCase(device.name, name);
    });
    if (found == devices_.end())
        return Error{"no device named \"" + std::string(name) + "\"", Error::Kind::notFound};
    LanDevice removed = *found;
    devices_.erase(found);
    return removed;
}

const LanDevice* DeviceBook::withTokenHash(std::string_view tokenHash) const {
    const LanDevice* match = nullptr;
    for (const auto& device : devices_) {
        if (DeviceToken::sameSecret(device.tokenHash, tokenHash) && !match)
            match = &device;
    }
    return match;
}

json::Json toJson(const DeviceBook& book) {
    json::Json devices = json::Json::array();
    for (const auto& device : book.devices())
        devices.push_back({{"name", device.name},
                           {"tokenHash", device.tokenHash},
                           {"addedAt", json::dateValue(device.addedAt)}});
    return json::Json{{"devices", std::move(devices)}};
}

DeviceBook deviceBookFromJson(const json::Json& value) {
    json::requireObject(value, "devices file");
    std::vector<LanDevice> devices;
    const json::Json* list = json::optionalArray(value, "devices");
    if (!list)
        return DeviceBook();
    for (const auto& entry : *list) {
        json::requireObject(entry, "device");
        devices.push_back({json::requireString(entry, "name"),
                           json::requireString(entry, "tokenHash"),
                           json::requireDate(entry, "addedAt")});
    }
    return DeviceBook(std::move(devices));
}

} // namespace ringwell
