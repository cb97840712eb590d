#pragma once

#include "Core/MatchBudget.h"

#include <memory>
#include <string_view>

#include <unicode/regex.h>

namespace ringwell {

enum class PatternKind { plain, regex };

// The one pattern-matching rule shared by sender and keyword conditions.
//
// A pattern is trimmed of horizontal blanks; a blank pattern never matches.
// Plain patterns are substrings compared ignoring case and diacritics.
// Regular expressions are case-insensitive, unanchored searches; one that does
// not compile, or that runs longer than a bounded number of steps, does not
// match, so no single pattern can stall Ringwell. Many patterns together are
// bounded by the caller's MatchBudget: with the budget spent, a pattern is not
// tried (or its search is stopped) and counts as not matching, and the budget
// records that it was cut short.
//
// Compiled expressions are cached per thread; results are the same as compiling
// afresh every time.
namespace TextMatcher {

bool matches(std::string_view pattern, std::string_view text, PatternKind kind,
             MatchBudget& budget);
// The same without a deadline.
bool matches(std::string_view pattern, std::string_view text, PatternKind kind);

// The case-insensitive compiled expression of the pattern exactly as given, or
// null when it does not compile.
std::shared_ptr<const icu::RegexPattern> regex(std::string_view pattern);

// Matching budget of one search in ICU's time-limit steps.
inline constexpr int32_t regexTimeLimit = 25;

} // namespace TextMatcher
} // namespace ringwell
