#include "Platform/JournalLogger.h"

#include "PlatformTestSupport.h"

#include <gtest/gtest.h>

#include <sstream>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace ringwell {
namespace {

using namespace platformtest;

// A logger without a journal, writing its lines into a file of the test.
class JournalLoggerTest : public ::testing::Test {
protected:
    JournalLoggerTest()
        : fd_(::open((directory / "log").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC,
                     0600)) {}
    ~JournalLoggerTest() override { ::close(fd_); }

    std::string written() const { return readFile(directory / "log"); }

    TemporaryDirectory directory;
    int fd_;
};

TEST_F(JournalLoggerTest, WithoutAJournalLinesGoToTheFallbackWithCategoryAndLevel) {
    JournalLogger logger(directory / "no-journal-socket", fd_);
    EXPECT_FALSE(logger.usesJournal());

    logger.log(LogLevel::notice, "SendToRingwell", "Send from Messages");
    logger.log(LogLevel::error, "AlarmTone", "Installing alarm tones failed: 100% gone");
    logger.log(LogLevel::info, "Notices", "two\nlines");
    logger.log(LogLevel::debug, "AlarmService", "");

    EXPECT_EQ(written(), "ringwell[SendToRingwell] notice: Send from Messages\n"
                         "ringwell[AlarmTone] error: Installing alarm tones failed: 100% gone\n"
                         "ringwell[Notices] info: two\\nlines\n"
                         "ringwell[AlarmService] debug: \n");
}

TEST_F(JournalLoggerTest, LinesFromManyThreadsStayWhole) {
    JournalLogger logger(directory / "no-journal-socket", fd_);
    constexpr int threadCount = 4;
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([&logger, t] {
            for (int i = 0; i < 250; ++i)
                logger.log(LogLevel::info, "Thread" + std::to_string(t),
                           std::string(100, static_cast<char>('a' + t)));
        });
    }
    for (auto& thread : threads)
        thread.join();

    std::istringstream lines(written());
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        ASSERT_EQ(line.size(), std::string("ringwell[Thread0] info: ").size() + 100) << line;
        const char letter = line.back();
        EXPECT_EQ(line, "ringwell[Thread" + std::to_string(letter - 'a') +
                            "] info: " + std::string(100, letter));
    }
    EXPECT_EQ(count, 1000);
}

} // namespace
} // namespace ringwell
