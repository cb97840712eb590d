#pragma once

#include <condition_variable>
#include <deque>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace ringwell {

// One thread that replaces files crash-safely (AtomicFile::replace), so that
// the thread that asks is not held up by the write and its fsyncs.
//
// Jobs run one at a time in the order given. Only the job's own bytes and path
// cross to the writer thread; `done` runs there too, with the error message of
// a failed write (none on success), and must hand the result back to the
// asker's thread itself (the store posts it to the daemon's loop).
//
// Threading: `replace` may be called from any thread. The destructor finishes
// every job already given, then joins the thread.
class FileWriterThread {
public:
    using Done = std::function<void(std::optional<std::string> error)>;

    FileWriterThread();
    FileWriterThread(const FileWriterThread&) = delete;
    FileWriterThread& operator=(const FileWriterThread&) = delete;
    ~FileWriterThread();

    void replace(std::filesystem::path target, std::string contents, Done done);

private:
    struct Job {
        std::filesystem::path target;
        std::string contents;
        Done done;
    };
    void run();

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Job> jobs_;  // guarded by mutex_
    bool stopping_ = false; // guarded by mutex_
    std::thread thread_;    // last: starts once the members above exist
};

// Replaces `target` by `contents` with AtomicFile::replace; the error message
// of a failed write, none on success. Never throws.
std::optional<std::string> replaceFile(const std::filesystem::path& target,
                                       std::string_view contents);

} // namespace ringwell
