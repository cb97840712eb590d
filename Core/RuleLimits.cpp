#include "Core/RuleLimits.h"

#include "Core/Utf8.h"

namespace ringwell::RuleLimits {
namespace {

void checkList(const std::vector<std::string>& patterns, const std::string& plural,
               const std::string& singular, std::vector<std::string>& problems) {
    if (patterns.size() > patternsPerList)
        problems.push_back("A rule can have at most " + std::to_string(patternsPerList) + " " +
                           plural + "; this one has " + std::to_string(patterns.size()) + ".");
    for (const auto& pattern : patterns) {
        if (text::characterCount(pattern) > patternLength)
            problems.push_back("The " + singular + " \"" + text::prefixCharacters(pattern, 20) +
                               "…\" is longer than " + std::to_string(patternLength) +
                               " characters.");
    }
}

} // namespace

std::vector<std::string> problems(const ChannelRule& rule) {
    std::vector<std::string> found;
    checkList(rule.senders, "senders", "sender", found);
    checkList(rule.keywords, "keywords", "keyword", found);
    return found;
}

} // namespace ringwell::RuleLimits
