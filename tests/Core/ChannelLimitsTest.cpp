#include "Core/ChannelLimits.h"
#include "Core/RuleLimits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ringwell {
namespace {

using ::testing::ElementsAre;
using namespace ChannelLimits;

std::string repeated(const std::string& piece, int times) {
    std::string out;
    for (int i = 0; i < times; ++i)
        out += piece;
    return out;
}

const std::string heart = "\u2764\uFE0F";

// Line breaks are not blank; names keep forty characters, not bytes.
TEST(ChannelLimitsTest, FinalizedNameIsUntitledOnlyWhenBlankAndOtherwiseUntrimmedAndClamped) {
    EXPECT_EQ(finalizedName(""), "Untitled");
    EXPECT_EQ(finalizedName(" \t "), "Untitled");
    EXPECT_EQ(finalizedName("\n"), "\n");
    EXPECT_EQ(finalizedName(" \n "), " \n ");
    EXPECT_EQ(finalizedName(" a "), " a ");
    EXPECT_EQ(finalizedName(" " + repeated("b", 45)), " " + repeated("b", 39));
    EXPECT_EQ(clampName(repeated(heart, 41)), repeated(heart, 40)); // emoji + variation selector
}

TEST(ChannelLimitsTest, CountdownAndSnoozeAreClampedToTheirRanges) {
    EXPECT_EQ(clampCountdown(-30), 5);
    EXPECT_EQ(clampCountdown(4), 5);
    EXPECT_EQ(clampCountdown(42), 42);
    EXPECT_EQ(clampCountdown(1801), 1800);
    EXPECT_EQ(clampSnooze(59), 60);
    EXPECT_EQ(clampSnooze(1801), 1800);
}

TEST(ChannelLimitsTest, OptionsAddAStoredValueInOrderAndLeavePresetsHoldingIt) {
    const std::vector<std::int64_t> presets = {5, 10, 15};
    EXPECT_THAT(options(presets, 12), ElementsAre(5, 10, 12, 15));
    EXPECT_THAT(options(presets, 1), ElementsAre(1, 5, 10, 15));
    EXPECT_THAT(options(presets, 99), ElementsAre(5, 10, 15, 99));
    // Not re-sorted when the value is already there.
    EXPECT_THAT(options(std::vector<std::int64_t>{30, 10, 20}, 10), ElementsAre(30, 10, 20));
    EXPECT_THAT(options(std::vector<std::int64_t>{}, 7), ElementsAre(7));
}

TEST(ChannelLimitsTest, RuleLimitsNameEveryListAndPatternOverTheBounds) {
    ChannelRule rule;
    rule.keywords.assign(RuleLimits::patternsPerList, "ok");
    rule.senders = {std::string(RuleLimits::patternLength, 'x')};
    EXPECT_TRUE(RuleLimits::problems(rule).empty());

    rule.keywords.push_back("one too many");
    rule.senders.push_back(std::string(RuleLimits::patternLength + 1, 'y'));
    EXPECT_EQ(RuleLimits::problems(rule),
              (std::vector<std::string>{
                  "The sender \"yyyyyyyyyyyyyyyyyyyy…\" is longer than 200 characters.",
                  "A rule can have at most 100 keywords; this one has 101."}));
}

} // namespace
} // namespace ringwell
