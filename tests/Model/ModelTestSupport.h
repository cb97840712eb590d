#pragma once

#include "Core/Date.h"
#include "Model/Clock.h"
#include "Model/FireEvent.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include <stdlib.h>
#include <sys/stat.h>

namespace ringwell::testing {

// A clock that stands still until a test moves it.
class FakeClock final : public Clock {
public:
    explicit FakeClock(Date start = Date{760000000}) : now_(start) {}
    Date now() const override { return now_; }
    void advance(double seconds) { now_ = now_.addingSeconds(seconds); }
    void set(Date date) { now_ = date; }

private:
    Date now_;
};

// A fresh directory under the test temporary directory, removed with its
// contents at the end of the scope.
class TemporaryDirectory {
public:
    TemporaryDirectory() {
        std::string pattern = ::testing::TempDir() + "ringwell-model-XXXXXX";
        if (!::mkdtemp(pattern.data()))
            throw std::runtime_error("mkdtemp failed for " + pattern);
        path_ = pattern;
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

inline std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream contents;
    contents << in.rdbuf();
    return contents.str();
}

inline void writeFile(const std::filesystem::path& path, const std::string& contents) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << contents;
}

inline ino_t inodeOf(const std::filesystem::path& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0)
        return 0;
    return info.st_ino;
}

// A forwarded notification's event with the given outcome.
inline FireEvent makeEvent(FireOutcome outcome, std::optional<std::string> app,
                           std::optional<std::string> sender, Date at,
                           std::optional<std::string> title = std::string("Hello")) {
    FireEvent event;
    event.id = Uuid::random();
    event.app = std::move(app);
    event.sender = std::move(sender);
    event.title = std::move(title);
    event.receivedAt = at;
    event.firedAt = at;
    event.outcome = outcome;
    return event;
}

} // namespace ringwell::testing
