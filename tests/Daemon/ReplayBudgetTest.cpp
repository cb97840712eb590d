#include "Alarms/AppTestSupport.h"
#include "Alarms/NotificationDispatcher.h"
#include "Core/Json.h"
#include "Daemon/ApiRoutes.h"

#include <gtest/gtest.h>

#include <chrono>

namespace ringwell {
namespace {

// Explaining an event and replaying the history run the rules again, so they
// stop matching patterns once a routing's budget is spent, as routing does,
// and say so.
class ReplayBudgetTest : public testing::AppTest {
protected:
    json::Json answer(ApiResult (*route)(const RouteRequest&, ApiState&),
                      std::vector<std::pair<std::string_view, std::string>> parameters = {}) {
        auto result = route(RouteRequest{message, std::move(parameters)}, state);
        EXPECT_TRUE(result) << (result ? "" : result.error().message);
        return result ? json::parse(result.value().body).value() : json::Json();
    }

    ApiRequest message;
    ApiServices services;
    ApiState state{ctx, services};
};

TEST_F(ReplayBudgetTest, WhyAndTraceStopMatchingWhenTheBudgetIsSpent) {
    change(urgent().id, [](Channel& c) { c.rule.senders = {"Alice"}; });
    const FireEvent event = run(NotificationDispatcher::handle(ctx, send("Mail", "Alice")));
    ASSERT_EQ(event.outcome, FireOutcome::fired);
    const std::string id = event.id.toString();
    EXPECT_EQ(answer(routes::why, {{"event", id}})["cutShort"], false);
    EXPECT_EQ(answer(routes::trace)["rings"], 1);

    // Every reading of the matching clock comes a second after the last.
    MatchBudget::Duration spent{};
    ctx.matchingClock = [&] { return spent += std::chrono::seconds(1); };
    json::Json why = answer(routes::why, {{"event", id}});
    EXPECT_EQ(why["cutShort"], true);
    EXPECT_EQ(why["channels"][0]["matches"], false);
    json::Json trace = answer(routes::trace);
    EXPECT_EQ(trace["cutShort"], true);
    EXPECT_EQ(trace["rings"], 0);
}

} // namespace
} // namespace ringwell
