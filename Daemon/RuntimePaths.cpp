#include "Daemon/RuntimePaths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

namespace ringwell {
namespace {

std::optional<std::filesystem::path> absoluteEnvironment(const char* name) {
    const char* value = std::getenv(name);
    if (!value || value[0] != '/')
        return std::nullopt;
    return std::filesystem::path(value);
}

} // namespace

std::filesystem::path runtimeDirectory() {
    if (auto base = absoluteEnvironment("XDG_RUNTIME_DIR"))
        return *base / "ringwell";
    return std::filesystem::path("/tmp") / ("ringwell-" + std::to_string(::getuid()));
}

std::filesystem::path socketPath() {
    return runtimeDirectory() / "ringwell.sock";
}

Result<std::filesystem::path> makePrivateDirectory(const std::filesystem::path& directory) {
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error)
        return Error{"cannot create " + directory.string() + ": " + error.message()};
    struct stat info {};
    if (::stat(directory.c_str(), &info) != 0)
        return Error{"cannot read " + directory.string() + ": " + std::strerror(errno)};
    if (info.st_uid != ::getuid())
        return Error{directory.string() + " belongs to another user"};
    if ((info.st_mode & 0777) != 0700 && ::chmod(directory.c_str(), 0700) != 0)
        return Error{"cannot make " + directory.string() + " private: " + std::strerror(errno)};
    return directory;
}

} // namespace ringwell
