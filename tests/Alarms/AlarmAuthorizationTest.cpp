#include "Alarms/AlarmAuthorization.h"

#include "TestSupport/Fakes/FakeAlarmService.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using State = AlarmAuthorizationState;

class AlarmAuthorizationTest : public ::testing::Test {
protected:
    AlarmAuthorizationTest() { service.state = State::notDetermined; }

    testing::FakeAlarmService service;
};

TEST_F(AlarmAuthorizationTest, ObservingFollowsEveryChangeOfTheService) {
    service.state = State::denied;
    AlarmAuthorization authorization(service);
    EXPECT_EQ(authorization.state(), State::denied);
    std::vector<State> seen;
    auto token = authorization.subscribe([&](State state) { seen.push_back(state); });

    service.state = State::authorized; // changed before observing started
    authorization.observe();
    EXPECT_EQ(authorization.state(), State::authorized);

    service.setAuthorization(State::denied);
    service.setAuthorization(State::denied); // no change, no news
    service.setAuthorization(State::authorized);
    EXPECT_EQ(seen, (std::vector<State>{State::authorized, State::denied, State::authorized}));
    authorization.unsubscribe(token);
}

TEST_F(AlarmAuthorizationTest, ObservingTwiceFollowsOnceUntilDestroyed) {
    {
        AlarmAuthorization authorization(service);
        authorization.observe();
        authorization.observe();
        EXPECT_EQ(service.authorizationObserverCount(), 1u);
    }
    EXPECT_EQ(service.authorizationObserverCount(), 0u);
    service.setAuthorization(State::authorized); // must not reach the destroyed object
}

} // namespace
} // namespace ringwell
