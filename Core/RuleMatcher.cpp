#include "Core/RuleMatcher.h"

#include "Core/AppName.h"
#include "Core/Joined.h"
#include "Core/Json.h"
#include "Core/TextMatcher.h"

#include <algorithm>

namespace ringwell {
namespace {

// The text itself in straight double quotes, or nothing for the empty text.
std::string quoted(const std::string& text) {
    return text.empty() ? "" : "\"" + text + "\"";
}
std::string shown(const std::string& text) {
    return text.empty() ? "(empty)" : quoted(text);
}

std::string joined(const std::vector<std::string>& items) {
    std::string out;
    for (size_t i = 0; i < items.size(); ++i) {
        if (i > 0)
            out += ", ";
        out += items[i];
    }
    return out;
}

PatternKind patternKind(const ChannelRule& rule) {
    return rule.usesRegex ? PatternKind::regex : PatternKind::plain;
}

bool appMatches(const ChannelRule& rule, const NotificationInfo& notification) {
    return std::any_of(rule.apps.begin(), rule.apps.end(),
                       [&](const std::string& app) { return isSameApp(app, notification.app); });
}

const std::string* matchingSender(const ChannelRule& rule, const NotificationInfo& notification,
                                  MatchBudget& budget) {
    for (const auto& pattern : rule.senders) {
        if (TextMatcher::matches(pattern, notification.from(), patternKind(rule), budget))
            return &pattern;
    }
    return nullptr;
}

const std::string* matchingKeyword(const ChannelRule& rule, const NotificationInfo& notification,
                                   MatchBudget& budget) {
    for (const auto& keyword : rule.keywords) {
        for (const std::string* text :
             {&notification.title, &notification.subtitle, &notification.body}) {
            if (TextMatcher::matches(keyword, *text, patternKind(rule), budget))
                return &keyword;
        }
    }
    return nullptr;
}

bool callMatches(ChannelRule::CallFilter wanted, CallKind kind) {
    return (wanted == ChannelRule::CallFilter::incoming && kind == CallKind::incoming) ||
           (wanted == ChannelRule::CallFilter::missed && kind == CallKind::missed);
}

// The same verdict as "every content check passes", without building the
// explanations: the frequency condition asks it of every history entry.
bool contentPasses(const ChannelRule& rule, const NotificationInfo& notification,
                   const Calendar& calendar, MatchBudget& budget) {
    if (!rule.apps.empty() && !appMatches(rule, notification))
        return false;
    if (!rule.senders.empty() && !matchingSender(rule, notification, budget))
        return false;
    if (!rule.keywords.empty() && !matchingKeyword(rule, notification, budget))
        return false;
    auto kind = notification.callKind();
    if (rule.calls != ChannelRule::CallFilter::any && kind && !callMatches(rule.calls, *kind))
        return false;
    if (rule.activeHours && !rule.activeHours->contains(notification.date, calendar))
        return false;
    return true;
}

// Added to the detail of a check whose patterns were not all tried.
std::string cutShortNote(const MatchBudget& budget, std::size_t cutShortBefore) {
    return budget.cutShortCount() > cutShortBefore
               ? " (cut short: the rules' patterns took too long to check)"
               : "";
}

} // namespace

std::string_view rawValue(RuleCheck::Condition condition) {
    switch (condition) {
    case RuleCheck::Condition::app:
        return "app";
    case RuleCheck::Condition::sender:
        return "sender";
    case RuleCheck::Condition::keywords:
        return "keywords";
    case RuleCheck::Condition::calls:
        return "calls";
    case RuleCheck::Condition::activeHours:
        return "activeHours";
    case RuleCheck::Condition::frequency:
        return "frequency";
    }
    return "";
}

bool RuleEvaluation::matches() const {
    return std::all_of(checks.begin(), checks.end(), [](const RuleCheck& c) { return c.passed; });
}

json::Json toJson(const RuleEvaluation& evaluation) {
    json::Json checks = json::Json::array();
    for (const auto& check : evaluation.checks) {
        checks.push_back(json::Json{{"condition", rawValue(check.condition)},
                                    {"passed", check.passed},
                                    {"detail", check.detail}});
    }
    return json::Json{{"matches", evaluation.matches()}, {"checks", std::move(checks)}};
}

namespace RuleMatcher {

std::vector<RuleCheck> contentChecks(const ChannelRule& rule, const NotificationInfo& notification,
                                     const Calendar& calendar, MatchBudget& budget) {
    using Condition = RuleCheck::Condition;
    std::vector<RuleCheck> checks;

    if (!rule.apps.empty()) {
        bool passed = appMatches(rule, notification);
        checks.push_back({Condition::app, passed,
                          shown(notification.app) + (passed ? " is one of " : " isn't one of ") +
                              joined(rule.apps)});
    }

    if (!rule.senders.empty()) {
        const std::string& from = notification.from();
        const std::size_t cutShortBefore = budget.cutShortCount();
        if (const std::string* pattern = matchingSender(rule, notification, budget))
            checks.push_back(
                {Condition::sender, true, shown(from) + " matches \"" + *pattern + "\""});
        else
            checks.push_back({Condition::sender, false,
                              shown(from) + " matches none of the senders" +
                                  cutShortNote(budget, cutShortBefore)});
    }

    if (!rule.keywords.empty()) {
        const std::size_t cutShortBefore = budget.cutShortCount();
        if (const std::string* keyword = matchingKeyword(rule, notification, budget))
            checks.push_back({Condition::keywords, true, "Text contains \"" + *keyword + "\""});
        else
            checks.push_back(
                {Condition::keywords, false,
                 "Text contains none of the keywords" + cutShortNote(budget, cutShortBefore)});
    }

    // A notification that is not a call is not held back by the calls
    // condition; confining a rule to the phone app is the app condition's job.
    if (rule.calls != ChannelRule::CallFilter::any) {
        if (auto kind = notification.callKind()) {
            std::string detail = std::string(*kind == CallKind::incoming ? "Incoming" : "Missed") +
                                 " call, rule wants " + std::string(rawValue(rule.calls)) +
                                 " calls";
            checks.push_back({Condition::calls, callMatches(rule.calls, *kind), std::move(detail)});
        }
    }

    if (rule.activeHours) {
        bool inside = rule.activeHours->contains(notification.date, calendar);
        checks.push_back(
            {Condition::activeHours, inside,
             std::string(inside ? "Within " : "Outside ") + rule.activeHours->summary()});
    }
    return checks;
}

RuleEvaluation evaluate(const ChannelRule& rule, const NotificationInfo& notification,
                        const std::vector<NotificationInfo>& history, const Calendar& calendar,
                        MatchBudget& budget) {
    RuleEvaluation evaluation{contentChecks(rule, notification, calendar, budget)};
    if (!rule.frequency)
        return evaluation;

    const auto& frequency = *rule.frequency;
    const Date windowStart =
        notification.date.addingSeconds(-static_cast<double>(frequency.windowSeconds));
    const std::size_t cutShortBefore = budget.cutShortCount();
    std::int64_t total = 1; // the notification always counts itself
    for (const auto& earlier : history) {
        if (earlier.date < windowStart || earlier.date > notification.date)
            continue;
        if (earlier == notification)
            continue;
        if (contentPasses(rule, earlier, calendar, budget))
            ++total;
    }
    evaluation.checks.push_back({RuleCheck::Condition::frequency, total >= frequency.count,
                                 std::to_string(total) + " matching in the last " +
                                     std::to_string(frequency.windowSeconds / 60) +
                                     " min, rule wants " + std::to_string(frequency.count) +
                                     cutShortNote(budget, cutShortBefore)});
    return evaluation;
}

RuleEvaluation evaluate(const ChannelRule& rule, const NotificationInfo& notification,
                        const std::vector<NotificationInfo>& history, const Calendar& calendar) {
    MatchBudget unlimited = MatchBudget::unlimited();
    return evaluate(rule, notification, history, calendar, unlimited);
}

bool matches(const ChannelRule& rule, const NotificationInfo& notification,
             const std::vector<NotificationInfo>& history, const Calendar& calendar,
             MatchBudget& budget) {
    return evaluate(rule, notification, history, calendar, budget).matches();
}

bool matches(const ChannelRule& rule, const NotificationInfo& notification,
             const std::vector<NotificationInfo>& history, const Calendar& calendar) {
    return evaluate(rule, notification, history, calendar).matches();
}

} // namespace RuleMatcher
} // namespace ringwell
