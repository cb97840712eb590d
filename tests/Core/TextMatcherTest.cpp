#include "Core/TextMatcher.h"

#include <gtest/gtest.h>

#include <string>

namespace ringwell {
namespace {

TEST(TextMatcherTest, PlainPatternsAreTrimmedSubstrings) {
    EXPECT_TRUE(TextMatcher::matches(" Café ", "cafe au lait", PatternKind::plain));
    EXPECT_TRUE(TextMatcher::matches("art", "party", PatternKind::plain));
    EXPECT_FALSE(TextMatcher::matches("", "anything", PatternKind::plain));
    EXPECT_FALSE(TextMatcher::matches("   ", "   ", PatternKind::plain));
    // Only horizontal blanks are trimmed from a pattern.
    EXPECT_FALSE(TextMatcher::matches("\nurgent", "urgent", PatternKind::plain));
    EXPECT_FALSE(TextMatcher::matches("a.c", "abc", PatternKind::plain));
}

TEST(TextMatcherTest, RegularExpressionsSearchIgnoringCase) {
    EXPECT_TRUE(TextMatcher::matches("urg.nt", "URGENT now", PatternKind::regex));
    EXPECT_TRUE(TextMatcher::matches("^mom$", "MOM", PatternKind::regex));
    EXPECT_FALSE(TextMatcher::matches("^mom$", "mom!", PatternKind::regex));
    EXPECT_TRUE(TextMatcher::matches("fussball", "Fußball", PatternKind::regex));
    EXPECT_TRUE(TextMatcher::matches(" \\d{3} ", "code 123", PatternKind::regex));
    // A regex cannot ignore diacritics; only plain patterns do.
    EXPECT_FALSE(TextMatcher::matches("cafe", "café", PatternKind::regex));
}

TEST(TextMatcherTest, PatternsThatDoNotCompileNeverMatch) {
    EXPECT_FALSE(TextMatcher::matches("(", "(", PatternKind::regex));
    EXPECT_FALSE(TextMatcher::regex("("));
    EXPECT_TRUE(TextMatcher::regex("ok"));
}

TEST(TextMatcherTest, CatastrophicBacktrackingIsCutOffAsNoMatch) {
    const std::string body = std::string(10000, 'a') + "!";
    EXPECT_FALSE(TextMatcher::matches("(a+)+$", body, PatternKind::regex));
    EXPECT_FALSE(TextMatcher::matches("(a|aa)+b", body, PatternKind::regex));
    // The same expression still works on ordinary text.
    EXPECT_TRUE(TextMatcher::matches("(a+)+$", "aaa", PatternKind::regex));
}

TEST(TextMatcherTest, CachedExpressionsGiveTheSameAnswersWhenTheCacheOverflows) {
    // Many distinct patterns overflow the cache without changing results.
    for (int i = 0; i < 1200; ++i)
        EXPECT_TRUE(TextMatcher::matches("x" + std::to_string(i), "x" + std::to_string(i) + "y",
                                         PatternKind::regex));
    // The rule editor compiles every pattern it describes without searching.
    EXPECT_TRUE(TextMatcher::matches("ring+", "ringgg", PatternKind::regex));
    for (int i = 0; i < 600; ++i)
        EXPECT_TRUE(TextMatcher::regex("typed " + std::to_string(i)));
    EXPECT_TRUE(TextMatcher::matches("ring+", "ringgg", PatternKind::regex));
    EXPECT_FALSE(TextMatcher::matches("ring+", "rin", PatternKind::regex));
}

TEST(TextMatcherTest, InvalidUtf8TextNeverFails) {
    EXPECT_TRUE(TextMatcher::matches("bad", "bad \xFF\xFE byte", PatternKind::regex));
    EXPECT_FALSE(TextMatcher::matches("\xFF", "plain", PatternKind::regex));
}

} // namespace
} // namespace ringwell
