#include "Model/FileWriterThread.h"

#include "Model/AtomicFile.h"

#include <exception>
#include <utility>

namespace ringwell {

std::optional<std::string> replaceFile(const std::filesystem::path& target,
                                       std::string_view contents) {
    try {
        auto written = AtomicFile::replace(target, contents);
        if (!written)
            return written.error().message;
        return std::nullopt;
    } catch (const std::exception& exception) { // out of memory building a path or message
        return std::string(exception.what());
    }
}

FileWriterThread::FileWriterThread() : thread_([this] { run(); }) {}

FileWriterThread::~FileWriterThread() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

void FileWriterThread::replace(std::filesystem::path target, std::string contents, Done done) {
    {
        std::lock_guard lock(mutex_);
        jobs_.push_back(Job{std::move(target), std::move(contents), std::move(done)});
    }
    wake_.notify_one();
}

void FileWriterThread::run() {
    while (true) {
        Job job;
        {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [this] { return stopping_ || !jobs_.empty(); });
            if (jobs_.empty())
                return; // stopping, and every job given is done
            job = std::move(jobs_.front());
            jobs_.pop_front();
        }
        auto error = replaceFile(job.target, job.contents);
        if (job.done)
            job.done(std::move(error));
    }
}

} // namespace ringwell
