#include "Core/TextMatcher.h"

#include "Core/TextFolding.h"
#include "Core/Whitespace.h"

#include <string>
#include <unordered_map>

namespace ringwell::TextMatcher {
namespace {

// Patterns come from a handful of rules, so a small per-thread cache holds them
// all; it is emptied when it grows past the bound. The rule editor compiles
// every pattern typed, so hundreds of passing patterns do go through it.
constexpr size_t cacheLimit = 512;

icu::UnicodeString unicode(std::string_view text) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

// One compiled pattern with the matcher built on it, reset onto each new text:
// building a matcher costs far more than one search. ICU's matcher must not
// outlive its pattern, so both live and die in the same entry; the matcher is
// declared last so that it is destroyed first.
struct CompiledPattern {
    std::shared_ptr<const icu::RegexPattern> pattern; // null when it does not compile
    std::unique_ptr<icu::RegexMatcher> matcher;       // built on first search
};

CompiledPattern& compiled(const std::string& pattern) {
    thread_local std::unordered_map<std::string, CompiledPattern> cache;
    if (auto found = cache.find(pattern); found != cache.end())
        return found->second;
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError;
    std::shared_ptr<const icu::RegexPattern> compiledPattern(
        icu::RegexPattern::compile(unicode(pattern), UREGEX_CASE_INSENSITIVE, parseError, status));
    if (U_FAILURE(status))
        compiledPattern.reset();
    if (cache.size() >= cacheLimit)
        cache.clear();
    return cache.emplace(pattern, CompiledPattern{std::move(compiledPattern), nullptr})
        .first->second;
}

icu::RegexMatcher* reusableMatcher(const std::string& pattern) {
    CompiledPattern& entry = compiled(pattern);
    if (entry.matcher || !entry.pattern)
        return entry.matcher.get();
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> matcher(entry.pattern->matcher(status));
    if (U_FAILURE(status))
        return nullptr;
    matcher->setTimeLimit(regexTimeLimit, status);
    entry.matcher = std::move(matcher);
    return entry.matcher.get();
}

} // namespace

std::shared_ptr<const icu::RegexPattern> regex(std::string_view pattern) {
    return compiled(std::string(pattern)).pattern;
}

namespace {

// Called by ICU every few thousand steps of a search: a false answer stops it.
UBool keepSearching(const void* context, int32_t) {
    return static_cast<MatchBudget*>(const_cast<void*>(context))->hasTimeLeft();
}

} // namespace

bool matches(std::string_view pattern, std::string_view text, PatternKind kind,
             MatchBudget& budget) {
    std::string trimmedPattern = text::trimmedHorizontal(pattern);
    if (trimmedPattern.empty())
        return false;
    if (!budget.hasTimeLeft()) {
        budget.noteCutShort();
        return false;
    }
    if (kind == PatternKind::plain)
        return text::containsIgnoringCaseAndDiacritics(text, trimmedPattern);

    icu::RegexMatcher* matcher = reusableMatcher(trimmedPattern);
    if (!matcher)
        return false;
    icu::UnicodeString input = unicode(text);
    matcher->reset(input);
    UErrorCode status = U_ZERO_ERROR;
    matcher->setMatchCallback(keepSearching, &budget, status);
    bool found = U_SUCCESS(status) && matcher->find(0, status);
    if (status == U_REGEX_STOPPED_BY_CALLER)
        budget.noteCutShort();
    // Detach the matcher from the local text and budget before they go away.
    static const icu::UnicodeString nothing;
    matcher->reset(nothing);
    UErrorCode detached = U_ZERO_ERROR;
    matcher->setMatchCallback(nullptr, nullptr, detached);
    // A search that timed out, overflowed its stack or ran out of budget
    // counts as no match.
    return U_SUCCESS(status) && found;
}

bool matches(std::string_view pattern, std::string_view text, PatternKind kind) {
    MatchBudget unlimited = MatchBudget::unlimited();
    return matches(pattern, text, kind, unlimited);
}

} // namespace ringwell::TextMatcher
