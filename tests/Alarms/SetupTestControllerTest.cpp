#include "Alarms/SetupTestController.h"

#include "Core/Json.h"
#include "TestSupport/Fakes/FakeClock.h"
#include "TestSupport/Fakes/MemoryUserDefaults.h"
#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using testing::at;
using Controller = SetupTestController;

class SetupTestControllerTest : public ::testing::Test {
protected:
    SetupTestControllerTest() {
        token =
            controller.subscribe([this](const Controller::State& state) { seen.push_back(state); });
    }

    // A forwarded input whose title and body are mapped wrongly.
    static ShortcutInputFields badTitleAndBody() {
        return ShortcutInputFields::fromShortcutInput("Alarm\nServer down", "Messages", {}, {},
                                                      "Messages", "no", "Alice", {}, {}, {});
    }
    static ShortcutInputFields good() {
        return ShortcutInputFields::fromShortcutInput("Alarm\nServer down", "Alarm", {},
                                                      "Server down", " Messages ", "no", "Alice",
                                                      {}, {}, {});
    }

    std::optional<json::Json> saved() const { return defaults.value("lastSetupTestResult"); }

    testing::FakeClock clock{at("2026-03-01T09:30:00Z")};
    testing::MemoryUserDefaults defaults;
    Controller controller{defaults, clock};
    std::vector<Controller::State> seen;
    Controller::Token token;
};

TEST_F(SetupTestControllerTest, AReceivedNotificationIsJudgedAndSaved) {
    const Date started = clock.now();
    controller.start(started);
    EXPECT_TRUE(controller.isWaiting());
    clock.advance(42);
    controller.receive(good());

    const auto* received = std::get_if<Controller::Received>(&controller.state());
    ASSERT_NE(received, nullptr);
    EXPECT_EQ(received->test, SetupTest{started});
    EXPECT_EQ(received->app, " Messages "); // as it arrived
    EXPECT_EQ(received->checks, SetupTest{started}.evaluate(good()));
    EXPECT_EQ(saved(), "passed (2026-03-01T09:30:42Z)");
    EXPECT_EQ(seen.size(), 2u);
}

TEST_F(SetupTestControllerTest, UnverifiableChecksAreNotFailures) {
    auto checks = SetupTest{}.evaluate(good());
    checks[2].status = SetupCheck::Status::unverifiable;
    checks[4].status = SetupCheck::Status::failed;
    EXPECT_EQ(Controller::verdict(checks, at("2026-03-01T09:30:00.900Z")),
              "failed: Is Time Sensitive (2026-03-01T09:30:00Z)");
}

// Receiving while idle, after a cancel or after a result changes and saves nothing.
TEST_F(SetupTestControllerTest, ReceiveDoesNothingUnlessATestWaits) {
    controller.receive(good());
    EXPECT_EQ(controller.state(), Controller::State{Controller::Idle{}});

    controller.start(clock.now());
    controller.cancel();
    EXPECT_EQ(controller.state(), Controller::State{Controller::Idle{}});
    controller.receive(good());
    EXPECT_FALSE(saved());

    controller.start(clock.now());
    controller.receive(badTitleAndBody());
    const Controller::State result = controller.state();
    const int writes = defaults.writes;
    controller.receive(good());
    EXPECT_EQ(controller.state(), result);
    EXPECT_EQ(defaults.writes, writes);
}

TEST_F(SetupTestControllerTest, TestingAgainWaitsWithANewStart) {
    controller.start(clock.now());
    controller.receive(badTitleAndBody());
    EXPECT_EQ(saved(), "failed: Title, Body (2026-03-01T09:30:00Z)"); // in check order
    clock.advance(60);
    controller.start(clock.now());
    EXPECT_EQ(controller.state(), Controller::State{Controller::Waiting{SetupTest{clock.now()}}});
    controller.receive(good());
    EXPECT_EQ(saved(), "passed (2026-03-01T09:31:00Z)");
}

TEST_F(SetupTestControllerTest, ObserversHearEveryChangeOnly) {
    controller.cancel(); // already idle
    EXPECT_TRUE(seen.empty());
    controller.start(clock.now());
    controller.cancel();
    EXPECT_EQ(seen.size(), 2u);
    controller.unsubscribe(token);
    controller.start(clock.now());
    EXPECT_EQ(seen.size(), 2u);
}

TEST_F(SetupTestControllerTest, StatesHaveJsonForms) {
    EXPECT_EQ(json::encode(toJson(controller.state())), R"({"state":"idle"})");
    controller.start(Date{1000});
    EXPECT_EQ(json::encode(toJson(controller.state())),
              R"({"state":"waiting","startedAt":1000.0})");
}

} // namespace
} // namespace ringwell
