#include "Core/PercentEncoding.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

TEST(PercentEncodingTest, EncodingKeepsOnlyUnreservedCharacters) {
    EXPECT_EQ(PercentEncoding::encode("aZ09-._~"), "aZ09-._~");
    EXPECT_EQ(PercentEncoding::encode("a b&c=d+e/f?g#h"), "a%20b%26c%3Dd%2Be%2Ff%3Fg%23h");
    EXPECT_EQ(PercentEncoding::encode("\u2192 \u00e9"), "%E2%86%92%20%C3%A9");
}

TEST(PercentEncodingTest, DecodingUndoesEncodingAndRejectsBrokenEscapes) {
    const std::string text = "Mom & Dad: caf\u00e9+1/2";
    EXPECT_EQ(
        PercentEncoding::decode(PercentEncoding::encode(text), PercentEncoding::Plus::isSpace),
        text);
    EXPECT_EQ(PercentEncoding::decode("a+b%2b", PercentEncoding::Plus::isSpace), "a b+");
    EXPECT_EQ(PercentEncoding::decode("a+b", PercentEncoding::Plus::isItself), "a+b");
    EXPECT_FALSE(PercentEncoding::decode("%2", PercentEncoding::Plus::isSpace));
    EXPECT_FALSE(PercentEncoding::decode("%zz", PercentEncoding::Plus::isItself));
}

} // namespace
} // namespace ringwell
