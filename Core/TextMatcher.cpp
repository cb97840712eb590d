#include "Core/TextMatcher.h"

#include "Core/Text.h"

#include <string>
#include <unordered_map>

namespace ringwell::TextMatcher {
namespace {

// Patterns come from a handful of rules, so a small per-thread cache holds them
// all; it is emptied when it grows past the bound.
constexpr size_t cacheLimit = 512;

icu::UnicodeString unicode(std::string_view text) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

} // namespace

std::shared_ptr<const icu::RegexPattern> regex(std::string_view pattern) {
    thread_local std::unordered_map<std::string, std::shared_ptr<const icu::RegexPattern>> cache;
    std::string key(pattern);
    if (auto found = cache.find(key); found != cache.end())
        return found->second;
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError;
    std::shared_ptr<const icu::RegexPattern> compiled(
        icu::RegexPattern::compile(unicode(pattern), UREGEX_CASE_INSENSITIVE, parseError, status));
    if (U_FAILURE(status))
        compiled.reset();
    if (cache.size() >= cacheLimit)
        cache.clear();
    cache.emplace(std::move(key), compiled);
    return compiled;
}

bool matches(std::string_view pattern, std::string_view text, PatternKind kind) {
    std::string trimmedPattern = text::trimmedHorizontal(pattern);
    if (trimmedPattern.empty())
        return false;
    if (kind == PatternKind::plain)
        return text::containsIgnoringCaseAndDiacritics(text, trimmedPattern);

    auto compiled = regex(trimmedPattern);
    if (!compiled)
        return false;
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString input = unicode(text);
    std::unique_ptr<icu::RegexMatcher> matcher(compiled->matcher(input, status));
    if (U_FAILURE(status))
        return false;
    matcher->setTimeLimit(regexTimeLimit, status);
    bool found = matcher->find(0, status);
    // A search that timed out or overflowed its stack counts as no match.
    return U_SUCCESS(status) && found;
}

} // namespace ringwell::TextMatcher
