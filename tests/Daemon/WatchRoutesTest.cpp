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
};

// The watchdog's own rules are its unit tests; here its routes.
TEST_F(WatchRoutesTest, WatchesAreAddedShownAndRemovedWithClearErrors) {
    Watchdog watchdog(ctx);
    Api api(ctx, services(&watchdog));

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
    EXPECT_EQ(run(watchdog.check()).size(), 1u);
    auto silent = call(api, "GET", "/v1/watches")["watches"][0];
    EXPECT_EQ(silent["isSilent"], true);
    EXPECT_EQ(silent["silentSince"], silent["since"]);
    EXPECT_EQ(call(api, "GET", "/v1/events")[0]["outcome"], "silent");
    // A send through the API is the traffic that ends the silence.
    call(api, "POST", "/v1/send", {{"app", "signal"}, {"notificationTitle", "Hi"}});
    EXPECT_EQ(call(api, "GET", "/v1/watches")["watches"][0]["isSilent"], false);

    call(api, "DELETE", "/v1/watches/SIGNAL", nullptr, 204);
    EXPECT_EQ(call(api, "DELETE", "/v1/watches/Signal", nullptr, 404)["error"],
              "no watch on Signal");
    EXPECT_TRUE(call(api, "GET", "/v1/watches")["watches"].empty());
}

} // namespace
} // namespace ringwell::testing
