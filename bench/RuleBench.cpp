#include "Core/RuleMatcher.h"

#include <benchmark/benchmark.h>

namespace ringwell {
namespace {

const Calendar& berlin() {
    static const Calendar calendar = *Calendar::inTimeZone("Europe/Berlin");
    return calendar;
}

// 200 recent notifications, all inside a one-hour window ending at `now`, with
// a mix of apps, senders and accented text.
std::vector<NotificationInfo> recentHistory(Date now) {
    static const char* apps[] = {"Messages", "Mail", "Slack", "PagerDuty", "WhatsApp"};
    static const char* senders[] = {"Mom", "Zoë", "Ops bot", "Björn", "Alice"};
    static const char* bodies[] = {
        "Can you call me when you're free?", "Réunion déplacée à demain matin",
        "Disk usage above 90% on db-3", "Lunch?", "server down: checkout returns 502"};
    std::vector<NotificationInfo> history;
    for (int i = 0; i < 200; ++i) {
        NotificationInfo info;
        info.app = apps[i % 5];
        info.sender = senders[(i / 5) % 5];
        info.title = "Notification " + std::to_string(i);
        info.body = bodies[(i / 3) % 5];
        info.date = now.addingSeconds(-15.0 * i - 1);
        history.push_back(info);
    }
    return history;
}

NotificationInfo incoming(Date now) {
    NotificationInfo info;
    info.app = "PagerDuty";
    info.sender = "Ops bot";
    info.title = "Checkout";
    info.body = "server down: checkout returns 502";
    info.date = now;
    return info;
}

void runEvaluation(benchmark::State& state, const ChannelRule& rule) {
    const Date now{757382400};
    const auto history = recentHistory(now);
    const auto notification = incoming(now);
    for (auto _ : state)
        benchmark::DoNotOptimize(RuleMatcher::evaluate(rule, notification, history, berlin()));
}

void BM_PlainKeywords(benchmark::State& state) {
    ChannelRule rule;
    rule.keywords = {"urgent", "emergency", "réunion", "down"};
    runEvaluation(state, rule);
}
BENCHMARK(BM_PlainKeywords);

void BM_RegexKeywords(benchmark::State& state) {
    ChannelRule rule;
    rule.usesRegex = true;
    rule.keywords = {"urg(ent|ence)", "\\b5\\d\\d\\b", "down$"};
    runEvaluation(state, rule);
}
BENCHMARK(BM_RegexKeywords);

void BM_ActiveHours(benchmark::State& state) {
    ChannelRule rule;
    rule.activeHours = ActiveHours{ActiveHours::allDays(), 1320, 420};
    runEvaluation(state, rule);
}
BENCHMARK(BM_ActiveHours);

// The expensive case: every one of the 200 history entries lies inside the
// window, so each is checked against the content conditions.
void BM_FullEvaluationWithFrequency(benchmark::State& state) {
    ChannelRule rule;
    rule.apps = {"PagerDuty", "Opsgenie"};
    rule.senders = {"ops"};
    rule.keywords = {"urgent", "down", "réunion"};
    rule.activeHours = ActiveHours{ActiveHours::allDays(), 0, 0};
    rule.frequency = FrequencyCondition{3, 3600};
    runEvaluation(state, rule);
}
BENCHMARK(BM_FullEvaluationWithFrequency);

void BM_FullEvaluationWithRegexFrequency(benchmark::State& state) {
    ChannelRule rule;
    rule.usesRegex = true;
    rule.senders = {"^ops"};
    rule.keywords = {"urg(ent|ence)", "down"};
    rule.activeHours = ActiveHours{ActiveHours::allDays(), 0, 0};
    rule.frequency = FrequencyCondition{3, 3600};
    runEvaluation(state, rule);
}
BENCHMARK(BM_FullEvaluationWithRegexFrequency);

// A user's pathological pattern against a long body is cut off by the time bound.
void BM_CatastrophicPatternIsBounded(benchmark::State& state) {
    ChannelRule rule;
    rule.usesRegex = true;
    rule.keywords = {"(a+)+$"};
    NotificationInfo info;
    info.body = std::string(10000, 'a') + "!";
    for (auto _ : state)
        benchmark::DoNotOptimize(RuleMatcher::evaluate(rule, info, {}, berlin()));
}
BENCHMARK(BM_CatastrophicPatternIsBounded)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace ringwell
