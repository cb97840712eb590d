#include "Platform/DesktopOpener.h"

#include "PlatformTestSupport.h"
#include "TestSupport/Process.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace ringwell {
namespace {

using namespace platformtest;

// A stand-in for xdg-open that writes the address it was given to a file.
class DesktopOpenerTest : public ::testing::Test {
protected:
    DesktopOpenerTest() {
        writeFile(opener(),
                  "#!/bin/sh\nprintf '%s' \"$1\" > \"$0.opened.tmp\" && mv \"$0.opened.tmp\" "
                  "\"$0.opened\"\n");
        ::chmod(opener().c_str(), 0700);
    }
    std::filesystem::path opener() const { return directory / "open-browser"; }
    std::string opened() {
        const auto file = opener().string() + ".opened";
        if (!testing::eventually([&] { return std::filesystem::exists(file); }))
            return "(nothing opened)";
        auto text = readFile(file);
        std::filesystem::remove(file);
        return text;
    }

    TemporaryDirectory directory;
    FakeNoticeCenter notices;
    RecordingLogger logger;
};

TEST_F(DesktopOpenerTest, AClickOnANoticeOpensTheWebAppOnItsAlarm) {
    const std::string web = "http://127.0.0.1:7383/?token=abc";
    DesktopOpener desktop(notices, logger, web, opener().string());
    const auto alarm = Uuid::random();

    notices.answer({"alarm-" + alarm.toString(), NoticeResponse::Kind::action, "default"});
    EXPECT_EQ(opened(), web + "#alarm-" + alarm.toString());
    notices.answer({"ring-failed", NoticeResponse::Kind::action, "default"});
    EXPECT_EQ(opened(), web);
}

TEST_F(DesktopOpenerTest, WithoutTheWebAppOrAnOpenerAClickIsLogged) {
    {
        DesktopOpener desktop(notices, logger, "", opener().string());
        notices.answer({"ring-failed", NoticeResponse::Kind::action, "default"});
    }
    DesktopOpener missing(notices, logger, "http://127.0.0.1:1/", "/nonexistent/xdg-open");
    notices.answer({"ring-failed", NoticeResponse::Kind::action, "default"});
    EXPECT_EQ(logger.count("the web app is off"), 1);
    EXPECT_EQ(logger.count("Cannot run /nonexistent/xdg-open"), 1);
}

} // namespace
} // namespace ringwell
