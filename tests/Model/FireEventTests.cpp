#include "Model/FireEvent.h"
#include "Core/Json.h"
#include "ModelTestSupport.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

FireEvent fullEvent() {
    FireEvent event;
    event.id = Uuid::random();
    event.channelID = Uuid::random();
    event.channelName = "Family";
    event.alarmID = Uuid::random();
    event.followUpAlarmIDs = std::vector<Uuid>{Uuid::random(), Uuid::random()};
    event.app = "WhatsApp";
    event.sender = "Mum";
    event.title = "Mum";
    event.subtitle = "Family group";
    event.body = "Call me \xF0\x9F\x93\x9E";
    event.isTimeSensitive = true;
    event.received = std::vector<ReceivedField>{{"Title", "Mum"}, {"Body", ""}};
    event.receivedAt = Date{760000000.5};
    event.firedAt = Date{760000001.75};
    event.outcome = FireOutcome::failed;
    event.errorMessage = "The alarm service is not authorised.";
    event.isTest = true;
    return event;
}

FireEvent minimalEvent() {
    FireEvent event;
    event.id = Uuid::random();
    event.receivedAt = Date{1};
    event.firedAt = Date{2};
    event.outcome = FireOutcome::noMatch;
    return event;
}

Result<FireEvent> decode(const std::string& text) {
    return json::decode(text, [](const json::Json& value) { return fireEventFromJson(value); });
}

FireEvent roundTrip(const FireEvent& event) {
    auto decoded = decode(json::encode(toJson(event)));
    EXPECT_TRUE(decoded.ok()) << (decoded.ok() ? "" : decoded.error().message);
    return decoded.ok() ? decoded.value() : FireEvent{};
}

std::vector<std::string> keysOf(const json::Json& object) {
    std::vector<std::string> keys;
    for (const auto& item : object.items())
        keys.push_back(item.key());
    return keys;
}

TEST(FireEventJsonTest, AbsentOptionalsAreLeftOut) {
    json::Json encoded = toJson(minimalEvent());
    EXPECT_EQ(keysOf(encoded),
              (std::vector<std::string>{"id", "receivedAt", "firedAt", "outcome", "isTest"}));
    EXPECT_EQ(encoded["outcome"], "noMatch");
    EXPECT_EQ(encoded["isTest"], false);
    EXPECT_EQ(encoded["receivedAt"], 1.0);
}

TEST(FireEventJsonTest, EveryRecordRoundTripsEqual) {
    FireEvent full = fullEvent();
    EXPECT_EQ(roundTrip(full), full);
    FireEvent minimal = minimalEvent();
    EXPECT_EQ(roundTrip(minimal), minimal);
    for (auto outcome : FireOutcomes::allCases) {
        FireEvent event = minimalEvent();
        event.outcome = outcome;
        EXPECT_EQ(roundTrip(event), event);
    }
}

TEST(FireEventJsonTest, EmptyFollowUpListStaysPresent) {
    FireEvent event = minimalEvent();
    event.followUpAlarmIDs = std::vector<Uuid>{};
    json::Json encoded = toJson(event);
    ASSERT_TRUE(encoded.contains("followUpAlarmIDs"));
    EXPECT_EQ(encoded["followUpAlarmIDs"], json::Json::array());
    FireEvent decoded = roundTrip(event);
    ASSERT_TRUE(decoded.followUpAlarmIDs.has_value());
    EXPECT_TRUE(decoded.followUpAlarmIDs->empty());
}

TEST(FireEventJsonTest, UnknownOutcomeFails) {
    auto result = decode(R"({"id":"0B3C5D7E-1F20-4A31-8B42-5C6D7E8F9A0B","receivedAt":1,)"
                         R"("firedAt":2,"outcome":"rang","isTest":false})");
    ASSERT_FALSE(result.ok());
    EXPECT_NE(result.error().message.find("rang"), std::string::npos);
}

TEST(FireEventJsonTest, MissingOrMistypedRequiredKeysFail) {
    const json::Json valid = toJson(minimalEvent());
    for (const char* key : {"id", "receivedAt", "firedAt", "outcome", "isTest"}) {
        json::Json missing = valid;
        missing.erase(key);
        EXPECT_FALSE(decode(json::encode(missing)).ok()) << "missing " << key;
        json::Json mistyped = valid;
        mistyped[key] = json::Json::array();
        EXPECT_FALSE(decode(json::encode(mistyped)).ok()) << "mistyped " << key;
    }
}

TEST(FireEventJsonTest, MistypedOptionalKeysFail) {
    const json::Json valid = toJson(minimalEvent());
    const std::pair<const char*, json::Json> cases[] = {
        {"channelID", "nope"},
        {"channelName", 3},
        {"alarmID", 12},
        {"followUpAlarmIDs", "x"},
        {"followUpAlarmIDs", {1}},
        {"app", false},
        {"isTimeSensitive", "yes"},
        {"received", {{{"name", 1}}}},
    };
    for (const auto& [key, value] : cases) {
        json::Json event = valid;
        event[key] = value;
        EXPECT_FALSE(decode(json::encode(event)).ok()) << key << " = " << value.dump();
    }
}

TEST(FireEventJsonTest, HandWrittenEventDecodes) {
    auto result = decode(R"({"id":"0b3c5d7e-1f20-4a31-8b42-5c6d7e8f9a0b",)"
                         R"("channelID":"11111111-2222-4333-8444-555555555555",)"
                         R"("channelName":"Work","followUpAlarmIDs":[],"app":"Slack",)"
                         R"("sender":"Boss","received":[{"name":"App","value":"Slack"}],)"
                         R"("receivedAt":760000000,"firedAt":760000000.5,"outcome":"fired",)"
                         R"("isTest":false,"somethingNew":1})");
    ASSERT_TRUE(result.ok()) << result.error().message;
    const FireEvent& event = result.value();
    EXPECT_EQ(event.id.toString(), "0B3C5D7E-1F20-4A31-8B42-5C6D7E8F9A0B");
    EXPECT_EQ(event.channelName, "Work");
    EXPECT_EQ(event.outcome, FireOutcome::fired);
    EXPECT_FALSE(event.title.has_value());
    EXPECT_EQ(event.received->at(0), (ReceivedField{"App", "Slack"}));
    EXPECT_EQ(event.firedAt, Date{760000000.5});
}

TEST(FireEventTest, NotificationUsesEmptyTextsAndFalseForAbsentValues) {
    FireEvent event = minimalEvent();
    event.app = "Mail";
    NotificationInfo notification = event.notification();
    EXPECT_EQ(notification.app, "Mail");
    EXPECT_EQ(notification.sender, "");
    EXPECT_EQ(notification.title, "");
    EXPECT_EQ(notification.subtitle, "");
    EXPECT_EQ(notification.body, "");
    EXPECT_EQ(notification.date, event.receivedAt);
    EXPECT_FALSE(notification.isTimeSensitive);
    EXPECT_FALSE(notification.received.has_value());
}

} // namespace
} // namespace ringwell
