#include "Model/DirectoryLock.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace ringwell {

Result<DirectoryLock> DirectoryLock::acquire(const std::filesystem::path& directory) {
    const std::filesystem::path path = directory / fileName;
    const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0)
        return Error{"Cannot open the lock file " + path.string() + ": " + std::strerror(errno)};
    int result;
    do
        result = ::flock(fd, LOCK_EX | LOCK_NB);
    while (result != 0 && errno == EINTR);
    if (result != 0) {
        const int error = errno;
        ::close(fd);
        if (error == EWOULDBLOCK)
            return Error{"Another Ringwell process is using " + directory.string()};
        return Error{"Cannot lock " + path.string() + ": " + std::strerror(error)};
    }
    return DirectoryLock(fd, directory);
}

DirectoryLock::DirectoryLock(int fd, std::filesystem::path directory)
    : fd_(fd), directory_(std::move(directory)) {}

DirectoryLock::DirectoryLock(DirectoryLock&& other) noexcept
    : fd_(std::exchange(other.fd_, -1)), directory_(std::move(other.directory_)) {}

DirectoryLock& DirectoryLock::operator=(DirectoryLock&& other) noexcept {
    if (this != &other) {
        if (fd_ >= 0)
            ::close(fd_);
        fd_ = std::exchange(other.fd_, -1);
        directory_ = std::move(other.directory_);
    }
    return *this;
}

// Closing the last descriptor of the open file description releases the lock.
DirectoryLock::~DirectoryLock() {
    if (fd_ >= 0)
        ::close(fd_);
}

} // namespace ringwell
