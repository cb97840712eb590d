#include "Platform/JsonFile.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ringwell::JsonFile {
namespace fs = std::filesystem;

Result<bool> createPrivateDirectories(const fs::path& directory) {
    return AtomicFile::createPrivateDirectories(directory);
}

fs::path quarantinePath(const fs::path& file) {
    fs::path moved = file;
    moved.replace_extension("corrupt.json");
    return moved;
}

Result<std::optional<std::string>> readText(const fs::path& file) {
    return AtomicFile::read(file);
}

void quarantine(const fs::path& file, const std::string& reason, const ErrorLog& log) {
    const fs::path moved = quarantinePath(file);
    ::unlink(moved.c_str());
    std::string message;
    if (::rename(file.c_str(), moved.c_str()) == 0) {
        message = file.string() + " could not be read (" + reason + "); it was moved to " +
                  moved.string();
    } else {
        message = file.string() + " could not be read (" + reason +
                  ") nor moved aside: " + std::strerror(errno);
    }
    if (log)
        log(message);
}

Result<AtomicFile::Written> write(const fs::path& file, const json::Json& value) {
    const fs::path directory = file.parent_path();
    if (!directory.empty()) {
        auto created = createPrivateDirectories(directory);
        if (!created)
            return created.error();
    }
    return AtomicFile::replace(file, json::encode(value));
}

} // namespace ringwell::JsonFile
