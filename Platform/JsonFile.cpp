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

Result<std::optional<std::string>> readText(const fs::path& file) {
    return AtomicFile::read(file);
}

void quarantine(const fs::path& file, const std::string& reason, const ErrorLog& log) {
    const std::string message = AtomicFile::quarantine(file, reason);
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
