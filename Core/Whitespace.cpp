#include "Core/Whitespace.h"

#include "Core/Utf8.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <cstdint>

namespace ringwell::text {
namespace {

// Byte range [begin, end) left after dropping code points matching `isSpace` at both ends.
template <typename Predicate> std::string_view trimBy(std::string_view text, Predicate isSpace) {
    const auto length = static_cast<int32_t>(text.size());
    int32_t begin = 0;
    while (begin < length) {
        int32_t next = begin;
        UChar32 c = codePointAt(text, next);
        if (c < 0 || !isSpace(c))
            break;
        begin = next;
    }
    int32_t end = length;
    while (end > begin) {
        int32_t previous = end;
        UChar32 c;
        U8_PREV(reinterpret_cast<const uint8_t*>(text.data()), begin, previous, c);
        if (c < 0 || !isSpace(c))
            break;
        end = previous;
    }
    return text.substr(static_cast<size_t>(begin), static_cast<size_t>(end - begin));
}

bool isWhiteSpace(UChar32 c) {
    return u_isUWhiteSpace(c);
}
bool isHorizontalBlank(UChar32 c) {
    return u_isblank(c);
}

} // namespace

bool isBlank(std::string_view text) {
    return trimBy(text, isWhiteSpace).empty();
}

std::string trimmed(std::string_view text) {
    return std::string(trimBy(text, isWhiteSpace));
}

std::string trimmedHorizontal(std::string_view text) {
    return std::string(trimBy(text, isHorizontalBlank));
}

std::string collapsedWhitespace(std::string_view text) {
    std::string out;
    bool pendingSpace = false;
    const auto length = static_cast<int32_t>(text.size());
    for (int32_t i = 0; i < length;) {
        int32_t start = i;
        UChar32 c = codePointAt(text, i);
        if (c >= 0 && u_isUWhiteSpace(c)) {
            pendingSpace = !out.empty();
            continue;
        }
        if (pendingSpace)
            out.push_back(' ');
        pendingSpace = false;
        out.append(text.substr(static_cast<size_t>(start), static_cast<size_t>(i - start)));
    }
    return out;
}

} // namespace ringwell::text
