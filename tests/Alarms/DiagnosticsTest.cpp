#include "Support/Diagnostics.h"

#include "Alarms/EventRecord.h"
#include "AppTestSupport.h"
#include "Core/PercentEncoding.h"
#include "Support/DiagnosticsExport.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using testing::AppTest;

class DiagnosticsTest : public AppTest {
protected:
    DiagnosticsReport report() {
        return Diagnostics::report(ctx, "Debian GNU/Linux 12", "ThinkPad");
    }

    FireEvent logEvent(FireOutcome outcome, std::optional<Channel> channel,
                       std::string app = "Mail") {
        NotificationInfo notification;
        notification.app = std::move(app);
        notification.sender = "Alice";
        notification.title = "Secret title";
        notification.body = "Secret body";
        notification.date = clock.now();
        FireEvent event = channel ? EventRecord::make(notification, outcome, clock.now(), *channel)
                                  : EventRecord::make(notification, outcome, clock.now());
        store.log(event);
        clock.advance(1);
        return event;
    }
};

TEST_F(DiagnosticsTest, GathersTheSetupAndPermissions) {
    service.setAuthorization(AlarmAuthorizationState::denied);
    authorization.observe();
    notices.permission = "not requested";
    defaults.set("lastSetupTestResult", "passed (2026-03-01T09:30:00Z)");
    store.setSetupWarning(std::string("No app"));

    const DiagnosticsReport gathered = report();
    EXPECT_EQ(gathered.alarmsPermission, "denied");
    EXPECT_EQ(gathered.notificationsPermission, "not requested");
    EXPECT_EQ(gathered.lastSetupTest, "passed (2026-03-01T09:30:00Z)");
    EXPECT_EQ(gathered.setupWarning, "No app");
    EXPECT_TRUE(gathered.performanceReports.empty());
    EXPECT_EQ(gathered.generatedAt, clock.now());
}

TEST_F(DiagnosticsTest, ChannelsAreListedInOrderWithoutNames) {
    change(urgent().id, [](Channel& c) {
        c.mode = FiringMode::countdown;
        c.isEnabled = false;
    });
    const Channel mail = store.addChannel(std::string("Mail"), appRule("Mail"));
    const DiagnosticsReport gathered = report();
    ASSERT_EQ(gathered.channels.size(), 2u);
    EXPECT_EQ(gathered.channels[0], (DiagnosticsReport::ChannelInfo{false, "countdown", {}}));
    EXPECT_EQ(gathered.channels[1], (DiagnosticsReport::ChannelInfo{true, "immediate", mail.rule}));
}

TEST_F(DiagnosticsTest, EventsNameTheirChannelByPosition) {
    const Channel second = store.addChannel(std::string("Second"), ChannelRule{});
    const Channel deleted = store.addChannel(std::string("Deleted"), ChannelRule{});
    logEvent(FireOutcome::fired, second);
    logEvent(FireOutcome::noMatch, std::nullopt, "");
    FireEvent failed =
        EventRecord::make(NotificationInfo{}, FireOutcome::failed, clock.now(), deleted);
    failed.errorMessage = "Ringwell couldn't schedule the alarm: gone";
    failed.isTest = true;
    store.log(failed);
    store.deleteChannel(deleted.id);

    const DiagnosticsReport gathered = report();
    ASSERT_EQ(gathered.events.size(), 3u);
    const auto& newest = gathered.events[0];
    EXPECT_EQ(newest.outcome, "Failed");
    EXPECT_FALSE(newest.channelNumber); // its channel is gone
    EXPECT_TRUE(newest.isTest);
    EXPECT_EQ(newest.error, "Ringwell couldn't schedule the alarm: gone");
    EXPECT_EQ(gathered.events[1].outcome, "No match");
    EXPECT_FALSE(gathered.events[1].app);
    EXPECT_FALSE(gathered.events[1].channelNumber);
    EXPECT_EQ(gathered.events[2].channelNumber, 2);
    EXPECT_EQ(gathered.events[2].app, "Mail");
    EXPECT_EQ(gathered.events[2].date, store.events()[2].receivedAt);
}

TEST_F(DiagnosticsTest, TheTextCarriesNoNamesPeopleOrNotificationText) {
    change(urgent().id, [](Channel& c) {
        c.name = "Secret channel";
        c.rule.senders = {"Alice"};
        c.rule.keywords = {"password"};
    });
    logEvent(FireOutcome::fired, urgent());
    store.setSetupWarning(std::nullopt);
    const std::string text = DiagnosticsExport::contents(report());
    for (const char* secret : {"Secret", "Alice", "password"})
        EXPECT_EQ(text.find(secret), std::string::npos) << secret;
    EXPECT_NE(text.find("1 sender, 1 keyword"), std::string::npos) << text;
    EXPECT_NE(text.find("Mail \u2192 Fired [channel 1]"), std::string::npos) << text;
}

TEST_F(DiagnosticsTest, TheSupportMailCarriesTheReport) {
    DiagnosticsReport gathered = report();
    gathered.appVersion = "0.1.0 (7)";
    const std::string url = Diagnostics::emailURL(gathered);
    const std::string prefix = "mailto:support@ringwell.org?subject=Ringwell%20support%20%280.1.0%"
                               "20%287%29%29&body=Describe%20what%20happened%3A%0A%0A%0A---%0A";
    ASSERT_EQ(url.substr(0, prefix.size()), prefix);
    EXPECT_EQ(url.substr(prefix.size()), PercentEncoding::encode(gathered.text()));
}

} // namespace
} // namespace ringwell
