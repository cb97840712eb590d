#pragma once

#include <gtest/gtest.h>

#include <stdlib.h> // NOLINT(modernize-deprecated-headers): POSIX declares mkdtemp here

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace ringwell::testing {

// A fresh directory under the test temporary directory, removed with its
// contents at the end of the scope.
class TemporaryDirectory {
public:
    TemporaryDirectory() {
        std::string pattern = ::testing::TempDir() + "ringwell-XXXXXX";
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

} // namespace ringwell::testing
