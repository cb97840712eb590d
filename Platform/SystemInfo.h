#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

// The facts about this machine that the diagnostics report shows. The parsing
// functions are pure; `osVersion` and `deviceModel` read the system's files.
namespace ringwell::SystemInfo {

// The assignments of an os-release file: KEY=value lines, values unquoted
// ("..." with backslash escapes, or '...'); comments and malformed lines are
// skipped.
std::map<std::string, std::string> parseOsRelease(std::string_view contents);

// PRETTY_NAME; else NAME followed by VERSION (or NAME alone); else "Linux"
// followed by the kernel release (or "Linux" alone when that is empty).
std::string osVersionFrom(std::string_view osRelease, std::string_view kernelRelease);

// The vendor and product from DMI (/sys/class/dmi/id/sys_vendor and
// product_name), trimmed, with the firmware's placeholder texts ("To Be Filled
// By O.E.M.", "System manufacturer", ...) treated as absent. The product alone
// when it already begins with the vendor's name; "Unknown" when both are absent.
std::string deviceModelFrom(std::optional<std::string_view> vendor,
                            std::optional<std::string_view> product);

// From /etc/os-release (else /usr/lib/os-release) and uname.
std::string osVersion();
// From /sys/class/dmi/id.
std::string deviceModel();

// The IPv4 address of the first interface that is up and not loopback,
// where phones on the same network reach this machine; none without one.
std::optional<std::string> lanAddress();

} // namespace ringwell::SystemInfo
