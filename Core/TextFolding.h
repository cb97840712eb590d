#pragma once

#include <string>
#include <string_view>

// Comparing texts as people read them: case and diacritic folding and list
// order. All texts are UTF-8; bytes that are not valid UTF-8 are read as
// U+FFFD and never cause a failure.
//
// Pure functions, safe from any thread (the ICU collator is per thread).
namespace ringwell::text {

// Whole-string equality under full Unicode case folding; diacritics count.
bool equalsIgnoringCase(std::string_view a, std::string_view b);

// Substring search ignoring case and diacritics, with no locale rules:
// "cafe" is found in "Café au lait". An empty needle is contained everywhere.
bool containsIgnoringCaseAndDiacritics(std::string_view haystack, std::string_view needle);

// Full Unicode case folding: equalsIgnoringCase(a, b) exactly when
// caseFolded(a) == caseFolded(b).
std::string caseFolded(std::string_view text);

// The text in lower case, locale-independent.
std::string lowercased(std::string_view text);

// Orders texts as a person expects in a list: case-insensitive, root-locale
// collation. Returns <0, 0 or >0.
int compareForDisplay(std::string_view a, std::string_view b);

} // namespace ringwell::text
