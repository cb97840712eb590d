// Routing and preview cost at the sizes Ringwell meets in use: 50 channels and
// the full 200-entry activity log. Targets: one routing under 1 ms, one preview
// of 200 notifications under 50 ms, one trace of 200 notifications through
// all 50 channels at another weekday and time under 50 ms. Hostile channel sets (hundreds of
// catastrophic expressions, thousands of keywords) must keep one routing near
// its matching budget, MatchBudget::routingLimit.
#include "Core/Calendar.h"
#include "Core/Date.h"
#include "Core/MatchBudget.h"
#include "Core/NotificationInfo.h"
#include "Core/Router.h"
#include "Core/RulePreview.h"
#include "Core/Trace.h"
#include "Core/Uuid.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace {

using namespace ringwell;

constexpr int channelCount = 50;
constexpr int historySize = 200;

// 2025-06-02 10:00:00 UTC, a Monday.
const Date now = Date::fromUnixSeconds(1748858400);

MatchBudget::Duration steadyNow() {
    return std::chrono::duration_cast<MatchBudget::Duration>(
        std::chrono::steady_clock::now().time_since_epoch());
}

Calendar benchCalendar() {
    return Calendar::inTimeZone("Europe/Berlin").value();
}

NotificationInfo notificationAt(int index, Date date) {
    static const char* apps[] = {"Mail", "Messages", "Slack", "Phone", "Calendar"};
    static const char* senders[] = {"Alice", "Bob", "Carol", "Dave", "Erin", "Frank"};
    NotificationInfo n;
    n.app = apps[index % 5];
    n.sender = senders[index % 6];
    n.title = "Update " + std::to_string(index);
    n.body = index % 2 == 0 ? "The build server is down again" : "Lunch at noon?";
    n.date = date;
    return n;
}

// Oldest first, one a minute up to `now`.
std::vector<NotificationInfo> recentNotifications() {
    std::vector<NotificationInfo> history;
    history.reserve(historySize);
    for (int i = 0; i < historySize; ++i)
        history.push_back(notificationAt(i, now.addingSeconds(-60.0 * (historySize - i))));
    return history;
}

// 49 channels that each reject the benchmark's notification, in four kinds
// that exercise the different conditions, followed by one that accepts every
// notification, so that the preview simulates routing for each of them.
std::vector<RoutableChannel> channels() {
    std::vector<RoutableChannel> result;
    for (int i = 0; i < channelCount - 1; ++i) {
        ChannelRule rule;
        switch (i % 4) {
        case 0: // plain keywords that the text does not contain
            rule.keywords = {"invoice " + std::to_string(i), "payment", "überfällig"};
            break;
        case 1: // regular expressions that do not match
            rule.usesRegex = true;
            rule.senders = {"^(boss|manager)[0-9]*$"};
            rule.keywords = {"deploy-[0-9]+ failed", "\\bp[0-9] incident\\b"};
            break;
        case 2: // the right app, but outside the active hours
            rule.apps = {"Mail", "Messages"};
            rule.activeHours = ActiveHours{ActiveHours::weekdaysOnly(), 22 * 60, 6 * 60};
            break;
        case 3: // content that passes, and a frequency the history cannot reach
            rule.apps = {"Mail"};
            rule.keywords = {"server"};
            rule.frequency = FrequencyCondition{500, 24 * 3600};
            break;
        }
        result.push_back({Uuid::random(), true, rule});
    }
    ChannelRule catchAll;
    catchAll.cooldownSeconds = 300;
    result.push_back({Uuid::random(), true, catchAll});
    return result;
}

void BM_RouteThroughFiftyChannels(benchmark::State& state) {
    const Calendar calendar = benchCalendar();
    const auto routable = channels();
    const auto history = recentNotifications();
    NotificationInfo incoming = notificationAt(0, now); // Mail, "server is down"

    MatchBudget check(MatchBudget::routingLimit, steadyNow);
    if (Router::route(incoming, routable, history, calendar, check) !=
        RouteResult::channel(routable.back().id)) {
        state.SkipWithError("the last channel should win");
        return;
    }
    for (auto _ : state) {
        MatchBudget budget(MatchBudget::routingLimit, steadyNow);
        auto result = Router::route(incoming, routable, history, calendar, budget);
        benchmark::DoNotOptimize(result);
    }
}
BENCHMARK(BM_RouteThroughFiftyChannels)->Unit(benchmark::kMicrosecond);

// 300 channels, each with a distinct expression that backtracks
// catastrophically on the notification's text, before a channel that takes
// everything. Each search alone stops at its step limit, so without a budget
// one routing would take seconds.
std::vector<RoutableChannel> hostileChannels() {
    std::vector<RoutableChannel> result;
    for (int i = 0; i < 300; ++i) {
        ChannelRule rule;
        rule.usesRegex = true;
        rule.keywords = {"(a+)+b{" + std::to_string(i + 1) + "}"};
        result.push_back({Uuid::random(), true, rule});
    }
    result.push_back({Uuid::random(), true, ChannelRule{}});
    return result;
}

void BM_RouteThroughThreeHundredCatastrophicPatterns(benchmark::State& state) {
    const Calendar calendar = benchCalendar();
    const auto routable = hostileChannels();
    NotificationInfo incoming = notificationAt(0, now);
    incoming.body = std::string(40, 'a') + "!";
    std::size_t cutShort = 0;
    for (auto _ : state) {
        MatchBudget budget(MatchBudget::routingLimit, steadyNow);
        auto result = Router::route(incoming, routable, {}, calendar, budget);
        benchmark::DoNotOptimize(result);
        cutShort = budget.cutShortCount();
    }
    state.counters["patternsCutShort"] = static_cast<double>(cutShort);
}
BENCHMARK(BM_RouteThroughThreeHundredCatastrophicPatterns)->Unit(benchmark::kMillisecond);

// One rule with 10,000 expression keywords that never match (rules saved
// before the per-rule limits existed can hold that many).
void BM_RouteTenThousandRegexKeywords(benchmark::State& state) {
    const Calendar calendar = benchCalendar();
    ChannelRule rule;
    rule.usesRegex = true;
    for (int i = 0; i < 10000; ++i)
        rule.keywords.push_back("word" + std::to_string(i) + "[0-9]");
    const std::vector<RoutableChannel> routable{{Uuid::random(), true, rule}};
    const NotificationInfo incoming = notificationAt(0, now);
    for (auto _ : state) {
        MatchBudget budget(MatchBudget::routingLimit, steadyNow);
        auto result = Router::route(incoming, routable, {}, calendar, budget);
        benchmark::DoNotOptimize(result);
    }
}
BENCHMARK(BM_RouteTenThousandRegexKeywords)->Unit(benchmark::kMillisecond);

void BM_PreviewTwoHundredNotifications(benchmark::State& state) {
    const Calendar calendar = benchCalendar();
    const auto routable = channels();
    auto newestFirst = recentNotifications();
    std::reverse(newestFirst.begin(), newestFirst.end());

    for (auto _ : state) {
        auto entries = RulePreview::run(routable.back().id, routable, newestFirst, calendar);
        benchmark::DoNotOptimize(entries);
    }
}
BENCHMARK(BM_PreviewTwoHundredNotifications)->Unit(benchmark::kMillisecond);

void BM_TraceTwoHundredNotificationsAtSunday3am(benchmark::State& state) {
    const Calendar calendar = benchCalendar().pinnedTo({1, 3, 0});
    std::vector<NamedChannel> named;
    for (const auto& channel : channels())
        named.push_back({channel, "Channel"});
    auto newestFirst = recentNotifications();
    std::reverse(newestFirst.begin(), newestFirst.end());

    for (auto _ : state) {
        MatchBudget unlimited = MatchBudget::unlimited();
        auto report = Trace::run(named, newestFirst, newestFirst.size(), calendar, unlimited);
        benchmark::DoNotOptimize(report);
    }
}
BENCHMARK(BM_TraceTwoHundredNotificationsAtSunday3am)->Unit(benchmark::kMillisecond);

} // namespace
