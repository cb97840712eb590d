#include "Platform/InstalledData.h"

#include "PlatformTestSupport.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using namespace platformtest;
namespace fs = std::filesystem;

// The daemon and the command line find their tones and web app in the tree
// they were started from: the build tree, an install prefix or a DESTDIR copy.
TEST(InstalledDataTest, TheDataDirectoryIsFoundRelativeToTheProgram) {
    TemporaryDirectory root;
    const fs::path fallback = "/compiled/in";
    fs::create_directories(root / "build" / "bin");
    fs::create_directories(root / "build" / "share" / "ringwell");
    fs::create_directories(root / "usr" / "libexec" / "ringwell");
    fs::create_directories(root / "usr" / "share" / "ringwell");

    EXPECT_EQ(InstalledData::directoryFor(root / "build" / "bin" / "ringwell-daemon", fallback),
              root / "build" / "share" / "ringwell");
    EXPECT_EQ(InstalledData::directoryFor(root / "usr" / "libexec" / "ringwell" / "ringwell-daemon",
                                          fallback),
              root / "usr" / "share" / "ringwell");
    EXPECT_EQ(InstalledData::directoryFor(root / "elsewhere" / "ringwell-daemon", fallback),
              fallback);
}

} // namespace
} // namespace ringwell
