#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// UTF-8 validity, repair and cutting texts to a length without splitting a
// character. Bytes that are not valid UTF-8 are read as U+FFFD and never
// cause a failure.
//
// Pure functions, safe from any thread (the ICU break iterator is per thread).
namespace ringwell::text {

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

// Decodes the code point starting at byte `i` and moves `i` past it; invalid
// bytes decode to a negative value.
std::int32_t codePointAt(std::string_view text, std::int32_t& i);

} // namespace ringwell::text
