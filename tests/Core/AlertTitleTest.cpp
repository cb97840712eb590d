#include "Core/AlertTitle.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

const std::string ellipsis = "\u2026";
const std::string thumbsUpMediumSkin = "\U0001F44D\U0001F3FD";
const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";

std::string repeated(const std::string& piece, int times) {
    std::string out;
    for (int i = 0; i < times; ++i)
        out += piece;
    return out;
}

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
    EXPECT_EQ(make("Mom", "Call me"), "Mom: Call me");
    EXPECT_EQ(make(std::nullopt, "Call me"), "Call me");
    EXPECT_EQ(make(" \n\t ", "Call me"), "Call me");
    EXPECT_EQ(make("Mom", "   "), "Mom");
    EXPECT_EQ(make(std::nullopt, std::nullopt), "Urgent");
    EXPECT_EQ(make("  ", "\n"), "Urgent");
    EXPECT_EQ(make("Mom", "Call me", false), "Urgent");
}

TEST_F(AlertTitleTest, PrefixComesFirstAndCountsTowardsTheLimit) {
    EXPECT_EQ(make("Mom", std::nullopt, true, "Test: "), "Test: Mom");
    EXPECT_EQ(make(std::nullopt, std::nullopt, false, "Test: "), "Test: Urgent");
    std::string title = make(repeated("x", 40), std::nullopt, true, "Test: ");
    EXPECT_EQ(title, "Test: " + repeated("x", 33) + ellipsis);
}

TEST_F(AlertTitleTest, CutAtFortyCharactersNeverSplitsAnEmojiSequence) {
    EXPECT_EQ(make(repeated("a", 40), std::nullopt), repeated("a", 40));
    EXPECT_EQ(make(repeated("a", 41), std::nullopt), repeated("a", 39) + ellipsis);
    EXPECT_EQ(make(repeated("a", 38) + thumbsUpMediumSkin + "bc", std::nullopt),
              repeated("a", 38) + thumbsUpMediumSkin + ellipsis);
    EXPECT_EQ(make(repeated("a", 38) + family + family + "b", std::nullopt),
              repeated("a", 38) + family + ellipsis);
    EXPECT_EQ(AlertTitle::truncate("abcdef", 4), "abc" + ellipsis);
    EXPECT_EQ(AlertTitle::truncate("abcd", 4), "abcd");
    EXPECT_EQ(AlertTitle::truncate("ab", 1), ellipsis);
    EXPECT_EQ(AlertTitle::truncate("ab", 0), "");
}

} // namespace
} // namespace ringwell
