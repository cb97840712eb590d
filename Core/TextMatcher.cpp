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

namespace {

// A matcher per pattern and thread, reset onto each new text: building a
// matcher costs far more than one search.
icu::RegexMatcher* reusableMatcher(const std::string& pattern) {
    thread_local std::unordered_map<std::string, std::unique_ptr<icu::RegexMatcher>> matchers;
    if (auto found = matchers.find(pattern); found != matchers.end())
        return found->second.get();
    auto compiled = regex(pattern);
    if (!compiled)
        return nullptr;
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> matcher(compiled->matcher(status));
    if (U_FAILURE(status))
        return nullptr;
    matcher->setTimeLimit(regexTimeLimit, status);
    if (matchers.size() >= cacheLimit)
        matchers.clear();
    return matchers.emplace(pattern, std::move(matcher)).first->second.get();
}

} // namespace

bool matches(std::string_view pattern, std::string_view text, PatternKind kind) {
    std::string trimmedPattern = text::trimmedHorizontal(pattern);
    if (trimmedPattern.empty())
        return false;
    if (kind == PatternKind::plain)
        return text::containsIgnoringCaseAndDiacritics(text, trimmedPattern);

    icu::RegexMatcher* matcher = reusableMatcher(trimmedPattern);
    if (!matcher)
        return false;
    icu::UnicodeString input = unicode(text);
    matcher->reset(input);
    UErrorCode status = U_ZERO_ERROR;
    bool found = matcher->find(0, status);
    // Detach the matcher from the local text before that goes away.
    static const icu::UnicodeString nothing;
    matcher->reset(nothing);
    // A search that timed out or overflowed its stack counts as no match.
    return U_SUCCESS(status) && found;
}

} // namespace ringwell::TextMatcher
