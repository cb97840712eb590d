// The text helpers and the pattern matcher on arbitrary bytes: the first
// byte picks plain or regex matching, the rest splits into pattern and text.
#include "Core/TextFolding.h"
#include "Core/TextMatcher.h"
#include "Core/Utf8.h"
#include "Core/Whitespace.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

using namespace ringwell;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    PatternKind kind = data[0] & 1 ? PatternKind::regex : PatternKind::plain;
    std::string_view rest(reinterpret_cast<const char*>(data + 1), size - 1);
    auto split = rest.find('\n');
    std::string_view pattern = rest.substr(0, split);
    std::string_view text = split == std::string_view::npos ? "" : rest.substr(split + 1);

    (void)text::isBlank(text);
    (void)text::trimmed(text);
    (void)text::trimmedHorizontal(text);
    (void)text::collapsedWhitespace(text);
    (void)text::equalsIgnoringCase(pattern, text);
    (void)text::containsIgnoringCaseAndDiacritics(text, pattern);
    (void)text::lowercased(text);
    (void)text::prefixCharacters(text, text::characterCount(pattern));
    (void)text::isValidUtf8(text::repairedUtf8(text));
    (void)text::compareForDisplay(pattern, text);
    (void)TextMatcher::matches(pattern, text, kind);
    return 0;
}
