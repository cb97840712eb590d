#pragma once

#include "Core/Result.h"

#include <filesystem>

namespace ringwell {

// An exclusive advisory lock (flock) on a lock file in a directory, held for
// the lifetime of the object, so that one process at a time owns the files in
// that directory. The kernel drops the lock when the holder exits, however it
// exits, so a crashed daemon never leaves a stale lock behind.
//
// The lock belongs to the open file description: a second lock on the same
// directory fails even within one process, and a child made with fork shares
// the parent's lock (the descriptor is close-on-exec, so programs the child
// executes do not). The lock file itself stays in place when released.
class DirectoryLock {
public:
    static constexpr const char* fileName = "ringwell.lock";

    // Takes the lock without waiting. Fails with "Another Ringwell process is
    // using <directory>" when someone else holds it, or with the system error
    // when the lock file cannot be opened.
    static Result<DirectoryLock> acquire(const std::filesystem::path& directory);

    DirectoryLock(DirectoryLock&& other) noexcept;
    DirectoryLock& operator=(DirectoryLock&& other) noexcept;
    DirectoryLock(const DirectoryLock&) = delete;
    DirectoryLock& operator=(const DirectoryLock&) = delete;
    ~DirectoryLock();

    const std::filesystem::path& directory() const { return directory_; }

private:
    DirectoryLock(int fd, std::filesystem::path directory);
    int fd_ = -1;
    std::filesystem::path directory_;
};

} // namespace ringwell
