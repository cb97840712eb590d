#include "Core/CapturedNotification.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using Door = BusNotification::Door;

BusNotification make(Door door, std::string app, std::string title, std::string body,
                     std::map<std::string, BusNotification::Value> hints = {},
                     std::string id = "") {
    BusNotification n;
    n.door = door;
    n.app = std::move(app);
    n.title = std::move(title);
    n.body = std::move(body);
    n.hints = std::move(hints);
    n.id = std::move(id);
    return n;
}

NotificationInfo mapped(const BusNotification& notification) {
    return CapturedNotification::fields(notification).notification(Date());
}

// The mapped notification as "app|sender|title|body", with "!" when time
// sensitive, so that one comparison covers every field.
std::string fieldsOf(const BusNotification& notification) {
    auto info = mapped(notification);
    return info.app + "|" + info.sender + "|" + info.title + "|" + info.body +
           (info.isTimeSensitive ? "!" : "");
}

std::string recipients(const BusNotification& notification) {
    return CapturedNotification::fields(notification).received.at(7).value;
}

TEST(CapturedNotificationTest, DesktopNotificationsKeepAppTitleBodyAndUrgency) {
    BusNotification signal =
        make(Door::freedesktop, "Signal", "Mom", "call me", {{"urgency", std::int64_t{2}}});
    EXPECT_EQ(fieldsOf(signal), "Signal||Mom|call me!");
    EXPECT_EQ(CapturedNotification::fields(signal).received.at(0).value, "Mom\ncall me");
    signal.hints["urgency"] = std::int64_t{1};
    EXPECT_EQ(fieldsOf(signal), "Signal||Mom|call me");

    BusNotification nameless = make(Door::freedesktop, " ", "Update", "",
                                    {{"desktop-entry", std::string("org.gnome.Software")}});
    EXPECT_EQ(CapturedNotification::appName(nameless), "org.gnome.Software");

    // GTK notifications name the app by its id's last part; "urgent" is time sensitive.
    BusNotification gtk = make(Door::gtk, "org.gnome.Fractal", "Ana", "lunch?",
                               {{"priority", std::string("urgent")}}, "m1");
    EXPECT_EQ(fieldsOf(gtk), "Fractal||Ana|lunch?!");
    gtk.hints["priority"] = std::string("high");
    EXPECT_EQ(fieldsOf(gtk), "Fractal||Ana|lunch?");
}

TEST(CapturedNotificationTest, OnlyTheRingwellHintMarksOwnNotices) {
    BusNotification own = make(Door::freedesktop, "Ringwell", "Ringwell couldn't ring", "",
                               {{"x-ringwell-notice", true}});
    EXPECT_TRUE(CapturedNotification::isOwnNotice(own));
    own.hints.clear();
    EXPECT_FALSE(CapturedNotification::isOwnNotice(own));
}

TEST(CapturedNotificationTest, PhoneBridgesMirrorThePhonesAppTitleAndDevice) {
    // On Plasma the phone's app comes as a hint and the summary is its title.
    BusNotification plasma = make(Door::freedesktop, "KDE Connect", "Mom", "call me",
                                  {{"x-kde-appname", std::string("kdeconnect")},
                                   {"x-kde-display-appname", std::string("Messages")},
                                   {"x-kdeconnect-source-device", std::string("Pixel 7")},
                                   {"resident", true}});
    EXPECT_EQ(fieldsOf(plasma), "Messages|Mom|Mom|call me");
    EXPECT_EQ(recipients(plasma), "Pixel 7");

    // Elsewhere the summary is the phone's app and the body "title: text".
    BusNotification elsewhere =
        make(Door::freedesktop, "KDE-Verbindung", "Messages", "Mom: call me: now",
             {{"x-kde-appname", std::string("kdeconnect")},
              {"x-kde-origin-name", std::string("Pixel 7")}});
    EXPECT_EQ(fieldsOf(elsewhere), "Messages|Mom|Mom|call me: now");
    EXPECT_EQ(recipients(elsewhere), "Pixel 7");

    BusNotification gs = make(Door::gtk, "org.gnome.Shell.Extensions.GSConnect", "WhatsApp",
                              "Mom: call me", {}, "abc123|0|com.whatsapp|42");
    EXPECT_EQ(fieldsOf(gs), "WhatsApp|Mom|Mom|call me");
    EXPECT_EQ(recipients(gs), "abc123");
}

TEST(CapturedNotificationTest, BridgedCallsBecomePhoneNotificationsOfTheRightKind) {
    const std::map<std::string, BusNotification::Value> kde = {
        {"x-kde-appname", std::string("kdeconnect")}};
    auto ringing = make(Door::freedesktop, "KDE Connect", "Mom", "Incoming call", kde);
    EXPECT_EQ(mapped(ringing).callKind(), CallKind::incoming);
    EXPECT_EQ(fieldsOf(ringing), "Phone|Mom|Mom|");
    auto missed = make(Door::freedesktop, "KDE Connect", "Missed call", "Mom", kde);
    EXPECT_EQ(mapped(missed).callKind(), CallKind::missed);
    EXPECT_EQ(fieldsOf(missed), "Phone|Mom|Mom|Missed call");
    auto gsMissed = mapped(make(Door::gtk, "org.gnome.Shell.Extensions.GSConnect", "Mom",
                                "Missed call", {}, "dev|call"));
    EXPECT_EQ(gsMissed.app, "Phone");
    EXPECT_EQ(gsMissed.callKind(), CallKind::missed);

    // A desktop app's text about calls is not a bridged call.
    EXPECT_EQ(mapped(make(Door::freedesktop, "Signal", "Mom", "Missed call")).app, "Signal");
}

TEST(CapturedNotificationTest, ContentKeyTellsTextChangesApart) {
    BusNotification a = make(Door::freedesktop, "Signal", "Mom", "call me");
    BusNotification b = a;
    b.replacesId = 9;
    EXPECT_EQ(CapturedNotification::contentKey(a), CapturedNotification::contentKey(b));
    b.body = "call me now";
    EXPECT_NE(CapturedNotification::contentKey(a), CapturedNotification::contentKey(b));
    // The separator keeps title and body from running into each other.
    BusNotification c = make(Door::freedesktop, "Signal", "Mo", "mcall me");
    EXPECT_NE(CapturedNotification::contentKey(a), CapturedNotification::contentKey(c));
}

} // namespace
} // namespace ringwell
