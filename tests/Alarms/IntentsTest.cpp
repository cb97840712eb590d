#include "Core/Json.h"
#include "Intents/ChannelEntity.h"
#include "Intents/RingChannelIntent.h"
#include "Intents/SendToRingwellIntent.h"

#include "AppTestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ringwell {
namespace {

using testing::AppTest;
using testing::at;

// MARK: Send

class SendToRingwellIntentTest : public AppTest {};

TEST_F(SendToRingwellIntentTest, PerformRunsTheDispatcherWithTheNormalisedInput) {
    SendToRingwellIntent intent;
    intent.notification = "Mom\ncall me";
    intent.app = "Messages";
    intent.name = "Mom";
    const FireEvent event = run(intent.perform(ctx));
    EXPECT_EQ(event.outcome, FireOutcome::fired);
    EXPECT_EQ(event.title, "Mom");
    EXPECT_EQ(event.body, "call me");
    EXPECT_EQ(event.sender, "Mom");
    EXPECT_EQ(event.received->at(0), (ReceivedField{"Notification", "Mom\ncall me"}));
    EXPECT_EQ(store.events().front(), event);
}

TEST_F(SendToRingwellIntentTest, ItsJsonFormUsesThePropertyNames) {
    const auto intent = sendIntentFromJson(
        json::Json{{"notificationTitle", "Mom"}, {"app", "Messages"}, {"associatedContent", "x"}});
    EXPECT_EQ(intent.notificationTitle, "Mom");
    EXPECT_FALSE(intent.notification);
    EXPECT_EQ(sendIntentFromJson(toJson(intent)), intent);
}

TEST_F(SendToRingwellIntentTest, ANonTextParameterOrAnUnknownFieldIsADecodeError) {
    EXPECT_EQ(sendIntentFromJson(json::Json{{"sender", nullptr}}), SendToRingwellIntent{});
    EXPECT_THROW(sendIntentFromJson(json::Json{{"app", 3}}), json::DecodeError);
    EXPECT_THROW(sendIntentFromJson(json::Json::array()), json::DecodeError);
    EXPECT_THROW(sendIntentFromJson(json::Json{{"", "x"}}), json::DecodeError);
    // A "title" would otherwise be dropped without a word.
    try {
        sendIntentFromJson(json::Json{{"app", "Signal"}, {"title", "Mom"}});
        ADD_FAILURE() << "an unknown field was accepted";
    } catch (const json::DecodeError& error) {
        EXPECT_THAT(error.what(), ::testing::StartsWith("unknown field \"title\" (did you mean "
                                                        "\"notificationTitle\"?); the fields are "
                                                        "notification, notificationTitle,"));
    }
}

// MARK: Ring

class RingChannelIntentTest : public AppTest {
protected:
    static RingChannelIntent ring(const Uuid& channel) {
        RingChannelIntent intent;
        intent.channel = channel;
        return intent;
    }
};

// With text and a time it rings them; without, under the channel's name and now.
TEST_F(RingChannelIntentTest, RingsTheChannelWithTheGivenTextOrItsName) {
    RingChannelIntent intent{urgent().id, "Server down", std::nullopt, "Disk full",
                             at("2026-03-01T09:00:00Z")};
    const FireEvent event = run(intent.perform(ctx));
    EXPECT_EQ(event.outcome, FireOutcome::fired);
    EXPECT_EQ(event.receivedAt, at("2026-03-01T09:00:00Z"));
    EXPECT_FALSE(event.isTest);
    const Channel work = store.addChannel(std::string("Work"), ChannelRule{});
    const FireEvent bare = run(ring(work.id).perform(ctx));
    EXPECT_EQ(bare.outcome, FireOutcome::fired);
    EXPECT_EQ(bare.receivedAt, clock.now());
    EXPECT_EQ(service.scheduled.front().configuration.attributes.presentation.alert.title,
              "Server down: Disk full");
    EXPECT_EQ(service.scheduled.back().configuration.attributes.presentation.alert.title, "Work");
}

TEST_F(RingChannelIntentTest, ADeletedChannelFailsAndLogsNothing) {
    const Uuid gone = urgent().id;
    store.deleteChannel(gone);
    try {
        run(ring(gone).perform(ctx));
        ADD_FAILURE() << "no error";
    } catch (const RingwellAlarmError& error) {
        EXPECT_EQ(error.kind(), RingwellAlarmError::Kind::channelNotFound);
        EXPECT_STREQ(error.what(),
                     "Channel no longer exists. Pick a different channel in this automation.");
    }
    EXPECT_TRUE(store.events().empty());
    EXPECT_TRUE(service.calls.empty());
}

// MARK: Channel query

class ChannelQueryTest : public AppTest {
protected:
    static std::vector<std::string> names(const std::vector<ChannelEntity>& entities) {
        std::vector<std::string> out;
        out.reserve(entities.size());
        for (const auto& entity : entities)
            out.push_back(entity.name);
        return out;
    }
};

// Search ignores case and diacritics; lists follow the store's order.
TEST_F(ChannelQueryTest, SearchIgnoresCaseAndDiacriticsAndListsFollowTheStoresOrder) {
    const Channel work = store.addChannel(std::string("Work"), ChannelRule{});
    store.addChannel(std::string("Café alerts"), ChannelRule{});
    EXPECT_EQ(names(ChannelQuery::entities(store, "urg")), std::vector<std::string>{"Urgent"});
    EXPECT_EQ(names(ChannelQuery::entities(store, "CAFE")),
              std::vector<std::string>{"Café alerts"});
    EXPECT_TRUE(ChannelQuery::entities(store, "home").empty());
    EXPECT_EQ(names(ChannelQuery::suggestedEntities(store)),
              (std::vector<std::string>{"Urgent", "Work", "Café alerts"}));
    EXPECT_EQ(names(ChannelQuery::entities(
                  store, std::vector<Uuid>{work.id, urgent().id, Uuid::random()})),
              (std::vector<std::string>{"Urgent", "Work"}));
}

} // namespace
} // namespace ringwell
