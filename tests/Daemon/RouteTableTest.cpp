#include "Daemon/RouteTable.h"

#include <gtest/gtest.h>

#include <string>

namespace ringwell {
namespace {

ApiResult answer(const RouteRequest&, ApiState&) {
    return ApiResponse::noContent();
}

const Route rows[] = {
    {"GET", "/v1/channels/{channel}", answer},
    {"PUT", "/v1/channels/{id}", answer},
    {"POST", "/v1/channels/{id}/move", answer},
};

TEST(RouteTableTest, PathParametersAreTakenFromTheirSegments) {
    auto match = matchRoute(rows, "POST", "/v1//channels/A%20B/move/");
    ASSERT_EQ(match.route, &rows[2]);
    ASSERT_EQ(match.parameters.size(), 1u);
    EXPECT_EQ(match.parameters[0].first, "id");
    EXPECT_EQ(match.parameters[0].second, "A%20B");
}

TEST(RouteTableTest, AKnownPathWithAnotherMethodNamesTheMethodsItTakes) {
    auto other = matchRoute(rows, "DELETE", "/v1/channels/x");
    EXPECT_EQ(other.route, nullptr);
    EXPECT_EQ(other.allowed, "GET, PUT");
    auto unknown = matchRoute(rows, "GET", "/v1/channels/x/y");
    EXPECT_EQ(unknown.route, nullptr);
    EXPECT_EQ(unknown.allowed, "");
}

// An earlier row with a parameter would silently take a later row's requests.
TEST(RouteTableTest, EveryRowOfTheApiIsReachable) {
    for (const auto& route : apiRoutes()) {
        auto match = matchRoute(apiRoutes(), route.method, route.pattern);
        EXPECT_EQ(match.route, &route) << route.method << " " << route.pattern;
    }
}

} // namespace
} // namespace ringwell
