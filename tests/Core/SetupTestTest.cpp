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

    static std::map<std::string, std::string> with(std::map<std::string, std::string> values,
                                                   const std::string& name,
                                                   std::optional<std::string> value) {
        if (value)
            values[name] = *value;
        else
            values.erase(name);
        return values;
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
    auto fields = reported(with(goodMapping(), "Title", std::nullopt));
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

TEST_F(SetupTestTest, ATitleThatIsNotTheNotificationsFails) {
    auto title = check(with(goodMapping(), "Title", "x"), Field::title);
    EXPECT_EQ(title.status, Status::failed);
    EXPECT_EQ(title.hint, "Doesn't match the notification's title (Alarm). Set Title from the "
                          "notification with --title or the JSON field \"notificationTitle\".");
}

TEST_F(SetupTestTest, TheNotificationTitleIsTrimmedOfBlanksOnly) {
    auto values = with(goodMapping(), "Notification", " \tAlarm \nServer down");
    EXPECT_EQ(check(values, Field::title).status, Status::passed);
}

TEST_F(SetupTestTest, ANotificationWithoutALineBreakNeverFailsTheBody) {
    auto values = with(goodMapping(), "Notification", "Alarm");
    values = with(values, "Body", "Something else");
    EXPECT_EQ(check(values, Field::body).status, Status::passed);
    EXPECT_EQ(check(values, Field::title).status, Status::passed);
}

TEST_F(SetupTestTest, ACarriageReturnLineFeedDoesNotSplitTheNotification) {
    auto values = with(goodMapping(), "Notification", "Alarm\r\nServer down");
    // The whole text is the reference title, so the mapped title differs.
    EXPECT_EQ(check(values, Field::title).status, Status::failed);
    EXPECT_EQ(check(values, Field::body).status, Status::passed);
}

TEST_F(SetupTestTest, AnEmptyBodyFailsWhenTheNotificationHadText) {
    auto body = check(with(goodMapping(), "Body", ""), Field::body);
    EXPECT_EQ(body.status, Status::failed);
    EXPECT_EQ(body.hint, "Doesn't match the notification's text. Set Body from the notification "
                         "with --body or the JSON field \"notificationBody\".");
}

TEST_F(SetupTestTest, AnEmptyBodyIsUnverifiableWhenTheNotificationHadNoText) {
    auto values = with(with(goodMapping(), "Body", ""), "Notification", "Alarm\n  ");
    EXPECT_EQ(check(values, Field::body).status, Status::unverifiable);
}

TEST_F(SetupTestTest, ASubtitleEqualToTheBodyFailsBoth) {
    auto values = with(goodMapping(), "Subtitle", "Server down");
    auto subtitle = check(values, Field::subtitle);
    auto body = check(values, Field::body);
    EXPECT_EQ(subtitle.status, Status::failed);
    EXPECT_EQ(body.status, Status::failed);
    EXPECT_EQ(body.hint, "Has the same value as another field. Set Body from the notification with "
                         "--body or the JSON field \"notificationBody\".");
}

TEST_F(SetupTestTest, ComparisonsAreExact) {
    EXPECT_EQ(check(with(goodMapping(), "Subtitle", "alarm"), Field::subtitle).status,
              Status::passed);
}

TEST_F(SetupTestTest, TheSenderIsComparedWithTheBodyOnly) {
    EXPECT_EQ(check(with(goodMapping(), "Sender", "Alarm"), Field::sender).status, Status::passed);
    auto sender = check(with(goodMapping(), "Sender", "Server down"), Field::sender);
    EXPECT_EQ(sender.status, Status::failed);
    EXPECT_EQ(sender.hint, "Has the same value as another field. Set Sender from the notification "
                           "with --sender or the JSON field \"sender\".");
}

TEST_F(SetupTestTest, TimeSensitiveNeedsATruthValueOfEitherKind) {
    for (const char* value : {"TRUE", "0", " false "})
        EXPECT_EQ(
            check(with(goodMapping(), "Is Time Sensitive", value), Field::timeSensitive).status,
            Status::passed)
            << value;
    for (const char* value : {"on", ""})
        EXPECT_EQ(
            check(with(goodMapping(), "Is Time Sensitive", value), Field::timeSensitive).status,
            Status::failed)
            << value;
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

class SetupDiagnosticsTest : public ::testing::Test {};

TEST_F(SetupDiagnosticsTest, NoDetailsAtAll) {
    ShortcutInputFields fields;
    fields.sender = " \n";
    fields.timeSensitive = "yes";
    fields.received = {{"App", "Mail"}};
    EXPECT_EQ(SetupDiagnostics::warning(fields),
              "Your automation isn't passing any notification details. Map each field of the "
              "captured desktop notification to ringwell send's options or the JSON fields.");
}

TEST_F(SetupDiagnosticsTest, NoApp) {
    ShortcutInputFields fields;
    fields.app = "  ";
    fields.title = "Hello";
    EXPECT_EQ(SetupDiagnostics::warning(fields),
              "Your automation isn't passing the app, so rules that name apps can't match. Set App "
              "from the notification with --app or the JSON field \"app\".");
}

TEST_F(SetupDiagnosticsTest, AnAppAloneIsEnough) {
    ShortcutInputFields fields;
    fields.app = "Mail";
    EXPECT_EQ(SetupDiagnostics::warning(fields), std::nullopt);
}

} // namespace
} // namespace ringwell
