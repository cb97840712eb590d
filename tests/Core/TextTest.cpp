#include "Core/AppName.h"
#include "Core/TextFolding.h"
#include "Core/Utf8.h"
#include "Core/Whitespace.h"

#include <gtest/gtest.h>

#include <string>

namespace ringwell {
namespace {

// Horizontal trimming keeps line breaks.
TEST(TextTest, TrimsAndCollapsesUnicodeWhiteSpace) {
    EXPECT_EQ(text::trimmed(" \t\r\n\u00A0\u2028Mom\u3000\n"), "Mom");
    EXPECT_EQ(text::trimmed("a b"), "a b");
    EXPECT_TRUE(text::isBlank(" \t\n\u2029\u00A0"));
    EXPECT_TRUE(text::isBlank(""));
    EXPECT_FALSE(text::isBlank(" . "));
    EXPECT_EQ(text::trimmedHorizontal(" \t\u00A0urgent\u2003"), "urgent");
    EXPECT_EQ(text::trimmedHorizontal("\nurgent\n"), "\nurgent\n");
    EXPECT_EQ(text::collapsedWhitespace("  Server\n \tdown  "), "Server down");
    EXPECT_EQ(text::collapsedWhitespace(" \n "), "");
}

TEST(TextTest, CaseInsensitiveEqualityKeepsDiacritics) {
    EXPECT_TRUE(text::equalsIgnoringCase("MAIL", "mail"));
    EXPECT_TRUE(text::equalsIgnoringCase("ÉCOLE", "école"));
    EXPECT_TRUE(text::equalsIgnoringCase("Straße", "STRASSE")); // full case folding
    EXPECT_FALSE(text::equalsIgnoringCase("ecole", "école"));
    EXPECT_FALSE(text::equalsIgnoringCase("Mail", "Mail "));
}

TEST(TextTest, AppNamesDifferOnlyByMoreThanCaseAndBlanksAround) {
    EXPECT_TRUE(isSameApp(" Straße\t", "STRASSE"));
    EXPECT_EQ(appKey(" Straße "), appKey("STRASSE"));
    EXPECT_FALSE(isSameApp("école", "ecole"));
    EXPECT_NE(appKey("école"), appKey("ecole"));
    EXPECT_EQ(cleanAppName("  Mail\n"), "Mail");
}

TEST(TextTest, ContainmentIgnoresCaseAndDiacritics) {
    EXPECT_TRUE(text::containsIgnoringCaseAndDiacritics("Café au lait", "cafe"));
    EXPECT_TRUE(text::containsIgnoringCaseAndDiacritics("cafe au lait", "CAFÉ"));
    // A decomposed e + combining acute is the same letter as the precomposed one.
    EXPECT_TRUE(text::containsIgnoringCaseAndDiacritics("Cafe\u0301", "café"));
    EXPECT_TRUE(text::containsIgnoringCaseAndDiacritics("Fußball", "FUSSBALL"));
    EXPECT_FALSE(text::containsIgnoringCaseAndDiacritics("cafe", "cafes"));
    EXPECT_FALSE(text::containsIgnoringCaseAndDiacritics("", "a"));
}

TEST(TextTest, CountsAndCutsUserPerceivedCharacters) {
    EXPECT_EQ(text::characterCount(""), 0u);
    EXPECT_EQ(text::characterCount("a\r\nb"), 3u); // CRLF is one character
    EXPECT_EQ(text::characterCount("e\u0301"), 1u);
    EXPECT_EQ(text::characterCount("\U0001F44D\U0001F3FD"), 1u); // thumbs up, skin tone
    EXPECT_EQ(text::characterCount("\U0001F468\u200D\U0001F469\u200D\U0001F467"), 1u); // family
    EXPECT_EQ(text::characterCount("\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7"), 2u);   // two flags
    EXPECT_EQ(text::prefixCharacters("a\r\nb", 2), "a\r\n");
    EXPECT_EQ(text::prefixCharacters("e\u0301e\u0301", 1), "e\u0301");
    EXPECT_EQ(text::prefixCharacters("\U0001F44D\U0001F3FDx", 1), "\U0001F44D\U0001F3FD");
    EXPECT_EQ(text::prefixCharacters("abc", 0), "");

    EXPECT_EQ(text::prefixBytes("ae\u0301b", 3), "a"); // "e" + U+0301 is one character
    EXPECT_EQ(text::prefixBytes("a\U0001F44Db", 4), "a");
    // One character longer than the limit is cut between code points.
    EXPECT_EQ(text::prefixBytes("e\u0301\u0301\u0301", 4), "e\u0301");
}

TEST(TextTest, InvalidUtf8NeverFails) {
    const std::string broken = "ok\xC3(\xFF end";
    EXPECT_FALSE(text::isValidUtf8(broken));
    std::string repaired = text::repairedUtf8(broken);
    EXPECT_TRUE(text::isValidUtf8(repaired));
    EXPECT_NE(repaired.find("\uFFFD"), std::string::npos);
    EXPECT_NE(repaired.find(" end"), std::string::npos);
    EXPECT_EQ(text::trimmed("  \xFF  "), "\xFF");
    EXPECT_GT(text::characterCount(broken), 0u);
    EXPECT_FALSE(text::containsIgnoringCaseAndDiacritics(broken, "ü"));
    EXPECT_TRUE(text::containsIgnoringCaseAndDiacritics(broken, "END"));
}

} // namespace
} // namespace ringwell
