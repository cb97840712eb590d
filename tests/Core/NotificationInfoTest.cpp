#include "Core/NotificationInfo.h"

#include "Core/Json.h"
#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using testing::at;
using Text = std::optional<std::string>;

// Arguments in the order the Send intent passes them.
struct Input {
    Text notification, title, subtitle, body, app, timeSensitive, sender, recipients,
        associatedContent, name;
    ShortcutInputFields fields() const {
        return ShortcutInputFields::fromShortcutInput(notification, title, subtitle, body, app,
                                                      timeSensitive, sender, recipients,
                                                      associatedContent, name);
    }
};

TEST(ShortcutInputTest, BlankValuesAreAbsentAndOthersKeptUntrimmed) {
    Input input;
    input.app = " Messages ";
    input.title = " \n ";
    input.sender = "   ";
    input.name = "Mum";
    input.recipients = "me";
    auto fields = input.fields();
    EXPECT_EQ(fields.app, " Messages ");
    EXPECT_FALSE(fields.title);
    EXPECT_EQ(fields.sender, "Mum");
    EXPECT_EQ(fields.received[7], (ReceivedField{"Recipients", "me"}));
    EXPECT_EQ(fields.received[1], (ReceivedField{"Title", " \n "}));
    EXPECT_EQ(fields.notification(Date{}).app, "Messages");
}

TEST(ShortcutInputTest, TextsAreBoundedAfterTrimmingAtACharacterBoundary) {
    const std::size_t limit = ShortcutInputFields::textLimit;
    Input input;
    input.body = std::string(limit - 1, 'b') + "\u00e9" + "tail"; // é straddles the limit
    input.title = "  " + std::string(limit, 't') + "\n";          // fits once trimmed: kept as sent
    input.recipients = std::string(3 * limit, 'r');
    auto fields = input.fields();
    EXPECT_EQ(fields.body, std::string(limit - 1, 'b'));
    EXPECT_EQ(fields.title, input.title);
    EXPECT_EQ(fields.received[7].value, std::string(limit, 'r'));

    auto info = fields.notification(Date{});
    EXPECT_EQ(info.title, std::string(limit, 't'));
    EXPECT_EQ(info.body.size(), limit - 1);
    auto direct = NotificationInfo::fromShortcutInput(std::nullopt, std::string(2 * limit, 's'),
                                                      std::nullopt, std::nullopt, std::nullopt,
                                                      std::nullopt, std::nullopt, Date{});
    EXPECT_EQ(direct.sender.size(), limit);
}

// A CR LF does not split; a title or body that arrived is not replaced.
TEST(ShortcutInputTest, WholeNotificationTextSplitsAtTheFirstLineFeedOnly) {
    const struct {
        const char* notification;
        Text title, body;
    } cases[] = {
        {"Alice\nHi there\nsecond line", "Alice", "Hi there\nsecond line"},
        {"\nHi", std::nullopt, "Hi"},
        {"Only a title", "Only a title", std::nullopt},
        {"A\r\nB", "A\r\nB", std::nullopt},
        {"A\r\nB\nC", "A\r\nB", "C"},
    };
    for (const auto& c : cases) {
        Input input;
        input.notification = c.notification;
        auto fields = input.fields();
        EXPECT_EQ(fields.title, c.title) << c.notification;
        EXPECT_EQ(fields.body, c.body) << c.notification;
        EXPECT_FALSE(fields.subtitle);
    }
    Input given;
    given.notification = "Alice\nHi";
    given.body = "Real body";
    EXPECT_FALSE(given.fields().title);
    EXPECT_EQ(given.fields().body, "Real body");
}

TEST(NotificationInfoTest, YesNoAcceptsOnlyYesTrueAndOne) {
    for (const char* yes : {" YES ", "true", "True", "1", "\nyes\t"})
        EXPECT_TRUE(NotificationInfo::parseYesNo(std::string(yes))) << yes;
    for (const char* no : {"Yes.", "on", "y", "false", "", "0", "11"})
        EXPECT_FALSE(NotificationInfo::parseYesNo(std::string(no))) << no;
    EXPECT_FALSE(NotificationInfo::parseYesNo(std::nullopt));
}

TEST(NotificationInfoTest, DirectConstructionFallsBackToNow) {
    auto info = NotificationInfo::fromShortcutInput(" Mail ", std::nullopt, "Hi", std::nullopt,
                                                    std::nullopt, "2025-01-02", "yes", Date{42});
    EXPECT_EQ(info.app, "Mail");
    EXPECT_EQ(info.date, Date{42});
    EXPECT_TRUE(info.isTimeSensitive);
    EXPECT_FALSE(info.received);

    info = NotificationInfo::fromShortcutInput(std::nullopt, std::nullopt, std::nullopt,
                                               std::nullopt, std::nullopt, "2025-01-02T03:04:05Z",
                                               std::nullopt, Date{42});
    EXPECT_EQ(info.date, at("2025-01-02T03:04:05Z"));
}

TEST(NotificationInfoTest, CallKindAndFromFollowTheNotification) {
    NotificationInfo call;
    call.app = "phone";
    EXPECT_EQ(call.callKind(), CallKind::incoming);
    call.app = "Phone";
    call.body = "Missed call";
    EXPECT_EQ(call.callKind(), CallKind::missed);
    call.app = "Phone Pal";
    EXPECT_FALSE(call.callKind());
    NotificationInfo info;
    info.title = "Bob";
    EXPECT_EQ(info.from(), "Bob");
    info.sender = "Alice";
    EXPECT_EQ(info.from(), "Alice");
}

TEST(NotificationInfoTest, JsonRoundTripsAndDecodingFailsOnMissingOrMistypedKeys) {
    NotificationInfo info{"Mail", "Ann", "Hi", "", "Body", Date{10.5}, true, std::nullopt};
    EXPECT_FALSE(toJson(info).contains("received"));
    EXPECT_EQ(notificationFromJson(toJson(info)), info);
    info.received = std::vector<ReceivedField>{{"Title", "Hi"}};
    EXPECT_EQ(notificationFromJson(toJson(info)), info);
    auto valid = toJson(NotificationInfo{});
    auto missing = valid;
    missing.erase("date");
    EXPECT_THROW(notificationFromJson(missing), json::DecodeError);
    auto mistyped = valid;
    mistyped["isTimeSensitive"] = "yes";
    EXPECT_THROW(notificationFromJson(mistyped), json::DecodeError);
    EXPECT_THROW(notificationFromJson(json::Json::array()), json::DecodeError);

    info.body = "bad \xFF byte"; // encoded repaired
    auto decoded = json::decode(json::encode(toJson(info)), notificationFromJson);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded.value().body, "bad \uFFFD byte");
}

} // namespace
} // namespace ringwell
