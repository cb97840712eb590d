#include "Core/DiagnosticsReport.h"

#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using testing::at;
using ChannelInfo = DiagnosticsReport::ChannelInfo;
using EventInfo = DiagnosticsReport::EventInfo;

class DiagnosticsReportTest : public ::testing::Test {
protected:
    DiagnosticsReportTest() {
        report.appVersion = "0.1.0 (7)";
        report.osVersion = "Debian GNU/Linux 12 (bookworm)";
        report.device = "x86_64";
        report.alarmsPermission = "allowed";
        report.notificationsPermission = "not requested";
        report.lastSetupTest = "never run";
        report.generatedAt = at("2025-06-02T10:00:00.750Z");
    }

    static ChannelRule rule(std::vector<std::string> apps, std::vector<std::string> senders = {},
                            std::vector<std::string> keywords = {}) {
        ChannelRule result;
        result.apps = std::move(apps);
        result.senders = std::move(senders);
        result.keywords = std::move(keywords);
        return result;
    }

    static EventInfo eventAt(const char* date, std::optional<std::string> app = "Mail",
                             std::string outcome = "No match") {
        return {at(date), std::move(app), std::move(outcome), std::nullopt, false, std::nullopt};
    }

    DiagnosticsReport report;
};

TEST_F(DiagnosticsReportTest, FullReportRendersLineForLine) {
    report.lastSetupTest = "failed: Title, Is Time Sensitive (2025-06-01T08:00:00Z)";
    report.setupWarning = "Your automation isn't passing the app.";
    report.saveError = "cannot write /data/.ringwell.json.tmp-1: No space left on device";

    ChannelRule countdown = rule({"Mail", "Messages"}, {"Mom", "Dad"});
    countdown.cooldownSeconds = 300;
    ChannelRule phone = rule({"Phone"});
    phone.calls = ChannelRule::CallFilter::incoming;
    report.channels = {{true, "countdown", countdown}, {false, "immediate", phone}};

    EventInfo fired = eventAt("2025-06-02T09:59:30Z", "Mail", "Fired");
    fired.channelNumber = 1;
    EventInfo failed = eventAt("2025-06-02T09:00:00Z", "Phone", "Failed");
    failed.channelNumber = 2;
    failed.error = "Alarms are not allowed.";
    EventInfo test = eventAt("2025-06-01T20:15:00Z", "Mail", "Setup test received");
    test.isTest = true;
    report.events = {fired, failed, test, eventAt("2025-06-01T07:00:00Z", std::nullopt)};
    report.performanceReports = {"hang 2025-05-30", "crash 2025-05-31"};

    EXPECT_EQ(
        report.text(),
        "Ringwell diagnostics\n"
        "Generated: 2025-06-02T10:00:00Z\n"
        "\n"
        "App: 0.1.0 (7)\n"
        "System: Debian GNU/Linux 12 (bookworm)\n"
        "Device: x86_64\n"
        "Alarms permission: allowed\n"
        "Notifications permission: not requested\n"
        "Last setup test: failed: Title, Is Time Sensitive (2025-06-01T08:00:00Z)\n"
        "Setup warning: Your automation isn't passing the app.\n"
        "Ringwell can't save its history: cannot write /data/.ringwell.json.tmp-1: No space "
        "left on device\n"
        "\n"
        "Channels (2):\n"
        "  1. on, countdown, apps: Mail, Messages, 2 senders, cooldown 300s\n"
        "  2. off, immediate, apps: Phone, incoming calls\n"
        "\n"
        "Recent events (4 of 4):\n"
        "  2025-06-02T09:59:30Z Mail \u2192 Fired [channel 1]\n"
        "  2025-06-02T09:00:00Z Phone \u2192 Failed [channel 2] error: Alarms are not allowed.\n"
        "  2025-06-01T20:15:00Z test \u2192 Setup test received\n"
        "  2025-06-01T07:00:00Z (no app) \u2192 No match\n"
        "\n"
        "Crash and hang reports (2):\n"
        "  hang 2025-05-30\n"
        "  crash 2025-05-31");
}

TEST_F(DiagnosticsReportTest, OnlyTheNewestThirtyEventsAreListed) {
    for (int i = 0; i < 45; ++i) {
        EventInfo event = eventAt("2025-06-02T09:00:00Z");
        event.date = event.date.addingSeconds(-60.0 * i);
        event.app = "App " + std::to_string(i);
        report.events.push_back(event);
    }
    const std::string text = report.text();
    EXPECT_NE(
        text.find("Recent events (30 of 45):\n  2025-06-02T09:00:00Z App 0 \u2192 No match\n"),
        std::string::npos)
        << text;
    EXPECT_NE(text.find("  2025-06-02T08:31:00Z App 29 \u2192 No match\n\n"), std::string::npos);
    EXPECT_EQ(text.find("App 30 "), std::string::npos);
}

TEST_F(DiagnosticsReportTest, NothingPrivateAppearsAnywhere) {
    // Senders and keywords shaped like notification text: none of them may leak.
    const std::vector<std::string> secrets = {"Sender-Mom", "Kw-urgent", "Title text",
                                              "Subtitle text", "Body text"};
    ChannelRule rule =
        this->rule({"Mail"}, {"Sender-Mom", "Title text"}, {"Kw-urgent", "Body text"});
    rule.usesRegex = true;
    rule.keywords.push_back("Subtitle text(");
    report.channels = {{true, "immediate", rule}};
    report.events = {eventAt("2025-06-02T09:00:00Z", "Mail", "Fired")};
    std::string text = report.text();
    for (const auto& secret : secrets)
        EXPECT_EQ(text.find(secret), std::string::npos) << secret;
    EXPECT_NE(text.find("apps: Mail, 2 senders, 3 keywords, regex, 1 invalid pattern"),
              std::string::npos);
}

TEST(DiagnosticsRedactedTest, RedactedRulesPutEveryConditionInItsPlace) {
    ChannelRule rule;
    rule.apps = {"PagerDuty", "Opsgenie"};
    rule.senders = {"a", "b"};
    rule.keywords = {"c"};
    rule.usesRegex = true;
    rule.calls = ChannelRule::CallFilter::missed;
    rule.cooldownSeconds = 60;
    rule.activeHours = ActiveHours{ActiveHours::weekdaysOnly(), 22 * 60, 7 * 60};
    rule.frequency = FrequencyCondition{3, 600};
    EXPECT_EQ(DiagnosticsReport::redacted(rule),
              "apps: PagerDuty, Opsgenie, 2 senders, 1 keyword, regex, missed calls, cooldown "
              "60s, active Weekdays 22:00\u201307:00, 3\u00D7 in 10 min");

    // Frequency minutes are truncated; a cooldown below one second adds nothing.
    rule = ChannelRule{};
    rule.frequency = FrequencyCondition{5, 90};
    EXPECT_EQ(DiagnosticsReport::redacted(rule), "any app, 5\u00D7 in 1 min");
    rule = ChannelRule{};
    rule.cooldownSeconds = 0;
    EXPECT_EQ(DiagnosticsReport::redacted(rule), "any app");
    rule.cooldownSeconds = 1;
    EXPECT_EQ(DiagnosticsReport::redacted(rule), "any app, cooldown 1s");
}

} // namespace
} // namespace ringwell
