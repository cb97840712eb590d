#pragma once

#include "Core/ChannelRule.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ringwell {

// The bounds of what one rule may hold, checked when a channel is added or
// updated. They keep one rule's matching cheap; the routing's MatchBudget
// bounds all rules together. Rules saved before the bounds existed still load
// and still route.
namespace RuleLimits {

// Senders, and keywords, per rule.
inline constexpr std::size_t patternsPerList = 100;
// Characters (user-perceived) in one sender or keyword.
inline constexpr std::size_t patternLength = 200;

// One message per bound the rule passes, in the person's words; empty when
// the rule is within every bound.
std::vector<std::string> problems(const ChannelRule& rule);

} // namespace RuleLimits
} // namespace ringwell
