#include "Core/TextFolding.h"

#include <unicode/coll.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

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

} // namespace

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

std::string caseFolded(std::string_view text) {
    if (isAscii(text))
        return lowercased(text);
    return utf8(unicode(text).foldCase(U_FOLD_CASE_DEFAULT));
}

std::string lowercased(std::string_view text) {
    if (isAscii(text)) {
        std::string out(text);
        std::transform(out.begin(), out.end(), out.begin(), asciiLower);
        return out;
    }
    return utf8(unicode(text).toLower(icu::Locale::getRoot()));
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
