#pragma once

#include "Core/Result.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

// Crash-safe replacement of a whole file, with POSIX calls only.
//
// `replace` writes the new contents to a temporary file in the target's
// directory (created with O_CREAT|O_EXCL|O_CLOEXEC, mode 0600), writes all of
// it, fsyncs it, closes it, renames it over the target and fsyncs the
// directory. A crash at any moment leaves either the old or the new file under
// the target's name, never a mix; at worst a temporary file is left behind,
// which `removeLeftovers` deletes.
//
// A failed fsync is never retried on the same file: the kernel may already
// have dropped the dirty pages and a second fsync could report success for
// data that never reached the disk. Instead the whole rewrite is done again
// from the bytes in memory, with a new temporary file.
//
// Blocking I/O. The functions keep no state; concurrent writers of one target
// must be kept apart by the caller (the store holds a directory lock).
namespace ringwell::AtomicFile {

struct Options {
    // Whole rewrites attempted before giving up when an fsync fails.
    int maxAttempts = 3;
    // The calls used to flush the temporary file and the directory; tests
    // replace them to simulate failures. They return 0 or -1 with errno set.
    std::function<int(int fd)> syncFile;
    std::function<int(int fd)> syncDirectory;
};

struct Written {
    int attempts = 0; // 1 unless an fsync failed and the rewrite was redone
};

// Replaces `target` by `contents` as described above. Fails with a message
// naming the path and the system error; the old file then stays as it was
// (unless the rename happened and only the directory sync failed every time,
// in which case the new contents are in place but perhaps not yet durable).
Result<Written> replace(const std::filesystem::path& target, std::string_view contents,
                        const Options& options = {});

// Creates `directory` and its missing parents with mode 0700; existing
// directories (or links to them) are left as they are.
Result<bool> createPrivateDirectories(const std::filesystem::path& directory);

// The whole file, none when it does not exist, or why it cannot be read (a
// message naming the path and the system error).
Result<std::optional<std::string>> read(const std::filesystem::path& path);

// "<dir>/<stem>.corrupt.json" for "<dir>/<stem>.json": where a file that
// cannot be read is kept for the user (or support) to recover.
std::filesystem::path quarantinePath(const std::filesystem::path& file);

// Moves the unreadable `file` to its quarantine path, replacing an older one,
// and returns the line to log: "<file> could not be read (<reason>); it was
// moved to <path>", or why it could not be moved.
std::string quarantine(const std::filesystem::path& file, std::string_view reason);

// Deletes temporary files that an interrupted `replace` of `target` left in its
// directory. Only safe while no other `replace` of the same target runs.
void removeLeftovers(const std::filesystem::path& target);

// The prefix of the temporary files of `target`: ".<file name>.tmp-".
std::string temporaryPrefix(const std::filesystem::path& target);

} // namespace ringwell::AtomicFile
