#include "Platform/SettingsFile.h"

#include "Core/Json.h"
#include "PlatformTestSupport.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <functional>
#include <vector>

namespace ringwell {
namespace {

using namespace platformtest;
namespace fs = std::filesystem;

class SettingsFileTest : public ::testing::Test {
protected:
    fs::path file() const { return directory / "config" / "ringwell" / "settings.json"; }
    mode_t modeOf(const fs::path& path) const {
        struct stat info {};
        EXPECT_EQ(::stat(path.c_str(), &info), 0) << path;
        return info.st_mode & 0777;
    }
    ino_t inodeOf(const fs::path& path) const {
        struct stat info {};
        return ::stat(path.c_str(), &info) == 0 ? info.st_ino : 0;
    }

    TemporaryDirectory directory;
    RecordingLogger logger;
};

TEST_F(SettingsFileTest, ValuesSurviveARestartInAPrivateFile) {
    {
        SettingsFile settings(file(), logger);
        EXPECT_EQ(settings.value(DefaultsKey::hasCompletedOnboarding), std::nullopt);
        settings.set(DefaultsKey::hasCompletedOnboarding, true);
        settings.set(DefaultsKey::lastSendToRingwell, 760000000.5);
        settings.set(DefaultsKey::lastSetupTestResult, "Passed · 2025-01-02T03:04:05Z");
    }
    SettingsFile reopened(file(), logger);
    EXPECT_EQ(reopened.value(DefaultsKey::hasCompletedOnboarding), json::Json(true));
    EXPECT_EQ(reopened.value(DefaultsKey::lastSendToRingwell), json::Json(760000000.5));
    EXPECT_EQ(reopened.value(DefaultsKey::lastSetupTestResult),
              json::Json("Passed · 2025-01-02T03:04:05Z"));
    EXPECT_EQ(modeOf(file()), 0600u);
    EXPECT_EQ(modeOf(file().parent_path()), 0700u);
    EXPECT_TRUE(logger.lines().empty());
}

TEST_F(SettingsFileTest, SettingTheValueAKeyHasWritesNothing) {
    SettingsFile settings(file(), logger);
    settings.set(DefaultsKey::hasCompletedOnboarding, true);
    const ino_t before = inodeOf(file());

    settings.set(DefaultsKey::hasCompletedOnboarding, true);
    EXPECT_EQ(inodeOf(file()), before);
    settings.set(DefaultsKey::hasCompletedOnboarding, false);
    EXPECT_NE(inodeOf(file()), before); // every real change is a whole new file
}

TEST_F(SettingsFileTest, WrittenBehindKeysShareOneLaterWriteThatTheEndCompletes) {
    std::vector<std::function<void()>> scheduled;
    {
        SettingsFile settings(file(), logger);
        settings.writeBehind({std::string(DefaultsKey::lastSendToRingwell)},
                             [&](std::function<void()> write) { scheduled.push_back(write); });
        settings.set(DefaultsKey::lastSendToRingwell, 1.0);
        settings.set(DefaultsKey::lastSendToRingwell, 2.0);
        EXPECT_FALSE(fs::exists(file())); // nothing on disk while the Send waits
        ASSERT_EQ(scheduled.size(), 1u);
        scheduled[0]();
        EXPECT_EQ(SettingsFile(file(), logger).value(DefaultsKey::lastSendToRingwell),
                  json::Json(2.0));

        // Another key writes at once and takes the pending value with it.
        settings.set(DefaultsKey::lastSendToRingwell, 3.0);
        settings.set(DefaultsKey::hasCompletedOnboarding, true);
        EXPECT_EQ(SettingsFile(file(), logger).value(DefaultsKey::lastSendToRingwell),
                  json::Json(3.0));
        settings.set(DefaultsKey::lastSendToRingwell, 4.0);
    }
    EXPECT_EQ(SettingsFile(file(), logger).value(DefaultsKey::lastSendToRingwell), json::Json(4.0));
    scheduled.back()(); // a write that runs after the end does nothing
    EXPECT_TRUE(logger.lines().empty());
}

TEST_F(SettingsFileTest, AnUnreadableFileIsMovedAsideAndTheSettingsStartEmpty) {
    for (const std::string contents :
         {"{\"hasCompletedOnboarding\": tr", "[true]", "{\"hasCompletedOnboarding\": 1e999}"}) {
        SCOPED_TRACE(contents);
        fs::create_directories(file().parent_path());
        writeFile(file(), contents);

        SettingsFile settings(file(), logger);
        EXPECT_EQ(settings.value(DefaultsKey::hasCompletedOnboarding), std::nullopt);
        EXPECT_EQ(readFile(file().parent_path() / "settings.corrupt.json"), contents);
        EXPECT_FALSE(fs::exists(file()));
    }
    EXPECT_EQ(logger.count("settings.corrupt.json"), 3);
}

TEST_F(SettingsFileTest, AFailedWriteIsLoggedAndTheValueKept) {
    // A plain file where the directory should be makes every write fail.
    writeFile(directory / "config", "in the way");
    SettingsFile settings(file(), logger);

    settings.set(DefaultsKey::hasCompletedOnboarding, true);
    EXPECT_EQ(settings.value(DefaultsKey::hasCompletedOnboarding), json::Json(true));
    EXPECT_EQ(logger.count("Saving the settings failed"), 1);
}

} // namespace
} // namespace ringwell
