#include "Core/Text.h"

#include <unicode/brkiter.h>
#include <unicode/coll.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <memory>

namespace ringwell::text {
namespace {

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

char asciiLower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// Decodes the code point starting at `i`; invalid bytes decode to a negative value.
UChar32 codePointAt(std::string_view text, int32_t& i) {
    UChar32 c;
    U8_NEXT(reinterpret_cast<const uint8_t*>(text.data()), i, static_cast<int32_t>(text.size()), c);
    return c;
}

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

icu::UnicodeString unicode(std::string_view text) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

std::string utf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

// Case folded, decomposed, stripped of non-spacing marks and recomposed: two
// texts that differ only in case and diacritics end up equal.
icu::UnicodeString foldedForSearch(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    static const icu::Normalizer2* nfd = icu::Normalizer2::getNFDInstance(status);
    static const icu::Normalizer2* nfc = icu::Normalizer2::getNFCInstance(status);
    icu::UnicodeString folded = unicode(text);
    folded.foldCase(U_FOLD_CASE_DEFAULT);
    icu::UnicodeString decomposed = nfd->normalize(folded, status);
    icu::UnicodeString stripped;
    for (int32_t i = 0; i < decomposed.length();) {
        UChar32 c = decomposed.char32At(i);
        if (u_charType(c) != U_NON_SPACING_MARK)
            stripped.append(c);
        i += U16_LENGTH(c);
    }
    icu::UnicodeString result = nfc->normalize(stripped, status);
    return U_SUCCESS(status) ? result : stripped;
}

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
    // Detach the iterator from the UText before closing it.
    UErrorCode ignored = U_ZERO_ERROR;
    UText* empty = utext_openUTF8(nullptr, "", 0, &ignored);
    iterator.setText(empty, ignored);
    utext_close(utext);
    utext_close(empty);
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
    UErrorCode ignored = U_ZERO_ERROR;
    UText* empty = utext_openUTF8(nullptr, "", 0, &ignored);
    iterator.setText(empty, ignored);
    utext_close(utext);
    utext_close(empty);
    return boundary;
}

} // namespace

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

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    if (isAscii(a) && isAscii(b)) {
        return a.size() == b.size() &&
               std::equal(a.begin(), a.end(), b.begin(),
                          [](char x, char y) { return asciiLower(x) == asciiLower(y); });
    }
    return unicode(a).caseCompare(unicode(b), U_FOLD_CASE_DEFAULT) == 0;
}

bool containsIgnoringCaseAndDiacritics(std::string_view haystack, std::string_view needle) {
    if (needle.empty())
        return true;
    // ASCII text has neither diacritics nor multi-character case foldings, so
    // a plain case-insensitive search gives the same answer much faster.
    if (isAscii(haystack) && isAscii(needle)) {
        auto found = std::search(haystack.begin(), haystack.end(), needle.begin(), needle.end(),
                                 [](char x, char y) { return asciiLower(x) == asciiLower(y); });
        return found != haystack.end();
    }
    icu::UnicodeString foldedNeedle = foldedForSearch(needle);
    if (foldedNeedle.isEmpty())
        return true;
    return foldedForSearch(haystack).indexOf(foldedNeedle) >= 0;
}

std::string lowercased(std::string_view text) {
    if (isAscii(text)) {
        std::string out(text);
        std::transform(out.begin(), out.end(), out.begin(), asciiLower);
        return out;
    }
    return utf8(unicode(text).toLower(icu::Locale::getRoot()));
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
    return utf8(unicode(text));
}

bool isValidUtf8(std::string_view text) {
    const auto length = static_cast<int32_t>(text.size());
    for (int32_t i = 0; i < length;) {
        if (codePointAt(text, i) < 0)
            return false;
    }
    return true;
}

int compareForDisplay(std::string_view a, std::string_view b) {
    thread_local std::unique_ptr<icu::Collator> collator = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::Collator> created(
            icu::Collator::createInstance(icu::Locale::getRoot(), status));
        if (created)
            created->setStrength(icu::Collator::SECONDARY);
        return created;
    }();
    UErrorCode status = U_ZERO_ERROR;
    auto result =
        collator->compareUTF8(icu::StringPiece(a.data(), static_cast<int32_t>(a.size())),
                              icu::StringPiece(b.data(), static_cast<int32_t>(b.size())), status);
    if (result != UCOL_EQUAL)
        return result == UCOL_LESS ? -1 : 1;
    return a < b ? -1 : (a == b ? 0 : 1); // a stable tie-break for case variants
}

} // namespace ringwell::text
