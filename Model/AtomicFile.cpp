#include "Model/AtomicFile.h"

#include "Core/Uuid.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ringwell::AtomicFile {
namespace fs = std::filesystem;
namespace {

// Owns a descriptor and closes it at the end of its scope unless closed before.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() {
        if (fd_ >= 0)
            ::close(fd_);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return fd_; }
    // Closes now and returns close's own result, which can carry a deferred
    // write error (no retry on EINTR: on Linux the descriptor is gone anyway).
    int close() {
        const int result = ::close(fd_);
        fd_ = -1;
        return result;
    }

private:
    int fd_;
};

// How one attempt ended: done, failed for good, or failed in a way that a
// whole rewrite from memory may cure (a failed fsync or close).
enum class Outcome { done, fatal, redo };

struct Attempt {
    Outcome outcome;
    std::string message;
};

Attempt failure(Outcome outcome, const std::string& what, const fs::path& path, int error) {
    return {outcome, what + " " + path.string() + ": " + std::strerror(error)};
}

bool writeAll(int fd, std::string_view contents) {
    const char* data = contents.data();
    std::size_t left = contents.size();
    while (left > 0) {
        const ssize_t written = ::write(fd, data, left);
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += written;
        left -= static_cast<std::size_t>(written);
    }
    return true;
}

fs::path directoryOf(const fs::path& target) {
    fs::path directory = target.parent_path();
    return directory.empty() ? fs::path(".") : directory;
}

int sync(const std::function<int(int)>& custom, int fd) {
    if (custom)
        return custom(fd);
    int result;
    do
        result = ::fsync(fd);
    while (result != 0 && errno == EINTR);
    return result;
}

// Creates a fresh temporary file next to the target; a random suffix, and
// O_EXCL so that a clash fails instead of sharing a file.
int createTemporary(const fs::path& directory, const std::string& prefix, fs::path& path) {
    for (int tries = 0;; ++tries) {
        path = directory / (prefix + Uuid::random().toString().substr(0, 8));
        const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd >= 0 || errno != EEXIST || tries == 8)
            return fd;
    }
}

Attempt attempt(const fs::path& target, std::string_view contents, const Options& options) {
    const fs::path directory = directoryOf(target);
    fs::path temporary;
    FileDescriptor file(createTemporary(directory, temporaryPrefix(target), temporary));
    if (file.get() < 0)
        return failure(Outcome::fatal, "cannot create", temporary, errno);

    // From here on the temporary file is removed on every failure.
    auto discard = [&](Attempt result) {
        const int saved = errno;
        ::unlink(temporary.c_str());
        errno = saved;
        return result;
    };
    if (!writeAll(file.get(), contents))
        return discard(failure(Outcome::fatal, "cannot write", temporary, errno));
    if (sync(options.syncFile, file.get()) != 0)
        return discard(failure(Outcome::redo, "cannot flush", temporary, errno));
    if (file.close() != 0)
        return discard(failure(Outcome::redo, "cannot close", temporary, errno));
    if (::rename(temporary.c_str(), target.c_str()) != 0)
        return discard(failure(Outcome::fatal, "cannot rename over", target, errno));

    // The rename is atomic but not durable until the directory is flushed.
    FileDescriptor dir(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (dir.get() < 0)
        return failure(Outcome::fatal, "cannot open", directory, errno);
    if (sync(options.syncDirectory, dir.get()) != 0)
        return failure(Outcome::redo, "cannot flush", directory, errno);
    return {Outcome::done, {}};
}

} // namespace

std::string temporaryPrefix(const fs::path& target) {
    return "." + target.filename().string() + ".tmp-";
}

Result<Written> replace(const fs::path& target, std::string_view contents, const Options& options) {
    const int attempts = options.maxAttempts < 1 ? 1 : options.maxAttempts;
    std::string lastMessage;
    for (int count = 1; count <= attempts; ++count) {
        Attempt result = attempt(target, contents, options);
        if (result.outcome == Outcome::done)
            return Written{count};
        lastMessage = std::move(result.message);
        if (result.outcome == Outcome::fatal)
            break;
    }
    return Error{lastMessage};
}

void removeLeftovers(const fs::path& target) {
    const fs::path directory = directoryOf(target);
    const std::string prefix = temporaryPrefix(target);
    DIR* dir = ::opendir(directory.c_str());
    if (!dir)
        return;
    std::vector<std::string> leftovers;
    while (const dirent* entry = ::readdir(dir)) {
        if (std::strncmp(entry->d_name, prefix.c_str(), prefix.size()) == 0)
            leftovers.emplace_back(entry->d_name);
    }
    for (const auto& name : leftovers)
        ::unlinkat(::dirfd(dir), name.c_str(), 0);
    ::closedir(dir);
}

std::filesystem::path quarantinePath(const std::filesystem::path& file) {
    std::filesystem::path moved = file;
    moved.replace_extension("corrupt.json");
    return moved;
}

std::string quarantine(const std::filesystem::path& file, std::string_view reason) {
    const std::filesystem::path moved = quarantinePath(file);
    ::unlink(moved.c_str());
    const std::string why = file.string() + " could not be read (" + std::string(reason) + ")";
    if (::rename(file.c_str(), moved.c_str()) == 0)
        return why + "; it was moved to " + moved.string();
    return why + " nor moved aside: " + std::strerror(errno);
}

Result<std::optional<std::string>> read(const std::filesystem::path& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        if (errno == ENOENT)
            return std::optional<std::string>();
        return Error{"Cannot read " + path.string() + ": " + std::strerror(errno)};
    }
    std::string contents;
    char buffer[65536];
    while (true) {
        const ssize_t count = ::read(fd, buffer, sizeof buffer);
        if (count == 0)
            break;
        if (count < 0) {
            if (errno == EINTR)
                continue;
            const int error = errno;
            ::close(fd);
            return Error{"Cannot read " + path.string() + ": " + std::strerror(error)};
        }
        contents.append(buffer, static_cast<std::size_t>(count));
    }
    ::close(fd);
    return std::optional<std::string>(std::move(contents));
}

Result<bool> createPrivateDirectories(const std::filesystem::path& directory) {
    std::filesystem::path partial;
    for (const auto& component : directory) {
        partial /= component;
        if (::mkdir(partial.c_str(), 0700) != 0 && errno != EEXIST)
            return Error{"Cannot create " + partial.string() + ": " + std::strerror(errno)};
        struct stat info {};
        if (::stat(partial.c_str(), &info) != 0)
            return Error{"Cannot create " + partial.string() + ": " + std::strerror(errno)};
        if (!S_ISDIR(info.st_mode))
            return Error{"Cannot create " + partial.string() + ": " + std::strerror(ENOTDIR)};
    }
    return true;
}

} // namespace ringwell::AtomicFile
