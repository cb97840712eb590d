#include "Core/RouteExplanation.h"

#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using testing::at;
using testing::calendarIn;
using Outcome = RecordedRoute::Outcome;
using Role = RouteExplanation::ChannelCheck::Role;
using StepKind = RouteExplanation::Step::Kind;

class RouteExplanationTest : public ::testing::Test {
protected:
    RouteExplanationTest() { prod.routable.rule.cooldownSeconds = 300; }

    static NamedChannel named(const char* name, std::vector<std::string> apps, bool enabled) {
        ChannelRule rule;
        rule.apps = std::move(apps);
        return {{Uuid::random(), enabled, std::move(rule)}, name};
    }

    RecordedRoute event(const char* id, const char* app, Date date, Outcome outcome,
                        const NamedChannel* channel = nullptr) const {
        RecordedRoute route;
        route.eventID = id;
        route.notification = {app, "ops", "Disk full", "", "", date, false, std::nullopt};
        route.outcome = outcome;
        if (channel) {
            route.channelID = channel->routable.id;
            route.channelName = channel->name;
        }
        return route;
    }

    RouteExplanation explain(const RecordedRoute& event, const std::vector<RecordedRoute>& earlier,
                             const std::vector<NamedChannel>& channels) const {
        MatchBudget unlimited = MatchBudget::unlimited();
        return RouteExplainer::explain(event, earlier, {}, channels, calendar, unlimited);
    }

    NamedChannel prod = named("Prod incidents", {"PagerDuty"}, true);
    NamedChannel mail = named("Mail", {"Mail"}, false);
    NamedChannel catchAll = named("Everything", {}, true);
    Calendar calendar = calendarIn("Europe/Berlin");
    Date now = at("2025-06-02T10:00:00Z");
};

TEST_F(RouteExplanationTest, EveryChannelIsExplainedInOrderUpToTheWinner) {
    auto explanation =
        explain(event("e1", "PagerDuty", now, Outcome::fired, &prod), {}, {mail, prod, catchAll});
    std::vector<Role> roles;
    for (const auto& channel : explanation.channels)
        roles.push_back(channel.role);
    EXPECT_EQ(roles, (std::vector<Role>{Role::noMatch, Role::wins, Role::notReached}));
    EXPECT_FALSE(explanation.channels[0].evaluation.checks[0].passed);
    EXPECT_EQ(explanation.winner, prod.routable.id);
    EXPECT_EQ(explanation.step.kind, StepKind::rang);
    EXPECT_EQ(explanation.step.text,
              "Rang \u201CProd incidents\u201D: the first enabled channel whose rule matched.");
    EXPECT_FALSE(explanation.difference);
}

TEST_F(RouteExplanationTest, CooldownAndAlreadyActiveNameTheEarlierRing) {
    auto first = event("ring", "PagerDuty", now, Outcome::fired, &prod);
    auto test = event("test", "PagerDuty", now.addingSeconds(30), Outcome::fired, &prod);
    test.isTest = true; // a test ring starts no cooldown
    auto cooled =
        explain(event("e2", "PagerDuty", now.addingSeconds(60), Outcome::cooledDown, &prod),
                {test, first}, {prod});
    EXPECT_EQ(cooled.step.kind, StepKind::cooldown);
    EXPECT_EQ(cooled.step.earlierEventID, "ring");
    EXPECT_EQ(cooled.step.text, "Cooldown: ops had already rung \u201CProd incidents\u201D at "
                                "2025-06-02T10:00:00Z, within its cooldown of 300 s.");
    EXPECT_FALSE(cooled.difference);

    auto coalesced =
        explain(event("e3", "PagerDuty", now.addingSeconds(400), Outcome::coalesced, &prod),
                {first}, {prod});
    EXPECT_EQ(coalesced.step.kind, StepKind::alreadyActive);
    EXPECT_EQ(coalesced.step.earlierEventID, "ring");
    EXPECT_FALSE(coalesced.difference);
}

TEST_F(RouteExplanationTest, EachOutcomeHasItsDecidingStep) {
    struct Case {
        Outcome outcome;
        StepKind step;
    };
    for (auto [outcome, step] :
         {Case{Outcome::notAuthorized, StepKind::notAuthorized},
          Case{Outcome::limit, StepKind::limit}, Case{Outcome::failed, StepKind::failed},
          Case{Outcome::setupTest, StepKind::notRouted},
          Case{Outcome::ignored, StepKind::notRouted}}) {
        auto explanation = explain(event("e", "PagerDuty", now, outcome, &prod), {}, {prod});
        EXPECT_EQ(explanation.step.kind, step) << static_cast<int>(outcome);
        EXPECT_FALSE(explanation.difference) << static_cast<int>(outcome);
    }
    auto skipped = explain(event("e", "Mail", now, Outcome::skipped, &mail), {}, {mail, prod});
    EXPECT_EQ(skipped.step.kind, StepKind::disabled);
    EXPECT_EQ(skipped.channels[0].role, Role::disabledMatch);
    EXPECT_FALSE(skipped.difference);
    auto none = explain(event("e", "Slack", now, Outcome::noMatch), {}, {mail, prod});
    EXPECT_EQ(none.step.kind, StepKind::noMatch);
    EXPECT_FALSE(none.difference);
}

TEST_F(RouteExplanationTest, TodaysChannelsDecidingDifferentlyNameTheChannelThatChanged) {
    // Prod rang then; its app list was edited since.
    NamedChannel edited = prod;
    edited.routable.rule.apps = {"Opsgenie"};
    auto recorded = event("e", "PagerDuty", now, Outcome::fired, &prod);
    auto changed = explain(recorded, {}, {edited, catchAll});
    EXPECT_EQ(changed.difference,
              "Today's channels would decide differently: \u201CEverything\u201D "
              "would ring, where at the time \u201CProd incidents\u201D rang.");
    EXPECT_EQ(changed.changedChannel, "Prod incidents");

    // A catch-all moved in front of it takes over.
    auto overtaken = explain(recorded, {}, {catchAll, prod});
    EXPECT_EQ(overtaken.changedChannel, "Everything");

    // Deleted since: the record's name is kept.
    auto deleted = explain(recorded, {}, {});
    EXPECT_EQ(deleted.changedChannel, "Prod incidents");
    EXPECT_EQ(deleted.difference, "Today's channels would decide differently: no channel would "
                                  "match, where at the time \u201CProd incidents\u201D rang.");
}

} // namespace
} // namespace ringwell
