#include "Core/SetupTest.h"
#include "Core/Json.h"

#include <gtest/gtest.h>

#include <map>

namespace ringwell {
namespace {

using Field = SetupCheck::Field;
using Status = SetupCheck::Status;

// The input of a "Send to Ringwell" run whose action reported what it
// received: only the given labels are present.
ShortcutInputFields reported(const std::map<std::string, std::string>& values) {
    ShortcutInputFields fields;
    for (const auto& [name, value] : values)
        fields.received.push_back({name, value});
    return fields;
}

// A well-mapped automation forwarding a text message.
std::map<std::string, std::string> goodMapping() {
    return {{"Notification", "Alarm\nServer down"},
            {"App", "Messages"},
            {"Title", "Alarm"},
            {"Subtitle", "Ops"},
            {"Body", "Server down"},
            {"Is Time Sensitive", "No"},
            {"Sender", "Alice"}};
}

class SetupTestTest : public ::testing::Test {
protected:
    std::vector<SetupCheck> evaluate(const ShortcutInputFields& fields) const {
        return test.evaluate(fields);
    }

    SetupCheck check(const std::map<std::string, std::string>& values, Field field) const {
        for (const SetupCheck& check : evaluate(reported(values))) {
            if (check.field == field)
                return check;
        }
        ADD_FAILURE() << "no check for " << rawValue(field);
        return {};
    }

    SetupTest test{Date{800000000}};
};

TEST_F(SetupTestTest, AWellMappedAutomationPassesInTheFixedOrder) {
    auto checks = evaluate(reported(goodMapping()));
    std::vector<Field> order;
    for (const auto& check : checks) {
        order.push_back(check.field);
        EXPECT_EQ(check.status, Status::passed) << rawValue(check.field);
        EXPECT_FALSE(check.hint) << rawValue(check.field);
    }
    EXPECT_EQ(order, (std::vector<Field>{Field::app, Field::title, Field::subtitle, Field::body,
                                         Field::timeSensitive, Field::sender}));
    EXPECT_EQ(checks[0].received, "Messages");
    EXPECT_TRUE(SetupTest::allPassed(checks));
}

TEST_F(SetupTestTest, AReportWithoutAFieldIgnoresItsDirectValue) {
    auto values = goodMapping();
    values.erase("Title");
    auto fields = reported(values);
    fields.title = "Alarm";
    auto checks = evaluate(fields);
    EXPECT_EQ(checks[1].field, Field::title);
    EXPECT_EQ(checks[1].status, Status::failed);
    EXPECT_EQ(checks[1].received, "");
    EXPECT_EQ(
        checks[1].hint,
        "Set Title from the notification with --title or the JSON field \"notificationTitle\".");
}

TEST_F(SetupTestTest, WithoutAReportTheDirectValuesAreJudged) {
    ShortcutInputFields fields;
    fields.app = " Mail ";
    fields.title = "Invoice";
    fields.timeSensitive = "1";
    auto checks = evaluate(fields);
    EXPECT_EQ(checks[0].status, Status::passed);
    EXPECT_EQ(checks[0].received, "Mail");
    EXPECT_EQ(checks[1].status, Status::passed);
    EXPECT_EQ(checks[2].status, Status::unverifiable);
    EXPECT_EQ(checks[3].status, Status::unverifiable);
    EXPECT_EQ(checks[4].status, Status::passed);
    EXPECT_EQ(checks[5].status, Status::unverifiable);
}

TEST_F(SetupTestTest, EverythingMissingFailsAppTitleAndTimeSensitiveOnly) {
    auto checks = evaluate(ShortcutInputFields{});
    std::vector<Status> statuses;
    for (const auto& check : checks)
        statuses.push_back(check.status);
    EXPECT_EQ(statuses,
              (std::vector<Status>{Status::failed, Status::failed, Status::unverifiable,
                                   Status::unverifiable, Status::failed, Status::unverifiable}));
    EXPECT_EQ(checks[3].hint, "This notification had no text.");
}

// One or two values of the good mapping changed, and how the named check judges it.
TEST_F(SetupTestTest, EachFieldIsJudgedAgainstTheNotificationText) {
    using Changes = std::map<std::string, std::string>;
    const std::string sameValue = "Has the same value as another field. ";
    const struct {
        const char* why;
        Changes changes;
        Field field;
        Status status;
        std::optional<std::string> hint;
    } cases[] = {
        {"title differs",
         {{"Title", "x"}},
         Field::title,
         Status::failed,
         "Doesn't match the notification's title (Alarm). Set Title from the notification with "
         "--title or the JSON field \"notificationTitle\"."},
        {"title trimmed of blanks only",
         {{"Notification", " \tAlarm \nServer down"}},
         Field::title,
         Status::passed,
         std::nullopt},
        {"no line break: no body to compare",
         {{"Notification", "Alarm"}, {"Body", "Other"}},
         Field::body,
         Status::passed,
         std::nullopt},
        {"CR LF does not split",
         {{"Notification", "Alarm\r\nServer down"}},
         Field::title,
         Status::failed,
         std::nullopt},
        {"empty body, notification had text",
         {{"Body", ""}},
         Field::body,
         Status::failed,
         "Doesn't match the notification's text. Set Body from the notification with --body or "
         "the JSON field \"notificationBody\"."},
        {"empty body, notification had none",
         {{"Body", ""}, {"Notification", "Alarm\n  "}},
         Field::body,
         Status::unverifiable,
         std::nullopt},
        {"subtitle equal to the body",
         {{"Subtitle", "Server down"}},
         Field::subtitle,
         Status::failed,
         std::nullopt},
        {"body equal to the subtitle",
         {{"Subtitle", "Server down"}},
         Field::body,
         Status::failed,
         sameValue + "Set Body from the notification with --body or the JSON field "
                     "\"notificationBody\"."},
        {"comparisons are exact",
         {{"Subtitle", "alarm"}},
         Field::subtitle,
         Status::passed,
         std::nullopt},
        {"sender may equal the title",
         {{"Sender", "Alarm"}},
         Field::sender,
         Status::passed,
         std::nullopt},
        {"sender equal to the body",
         {{"Sender", "Server down"}},
         Field::sender,
         Status::failed,
         sameValue + "Set Sender from the notification with --sender or the JSON field "
                     "\"sender\"."},
        {"true",
         {{"Is Time Sensitive", "TRUE"}},
         Field::timeSensitive,
         Status::passed,
         std::nullopt},
        {"0", {{"Is Time Sensitive", "0"}}, Field::timeSensitive, Status::passed, std::nullopt},
        {"false",
         {{"Is Time Sensitive", " false "}},
         Field::timeSensitive,
         Status::passed,
         std::nullopt},
        {"on", {{"Is Time Sensitive", "on"}}, Field::timeSensitive, Status::failed, std::nullopt},
        {"empty", {{"Is Time Sensitive", ""}}, Field::timeSensitive, Status::failed, std::nullopt},
    };
    for (const auto& c : cases) {
        auto values = goodMapping();
        for (const auto& [name, value] : c.changes)
            values[name] = value;
        const SetupCheck judged = check(values, c.field);
        EXPECT_EQ(judged.status, c.status) << c.why;
        if (c.hint) {
            EXPECT_EQ(judged.hint, c.hint) << c.why;
        }
    }
}

TEST_F(SetupTestTest, AllPassedCountsUnverifiableAsNoFailure) {
    auto checks = evaluate(reported(goodMapping()));
    checks[2].status = Status::unverifiable;
    checks[5].status = Status::unverifiable;
    EXPECT_TRUE(SetupTest::allPassed(checks));
    checks[3].status = Status::failed;
    EXPECT_FALSE(SetupTest::allPassed(checks));
    EXPECT_FALSE(SetupTest::allPassed({}));
}

TEST_F(SetupTestTest, ACheckEncodesWithItsHintOnlyWhenPresent) {
    EXPECT_TRUE(toJson(evaluate(ShortcutInputFields{})[0]).contains("hint"));
    EXPECT_FALSE(
        toJson(SetupCheck{Field::sender, Status::passed, "Alice", std::nullopt}).contains("hint"));
}

TEST(SetupDiagnosticsTest, WarnsOfNoDetailsOrNoAppAndAnAppAloneIsEnough) {
    ShortcutInputFields blank;
    blank.sender = " \n";
    blank.timeSensitive = "yes";
    blank.received = {{"App", "Mail"}};
    EXPECT_EQ(SetupDiagnostics::warning(blank),
              "Your automation isn't passing any notification details. Map each field of the "
              "captured desktop notification to ringwell send's options or the JSON fields.");
    ShortcutInputFields noApp;
    noApp.app = "  ";
    noApp.title = "Hello";
    EXPECT_EQ(SetupDiagnostics::warning(noApp),
              "Your automation isn't passing the app, so rules that name apps can't match. Set App "
              "from the notification with --app or the JSON field \"app\".");
    ShortcutInputFields appOnly;
    appOnly.app = "Mail";
    EXPECT_EQ(SetupDiagnostics::warning(appOnly), std::nullopt);
}

} // namespace
} // namespace ringwell
