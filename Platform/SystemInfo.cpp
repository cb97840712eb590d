#include "Platform/SystemInfo.h"

#include "Core/TextFolding.h"
#include "Core/Whitespace.h"

#include <array>
#include <fstream>
#include <sstream>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/utsname.h>

namespace ringwell::SystemInfo {
namespace {

// A value as the shell would read it: quotes removed, and inside double
// quotes a backslash keeps the next character literally.
std::string unquoted(std::string_view value) {
    if (value.size() >= 2 && value.front() == '\'' && value.back() == '\'')
        return std::string(value.substr(1, value.size() - 2));
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
        std::string out;
        const std::string_view inner = value.substr(1, value.size() - 2);
        for (std::size_t i = 0; i < inner.size(); ++i) {
            if (inner[i] == '\\' && i + 1 < inner.size())
                ++i;
            out += inner[i];
        }
        return out;
    }
    return std::string(value);
}

bool isPlaceholder(std::string_view value) {
    static constexpr std::array placeholders = {
        "to be filled by o.e.m.",
        "system manufacturer",
        "system product name",
        "default string",
        "not specified",
        "not applicable",
        "none",
        "unknown",
        "o.e.m.",
    };
    const std::string lower = text::lowercased(value);
    for (const char* placeholder : placeholders) {
        if (lower == placeholder)
            return true;
    }
    return false;
}

std::optional<std::string> usable(std::optional<std::string_view> value) {
    if (!value)
        return std::nullopt;
    std::string trimmed = text::trimmed(*value);
    if (trimmed.empty() || isPlaceholder(trimmed))
        return std::nullopt;
    return trimmed;
}

std::optional<std::string> readFile(const char* path) {
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return std::nullopt;
    std::ostringstream contents;
    contents << in.rdbuf();
    return contents.str();
}

} // namespace

std::map<std::string, std::string> parseOsRelease(std::string_view contents) {
    std::map<std::string, std::string> values;
    std::size_t start = 0;
    while (start <= contents.size()) {
        std::size_t end = contents.find('\n', start);
        if (end == std::string_view::npos)
            end = contents.size();
        const std::string line = text::trimmed(contents.substr(start, end - start));
        start = end + 1;
        if (line.empty() || line.front() == '#')
            continue;
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos || equals == 0)
            continue;
        values[line.substr(0, equals)] = unquoted(std::string_view(line).substr(equals + 1));
    }
    return values;
}

std::string osVersionFrom(std::string_view osRelease, std::string_view kernelRelease) {
    const auto values = parseOsRelease(osRelease);
    auto nonBlank = [&](const char* key) -> std::optional<std::string> {
        auto found = values.find(key);
        if (found == values.end() || text::isBlank(found->second))
            return std::nullopt;
        return text::trimmed(found->second);
    };
    if (auto pretty = nonBlank("PRETTY_NAME"))
        return *pretty;
    if (auto name = nonBlank("NAME")) {
        if (auto version = nonBlank("VERSION"))
            return *name + " " + *version;
        return *name;
    }
    const std::string release = text::trimmed(kernelRelease);
    return release.empty() ? "Linux" : "Linux " + release;
}

std::string deviceModelFrom(std::optional<std::string_view> vendor,
                            std::optional<std::string_view> product) {
    const auto maker = usable(vendor);
    const auto model = usable(product);
    if (maker && model) {
        if (text::lowercased(*model).rfind(text::lowercased(*maker), 0) == 0)
            return *model;
        return *maker + " " + *model;
    }
    if (model)
        return *model;
    if (maker)
        return *maker;
    return "Unknown";
}

std::string osVersion() {
    auto contents = readFile("/etc/os-release");
    if (!contents)
        contents = readFile("/usr/lib/os-release");
    utsname names{};
    const std::string release = ::uname(&names) == 0 ? names.release : "";
    return osVersionFrom(contents.value_or(""), release);
}

std::string deviceModel() {
    const auto vendor = readFile("/sys/class/dmi/id/sys_vendor");
    const auto product = readFile("/sys/class/dmi/id/product_name");
    return deviceModelFrom(vendor ? std::optional<std::string_view>(*vendor) : std::nullopt,
                           product ? std::optional<std::string_view>(*product) : std::nullopt);
}

std::optional<std::string> lanAddress() {
    ifaddrs* interfaces = nullptr;
    if (::getifaddrs(&interfaces) != 0)
        return std::nullopt;
    std::optional<std::string> found;
    for (ifaddrs* entry = interfaces; entry && !found; entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET ||
            !(entry->ifa_flags & IFF_UP) || (entry->ifa_flags & IFF_LOOPBACK))
            continue;
        char text[INET_ADDRSTRLEN] = {};
        const auto* address = reinterpret_cast<const sockaddr_in*>(entry->ifa_addr);
        if (::inet_ntop(AF_INET, &address->sin_addr, text, sizeof text))
            found = text;
    }
    ::freeifaddrs(interfaces);
    return found;
}

} // namespace ringwell::SystemInfo
