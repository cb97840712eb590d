#include "Platform/SystemTimeZone.h"

#include <cstdlib>
#include <fstream>
#include <string_view>
#include <system_error>

namespace ringwell::SystemTimeZone {
namespace {

// "Europe/Berlin" for ".../zoneinfo/Europe/Berlin" (also under the "posix/"
// and "right/" variants of the zone directory); none for a file elsewhere.
std::optional<std::string> zoneOfFile(const std::filesystem::path& file) {
    std::error_code error;
    const std::string target = std::filesystem::canonical(file, error).string();
    if (error)
        return std::nullopt;
    constexpr std::string_view marker = "/zoneinfo/";
    const auto at = target.rfind(marker);
    if (at == std::string::npos)
        return std::nullopt;
    std::string id = target.substr(at + marker.size());
    for (std::string_view variant : {"posix/", "right/"}) {
        if (id.starts_with(variant))
            id.erase(0, variant.size());
    }
    if (id.empty())
        return std::nullopt;
    return id;
}

std::optional<std::string> firstLine(const std::filesystem::path& file) {
    std::ifstream in(file);
    std::string line;
    if (!std::getline(in, line))
        return std::nullopt;
    while (!line.empty() && (line.back() == ' ' || line.back() == '\r' || line.back() == '\t'))
        line.pop_back();
    if (line.empty())
        return std::nullopt;
    return line;
}

} // namespace

std::optional<std::string> zoneId(const Sources& sources) {
    if (sources.tz) {
        std::string_view tz = sources.tz;
        if (tz.starts_with(':'))
            tz.remove_prefix(1);
        if (tz.empty())
            return "UTC"; // what the C library makes of an empty TZ
        if (tz.starts_with('/'))
            return zoneOfFile(std::filesystem::path(tz));
        return std::string(tz);
    }
    if (auto linked = zoneOfFile(sources.localtime))
        return linked;
    return firstLine(sources.timezoneFile);
}

Calendar currentCalendar() {
    Sources sources;
    sources.tz = std::getenv("TZ");
    if (auto id = zoneId(sources)) {
        if (auto calendar = Calendar::inTimeZone(*id))
            return *calendar;
    }
    return Calendar::userDefault();
}

} // namespace ringwell::SystemTimeZone
