#include "Core/SetupTest.h"

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
    // Unverifiable is no failure; no checks at all is no pass.
    checks[2].status = Status::unverifiable;
    EXPECT_TRUE(SetupTest::allPassed(checks));
    checks[3].status = Status::failed;
    EXPECT_FALSE(SetupTest::allPassed(checks));
    EXPECT_FALSE(SetupTest::allPassed({}));
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

// Without a report the direct values are judged: the texts not given cannot be checked.
TEST_F(SetupTestTest, WithoutAReportOnlyAppTitleAndTimeSensitiveCanFail) {
    auto statuses = [](const std::vector<SetupCheck>& checks) {
        std::vector<Status> out;
        out.reserve(checks.size());
        for (const auto& check : checks)
            out.push_back(check.status);
        return out;
    };
    ShortcutInputFields fields;
    fields.app = " Mail ";
    fields.title = "Invoice";
    fields.timeSensitive = "1";
    auto checks = evaluate(fields);
    EXPECT_EQ(statuses(checks),
              (std::vector<Status>{Status::passed, Status::passed, Status::unverifiable,
                                   Status::unverifiable, Status::passed, Status::unverifiable}));
    EXPECT_EQ(checks[0].received, "Mail");

    auto missing = evaluate(ShortcutInputFields{});
    EXPECT_EQ(statuses(missing),
              (std::vector<Status>{Status::failed, Status::failed, Status::unverifiable,
                                   Status::unverifiable, Status::failed, Status::unverifiable}));
    EXPECT_EQ(missing[3].hint, "This notification had no text.");
}

// One or two values of the good mapping changed, and how the named check judges it.
TEST_F(SetupTestTest, EachFieldIsJudgedAgainstTheNotificationText) {
    using Changes = std::map<std::string, std::string>;
    const struct {
        Changes changes;
        Field field;
        Status status;
    } cases[] = {
        {{{"Title", "x"}}, Field::title, Status::failed},
        {{{"Notification", " \tAlarm \nServer down"}}, Field::title, Status::passed}, // blanks only
        {{{"Notification", "Alarm"}, {"Body", "Other"}}, Field::body, Status::passed}, // no body
        {{{"Notification", "Alarm\r\nServer down"}}, Field::title, Status::failed}, // CR LF stays
        {{{"Body", ""}}, Field::body, Status::failed},
        {{{"Body", ""}, {"Notification", "Alarm\n  "}}, Field::body, Status::unverifiable},
        {{{"Subtitle", "Server down"}}, Field::subtitle, Status::failed}, // equal to the body
        {{{"Subtitle", "Server down"}}, Field::body, Status::failed},
        {{{"Subtitle", "alarm"}}, Field::subtitle, Status::passed}, // comparisons are exact
        {{{"Sender", "Alarm"}}, Field::sender, Status::passed},     // only the body counts
        {{{"Sender", "Server down"}}, Field::sender, Status::failed},
        {{{"Is Time Sensitive", "TRUE"}}, Field::timeSensitive, Status::passed},
        {{{"Is Time Sensitive", " false "}}, Field::timeSensitive, Status::passed},
        {{{"Is Time Sensitive", "on"}}, Field::timeSensitive, Status::failed},
    };
    for (const auto& c : cases) {
        auto values = goodMapping();
        for (const auto& [name, value] : c.changes)
            values[name] = value;
        EXPECT_EQ(check(values, c.field).status, c.status)
            << rawValue(c.field) << " after " << c.changes.begin()->first << " = "
            << c.changes.begin()->second;
    }
}

TEST_F(SetupTestTest, AFailureHintSaysWhyAndWhichFieldToSet) {
    auto hint = [&](const char* name, const char* value, Field field) {
        auto values = goodMapping();
        values[name] = value;
        return check(values, field).hint.value_or("");
    };
    EXPECT_EQ(hint("Title", "x", Field::title),
              "Doesn't match the notification's title (Alarm). Set Title from the notification "
              "with --title or the JSON field \"notificationTitle\".");
    EXPECT_EQ(hint("Body", "", Field::body),
              "Doesn't match the notification's text. Set Body from the notification with --body "
              "or the JSON field \"notificationBody\".");
    EXPECT_EQ(hint("Sender", "Server down", Field::sender),
              "Has the same value as another field. Set Sender from the notification with "
              "--sender or the JSON field \"sender\".");
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
