#pragma once

#include <string>
#include <string_view>

// White space at the ends and inside texts. All texts are UTF-8; bytes that
// are not valid UTF-8 are never white space and never cause a failure.
//
// Pure functions, safe from any thread.
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

} // namespace ringwell::text
