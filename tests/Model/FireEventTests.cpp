#include "Core/Json.h"
#include "Model/FireEvent.h"

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
    event.routingCutShort = true;
    event.escalations = {{1, EscalationAction::webhook, Date{760000031}, false, "HTTP 500"}};
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

// An empty follow-up list stays apart from an absent one.
TEST(FireEventJsonTest, EveryRecordRoundTripsEqual) {
    FireEvent full = fullEvent();
    EXPECT_EQ(roundTrip(full), full);
    FireEvent noFollowUps = minimalEvent();
    noFollowUps.followUpAlarmIDs = std::vector<Uuid>{};
    EXPECT_EQ(roundTrip(noFollowUps), noFollowUps);
    for (auto outcome : FireOutcomes::allCases) {
        FireEvent event = minimalEvent();
        event.outcome = outcome;
        EXPECT_EQ(roundTrip(event), event);
    }
}

TEST(FireEventJsonTest, MissingRequiredOrMistypedKeysFail) {
    const json::Json valid = toJson(minimalEvent());
    for (const char* key : {"id", "receivedAt", "firedAt", "outcome", "isTest"}) {
        json::Json missing = valid;
        missing.erase(key);
        EXPECT_FALSE(decode(json::encode(missing)).ok()) << "missing " << key;
    }
    const std::pair<const char*, json::Json> mistyped[] = {
        {"id", json::Json::array()}, {"receivedAt", "now"},
        {"outcome", "rang"},         {"isTest", 1},
        {"channelID", "nope"},       {"followUpAlarmIDs", {1}},
        {"isTimeSensitive", "yes"},  {"received", {{{"name", 1}}}},
    };
    for (const auto& [key, value] : mistyped) {
        json::Json event = valid;
        event[key] = value;
        EXPECT_FALSE(decode(json::encode(event)).ok()) << key << " = " << value.dump();
    }
}

} // namespace
} // namespace ringwell
