#include "Model/AtomicFile.h"
#include "ModelTestSupport.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace ringwell {
namespace {

namespace fs = std::filesystem;
using testing::readFile;
using testing::TemporaryDirectory;
using testing::writeFile;

// The path a descriptor refers to, to tell which file a sync call flushed.
std::string pathOf(int fd) {
    char target[PATH_MAX];
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    const ssize_t length = ::readlink(link.c_str(), target, sizeof target - 1);
    return length < 0 ? std::string() : std::string(target, static_cast<std::size_t>(length));
}

class AtomicFileTest : public ::testing::Test {
protected:
    fs::path target() const { return root / "ringwell.json"; }

    std::vector<std::string> leftovers() const {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(root.path())) {
            const std::string name = entry.path().filename().string();
            if (name.rfind(AtomicFile::temporaryPrefix(target()), 0) == 0)
                found.push_back(name);
        }
        return found;
    }

    TemporaryDirectory root;
};

TEST_F(AtomicFileTest, CreatesAndReplacesTheWholeFileOwnerOnly) {
    auto first = AtomicFile::replace(target(), "first contents, rather long");
    ASSERT_TRUE(first.ok()) << first.error().message;
    EXPECT_EQ(first.value().attempts, 1);
    EXPECT_EQ(readFile(target()), "first contents, rather long");

    auto second = AtomicFile::replace(target(), "short");
    ASSERT_TRUE(second.ok());
    EXPECT_EQ(readFile(target()), "short");
    struct stat info {};
    ASSERT_EQ(::stat(target().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    EXPECT_TRUE(leftovers().empty());
}

// The temporary file is synced, then the directory. A failed sync of the file
// and then of the directory: each time the whole rewrite starts again with a
// new temporary file, never syncing one twice.
TEST_F(AtomicFileTest, FailedFileOrDirectorySyncRedoesTheWholeRewrite) {
    writeFile(target(), "old");
    std::vector<std::string> synced;
    int fileSyncs = 0, directorySyncs = 0;
    auto failingOnce = [&](const char* kind, int& count) {
        return [&synced, kind, counter = &count](int fd) {
            synced.push_back(kind + pathOf(fd));
            if (++*counter == 1) {
                errno = EIO;
                return -1;
            }
            return ::fsync(fd);
        };
    };
    AtomicFile::Options options;
    options.syncFile = failingOnce("file ", fileSyncs);
    options.syncDirectory = failingOnce("dir ", directorySyncs);
    auto written = AtomicFile::replace(target(), "new", options);
    ASSERT_TRUE(written.ok()) << written.error().message;
    EXPECT_EQ(written.value().attempts, 3);
    ASSERT_EQ(synced.size(), 5u);
    const std::string directory = "dir " + root.path().string();
    for (std::size_t i : {0, 1, 3})
        EXPECT_EQ(synced[i].rfind("file " + (root.path() / ".ringwell.json.tmp-").string(), 0), 0u)
            << synced[i];
    EXPECT_EQ(synced[2], directory);
    EXPECT_EQ(synced[4], directory);
    EXPECT_NE(synced[0], synced[1]);
    EXPECT_NE(synced[1], synced[3]);
    EXPECT_EQ(readFile(target()), "new");
    EXPECT_TRUE(leftovers().empty());
}

TEST_F(AtomicFileTest, PersistentSyncFailureKeepsTheOldFile) {
    writeFile(target(), "old");
    int calls = 0;
    AtomicFile::Options options;
    options.maxAttempts = 3;
    options.syncFile = [&](int) {
        ++calls;
        errno = EIO;
        return -1;
    };
    auto written = AtomicFile::replace(target(), "new", options);
    ASSERT_FALSE(written.ok());
    EXPECT_EQ(calls, 3);
    EXPECT_NE(written.error().message.find("Input/output error"), std::string::npos)
        << written.error().message;
    EXPECT_EQ(readFile(target()), "old");
    EXPECT_TRUE(leftovers().empty());
}

TEST_F(AtomicFileTest, MissingDirectoryFailsAtOnceWithTheReason) {
    int calls = 0;
    AtomicFile::Options options;
    options.syncFile = [&](int fd) {
        ++calls;
        return ::fsync(fd);
    };
    auto written = AtomicFile::replace(root / "missing" / "file.json", "x", options);
    ASSERT_FALSE(written.ok());
    EXPECT_NE(written.error().message.find("No such file or directory"), std::string::npos)
        << written.error().message;
    EXPECT_EQ(calls, 0);
}

TEST_F(AtomicFileTest, RenameOverADirectoryFailsAndCleansUp) {
    fs::create_directories(target() / "inside");
    auto written = AtomicFile::replace(target(), "x");
    ASSERT_FALSE(written.ok());
    EXPECT_NE(written.error().message.find("cannot rename"), std::string::npos);
    EXPECT_TRUE(leftovers().empty());
}

TEST_F(AtomicFileTest, RemoveLeftoversDeletesOnlyThisTargetsTemporaryFiles) {
    writeFile(root / ".ringwell.json.tmp-12345678", "partial");
    writeFile(root / ".ringwell.json.tmp-ABCDEF01", "partial");
    writeFile(root / ".other.json.tmp-12345678", "someone else's");
    writeFile(target(), "real");
    AtomicFile::removeLeftovers(target());
    EXPECT_TRUE(leftovers().empty());
    EXPECT_TRUE(fs::exists(root / ".other.json.tmp-12345678"));
    EXPECT_EQ(readFile(target()), "real");
}

} // namespace
} // namespace ringwell
