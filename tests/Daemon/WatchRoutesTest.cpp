// The watch routes on an API wired to fakes with a clock the test moves.

#include "Alarms/Watchdog.h"
#include "Daemon/Api.h"

#include "Alarms/AppTestSupport.h"

#include <gtest/gtest.h>

namespace ringwell::testing {
namespace {

class WatchRoutesTest : public AppTest {
protected:
    json::Json call(Api& api, const std::string& method, const std::string& target,
                    const json::Json& body = nullptr, unsigned status = 200) {
        ApiRequest request = *parseTarget(method, target);
        if (!body.is_null())
            request.body = body.dump();
        ApiResponse response = run(api.handle(std::move(request)));
        EXPECT_EQ(response.status, status) << method << " " << target << ": " << response.body;
        return response.body.empty() ? json::Json() : json::Json::parse(response.body);
    }

    static Api::Services services(Watchdog* watchdog) {
        Api::Services services;
        services.watchdog = watchdog;
        return services;
    }

    std::size_t silentEvents() const {
        return std::count_if(store.events().begin(), store.events().end(),
                             [](const FireEvent& e) { return e.outcome == FireOutcome::silent; });
    }
};

TEST_F(WatchRoutesTest, AMissedWatchIsToldOnceTrafficClearsItAndARestartKeepsLastHeard) {
    auto watchdog = std::make_unique<Watchdog>(ctx);
    Api api(ctx, services(watchdog.get()));

    auto refused = call(api, "POST", "/v1/watches", {{"app", "Signal"}, {"everySeconds", 10}}, 400);
    EXPECT_EQ(refused["error"], "The watch of Signal can't be kept: the interval must be between "
                                "1 minute and 7 days.");
    call(api, "POST", "/v1/watches", {{"app", "Signal"}}, 400);
    call(api, "POST", "/v1/watches", {{"app", "Signal"}, {"everySeconds", 3600}, {"ring", "nope"}},
         404);

    auto added = call(api, "POST", "/v1/watches",
                      {{"app", "Signal"},
                       {"everySeconds", 3 * 3600},
                       {"hours", {{"weekdays", {1, 7}}, {"startMinute", 0}, {"endMinute", 0}}}});
    EXPECT_EQ(added["summary"], "every 3 h, Weekends all day");
    EXPECT_EQ(added["isSilent"], false);
    EXPECT_EQ(added["dueAt"], json::dateValue(clock.now().addingSeconds(3 * 3600)));

    clock.advance(3 * 3600);
    EXPECT_EQ(run(watchdog->check()).size(), 1u);
    clock.advance(3600);
    EXPECT_TRUE(run(watchdog->check()).empty());
    EXPECT_EQ(notices.posted.size(), 1u);
    EXPECT_EQ(silentEvents(), 1u);
    auto silent = call(api, "GET", "/v1/watches")["watches"][0];
    EXPECT_EQ(silent["isSilent"], true);
    EXPECT_EQ(silent["silentSince"], silent["since"]);
    auto history = call(api, "GET", "/v1/events");
    EXPECT_EQ(history[0]["outcome"], "silent");

    call(api, "POST", "/v1/send", {{"app", "signal"}, {"notificationTitle", "Hi"}});
    const Date heard = clock.now();
    EXPECT_EQ(call(api, "GET", "/v1/watches")["watches"][0]["isSilent"], false);

    // A restart: a new watchdog on the same settings.
    watchdog.reset();
    Watchdog restarted(ctx);
    Api again(ctx, services(&restarted));
    auto kept = call(again, "GET", "/v1/watches")["watches"];
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept[0]["lastHeard"], json::dateValue(heard));

    call(again, "DELETE", "/v1/watches/SIGNAL", nullptr, 204);
    call(again, "DELETE", "/v1/watches/Signal", nullptr, 404);
    EXPECT_TRUE(call(again, "GET", "/v1/watches")["watches"].empty());
}

} // namespace
} // namespace ringwell::testing
