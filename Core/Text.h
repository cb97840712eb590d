#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Text helpers shared by every layer. All texts are UTF-8; bytes that are not
// valid UTF-8 are read as U+FFFD and never cause a failure.
//
// Pure functions, safe from any thread (the ICU iterators they use are per thread).
namespace ringwell::text {

// Blank: empty after trimming Unicode white space and line breaks.
bool isBlank(std::string_view text);

// Removes leading and trailing Unicode white space, line breaks included.
std::string trimmed(std::string_view text);

// Removes leading and trailing horizontal blanks (spaces, tabs, other space
// separators); line breaks stay.
std::string trimmedHorizontal(std::string_view text);

// Replaces every run of white space (line breaks included) by one space and
// trims the ends.
std::string collapsedWhitespace(std::string_view text);

// Whole-string equality under full Unicode case folding; diacritics count.
bool equalsIgnoringCase(std::string_view a, std::string_view b);

// Substring search ignoring case and diacritics, with no locale rules:
// "cafe" is found in "Café au lait". An empty needle is contained everywhere.
bool containsIgnoringCaseAndDiacritics(std::string_view haystack, std::string_view needle);

// The text in lower case, locale-independent.
std::string lowercased(std::string_view text);

// Number of user-perceived characters (extended grapheme clusters): "\r\n",
// an emoji with modifiers and a letter with combining marks each count once.
std::size_t characterCount(std::string_view text);

// The first `count` user-perceived characters of the text.
std::string prefixCharacters(std::string_view text, std::size_t count);

// The longest prefix of at most `maxBytes` bytes that ends between two
// user-perceived characters (or, when even the first character is longer, at
// a code point boundary); the text itself when it fits.
std::string prefixBytes(std::string_view text, std::size_t maxBytes);

// The text with every invalid UTF-8 sequence replaced by U+FFFD.
std::string repairedUtf8(std::string_view text);

// Whether the bytes are valid UTF-8.
bool isValidUtf8(std::string_view text);

// The value of a hexadecimal digit (either case), or -1 for any other character.
int hexDigitValue(char c);

// The items with `separator` between each two.
std::string joined(const std::vector<std::string>& items, std::string_view separator);

// Orders texts as a person expects in a list: case-insensitive, root-locale
// collation. Returns <0, 0 or >0.
int compareForDisplay(std::string_view a, std::string_view b);

} // namespace ringwell::text
