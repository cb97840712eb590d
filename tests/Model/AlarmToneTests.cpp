#include "Model/AlarmTone.h"
#include "ModelTestSupport.h"

#include <gtest/gtest.h>

#include <vector>

namespace ringwell {
namespace {

namespace fs = std::filesystem;
using testing::readFile;
using testing::TemporaryDirectory;
using testing::writeFile;

// The bundled tone files of a fake build: one file per tone, with distinct bytes.
class ToneInstallTest : public ::testing::Test {
protected:
    void SetUp() override {
        fs::create_directories(source());
        for (auto tone : AlarmTones::allCases) {
            if (auto name = AlarmTones::fileName(tone))
                writeFile(source() / (*name + ".caf"), "caf:" + *name + std::string(5000, 'x'));
        }
    }

    fs::path source() const { return root / "share" / "Sounds"; }
    fs::path sounds() const { return root / "home" / ".local" / "share" / "sounds"; }

    void install() {
        AlarmTones::install(source(), sounds(),
                            [this](const std::string& message) { messages.push_back(message); });
    }

    TemporaryDirectory root;
    std::vector<std::string> messages;
};

TEST_F(ToneInstallTest, CopiesEveryToneThereIsAndCreatesTheDirectory) {
    fs::remove(source() / "ringwell-beacon.caf");
    install();
    EXPECT_TRUE(messages.empty());
    std::size_t installed = 0;
    for (const auto& entry : fs::directory_iterator(sounds())) {
        ++installed;
        EXPECT_EQ(readFile(entry.path()), readFile(source() / entry.path().filename()));
    }
    EXPECT_EQ(installed, 7u); // eight bundled tones, one missing; the system tone has no file
}

// Unchanged copies are left alone; a changed source or an edited copy is replaced.
TEST_F(ToneInstallTest, SecondInstallReplacesOnlyWhatDiffers) {
    install();
    const fs::path chime = sounds() / "ringwell-chime.caf";
    const auto inode = testing::inodeOf(chime);
    fs::last_write_time(chime, fs::file_time_type{}); // a rewrite would change the time
    writeFile(source() / "ringwell-sonar.caf", "a newer sonar");
    writeFile(sounds() / "ringwell-pulse.caf", "edited by hand");
    install();
    EXPECT_TRUE(messages.empty());
    EXPECT_EQ(testing::inodeOf(chime), inode);
    EXPECT_EQ(fs::last_write_time(chime), fs::file_time_type{});
    EXPECT_EQ(readFile(sounds() / "ringwell-sonar.caf"), "a newer sonar");
    EXPECT_EQ(readFile(sounds() / "ringwell-pulse.caf"), readFile(source() / "ringwell-pulse.caf"));
}

TEST_F(ToneInstallTest, FailedCopyStopsTheLoopAndLogs) {
    // A non-empty directory where the third tone (chime) goes cannot be removed
    // or overwritten; the tones after it are not copied.
    fs::create_directories(sounds() / "ringwell-chime.caf" / "inside");
    install();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].rfind("Installing alarm tones failed: ", 0), 0u) << messages[0];
    EXPECT_NE(messages[0].find("ringwell-chime.caf"), std::string::npos);
    EXPECT_TRUE(fs::exists(sounds() / "ringwell-klaxon.caf"));
    EXPECT_FALSE(fs::exists(sounds() / "ringwell-pulse.caf"));

    fs::remove_all(sounds());
    writeFile(sounds(), "a file, not a directory");
    messages.clear();
    install();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].rfind("Installing alarm tones failed: ", 0), 0u) << messages[0];
}

} // namespace
} // namespace ringwell
