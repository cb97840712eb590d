#include "Core/Router.h"

#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

namespace ringwell {

// Readable failure messages for verdicts.
void PrintTo(const RouteResult& result, std::ostream* out) {
    static const char* kinds[] = {"channel", "disabled", "noMatch"};
    *out << kinds[static_cast<int>(result.kind())] << "("
         << (result.id() ? result.id()->toString() : "") << ")";
}

namespace {

using testing::at;
using testing::calendarIn;

class RouterTest : public ::testing::Test {
protected:
    static ChannelRule anyNotification() { return {}; }
    static ChannelRule fromApp(std::string app) {
        ChannelRule rule;
        rule.apps = {std::move(app)};
        return rule;
    }
    RoutableChannel channel(ChannelRule rule, bool enabled = true) {
        return {Uuid::random(), enabled, std::move(rule)};
    }
    RouteResult route(const std::vector<RoutableChannel>& channels,
                      const std::vector<NotificationInfo>& history = {}) {
        return Router::route(notification, channels, history, calendar);
    }

    Calendar calendar = calendarIn("Europe/Berlin");
    NotificationInfo notification{"Mail", "Alice",      "Server",
                                  "",     "down again", at("2025-06-02T10:00:00Z"),
                                  false,  std::nullopt};
};

TEST_F(RouterTest, NoChannelsOrNothingMatchingIsNoMatch) {
    EXPECT_EQ(route({}), RouteResult::noMatch());
    EXPECT_EQ(route({channel(fromApp("Slack")), channel(fromApp("Phone"), false)}),
              RouteResult::noMatch());
}

TEST_F(RouterTest, FirstEnabledMatchWinsAndDisabledMatchesDoNotHideIt) {
    auto disabled = channel(anyNotification(), false);
    auto first = channel(fromApp("Mail"));
    auto second = channel(anyNotification());
    EXPECT_EQ(route({channel(fromApp("Slack")), disabled, first, second, disabled}),
              RouteResult::channel(first.id));
}

TEST_F(RouterTest, EarliestDisabledMatchIsReportedWhenNothingEnabledMatches) {
    auto skippedMismatch = channel(fromApp("Slack"), false);
    auto first = channel(anyNotification(), false);
    auto second = channel(fromApp("mail"), false);
    auto enabledMismatch = channel(fromApp("Phone"));
    EXPECT_EQ(route({skippedMismatch, first, second, enabledMismatch}),
              RouteResult::disabled(first.id));
}

} // namespace
} // namespace ringwell
