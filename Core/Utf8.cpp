#include "Core/Utf8.h"

#include <unicode/brkiter.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <cstdint>
#include <memory>

namespace ringwell::text {
namespace {

// One character break iterator per thread: creating one is expensive and an
// iterator is not safe to share.
icu::BreakIterator& characterIterator() {
    thread_local std::unique_ptr<icu::BreakIterator> iterator = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> created(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        return created;
    }();
    return *iterator;
}

// Detaches the shared iterator from `utext` (it must not keep a closed text)
// and closes it.
void releaseText(icu::BreakIterator& iterator, UText* utext) {
    UErrorCode ignored = U_ZERO_ERROR;
    UText* empty = utext_openUTF8(nullptr, "", 0, &ignored);
    iterator.setText(empty, ignored);
    utext_close(utext);
    utext_close(empty);
}

// Byte offset after `count` user-perceived characters, or npos when the text is shorter;
// with `count` = npos, the number of characters is returned through `counted`.
size_t walkCharacters(std::string_view text, size_t count, size_t& counted) {
    counted = 0;
    if (text.empty())
        return count == 0 ? 0 : std::string_view::npos;
    UErrorCode status = U_ZERO_ERROR;
    UText* utext = utext_openUTF8(nullptr, text.data(), static_cast<int64_t>(text.size()), &status);
    icu::BreakIterator& iterator = characterIterator();
    iterator.setText(utext, status);
    size_t offset = std::string_view::npos;
    if (count == 0) {
        offset = 0;
    } else if (U_SUCCESS(status)) {
        for (int32_t boundary = iterator.next(); boundary != icu::BreakIterator::DONE;
             boundary = iterator.next()) {
            ++counted;
            if (counted == count) {
                offset = static_cast<size_t>(boundary);
                break;
            }
        }
    }
    releaseText(iterator, utext);
    return offset;
}

// The last character boundary at or before byte `limit` (< text.size()).
size_t characterBoundaryBefore(std::string_view text, size_t limit) {
    UErrorCode status = U_ZERO_ERROR;
    UText* utext = utext_openUTF8(nullptr, text.data(), static_cast<int64_t>(text.size()), &status);
    icu::BreakIterator& iterator = characterIterator();
    iterator.setText(utext, status);
    size_t boundary = 0;
    if (U_SUCCESS(status)) {
        const int32_t found = iterator.preceding(static_cast<int32_t>(limit) + 1);
        boundary = found == icu::BreakIterator::DONE ? 0 : static_cast<size_t>(found);
    }
    releaseText(iterator, utext);
    return boundary;
}

} // namespace

std::int32_t codePointAt(std::string_view text, std::int32_t& i) {
    UChar32 c;
    U8_NEXT(reinterpret_cast<const uint8_t*>(text.data()), i, static_cast<int32_t>(text.size()), c);
    return c;
}

std::string prefixBytes(std::string_view text, std::size_t maxBytes) {
    if (text.size() <= maxBytes)
        return std::string(text);
    size_t end = characterBoundaryBefore(text, maxBytes);
    if (end == 0 && maxBytes > 0) {
        // One character longer than the limit (a base with endless combining
        // marks): cut between its code points instead.
        int32_t offset = static_cast<int32_t>(maxBytes);
        U8_SET_CP_START(reinterpret_cast<const uint8_t*>(text.data()), 0, offset);
        end = static_cast<size_t>(offset);
    }
    return std::string(text.substr(0, end));
}

std::size_t characterCount(std::string_view text) {
    size_t counted = 0;
    walkCharacters(text, std::string_view::npos, counted);
    return counted;
}

std::string prefixCharacters(std::string_view text, std::size_t count) {
    size_t counted = 0;
    size_t offset = walkCharacters(text, count, counted);
    if (offset == std::string_view::npos)
        return std::string(text);
    return std::string(text.substr(0, offset));
}

std::string repairedUtf8(std::string_view text) {
    if (isValidUtf8(text))
        return std::string(text);
    std::string repaired;
    icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())))
        .toUTF8String(repaired);
    return repaired;
}

bool isValidUtf8(std::string_view text) {
    const auto length = static_cast<int32_t>(text.size());
    for (int32_t i = 0; i < length;) {
        if (codePointAt(text, i) < 0)
            return false;
    }
    return true;
}

} // namespace ringwell::text
