#include "Core/AlertTitle.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

const std::string ellipsis = "\u2026";
const std::string thumbsUpMediumSkin = "\U0001F44D\U0001F3FD";

class AlertTitleTest : public ::testing::Test {
protected:
    static std::string make(std::optional<std::string> title, std::optional<std::string> body,
                            bool showText = true, std::string_view prefix = "") {
        return AlertTitle::make("Urgent", title, body, showText, prefix);
    }
};

TEST_F(AlertTitleTest, TitleAndBodyJoinCollapsedElseTheChannelNameStands) {
    EXPECT_EQ(make("  Server\n down ", std::nullopt), "Server down");
    EXPECT_EQ(make("\tDisk\r\n\r\nfull\t", " at  03:00\n"), "Disk full: at 03:00");
    EXPECT_EQ(make(std::nullopt, "Call me"), "Call me");
    EXPECT_EQ(make(" \n\t ", "Call me"), "Call me");
    EXPECT_EQ(make("Mom", "   "), "Mom");
    EXPECT_EQ(make(std::nullopt, std::nullopt), "Urgent");
    EXPECT_EQ(make("  ", "\n"), "Urgent");
    EXPECT_EQ(make("Mom", "Call me", false), "Urgent");
}

TEST_F(AlertTitleTest, PrefixComesFirstAndCountsTowardsTheLimit) {
    EXPECT_EQ(make(std::nullopt, std::nullopt, false, "Test: "), "Test: Urgent");
    std::string title = make(std::string(40, 'x'), std::nullopt, true, "Test: ");
    EXPECT_EQ(title, "Test: " + std::string(33, 'x') + ellipsis);
}

TEST_F(AlertTitleTest, CutAtFortyCharactersNeverSplitsAnEmojiSequence) {
    EXPECT_EQ(make(std::string(40, 'a'), std::nullopt), std::string(40, 'a'));
    EXPECT_EQ(make(std::string(41, 'a'), std::nullopt), std::string(39, 'a') + ellipsis);
    EXPECT_EQ(make(std::string(38, 'a') + thumbsUpMediumSkin + "bc", std::nullopt),
              std::string(38, 'a') + thumbsUpMediumSkin + ellipsis);
    EXPECT_EQ(AlertTitle::truncate("ab", 1), ellipsis);
    EXPECT_EQ(AlertTitle::truncate("ab", 0), "");
}

} // namespace
} // namespace ringwell
