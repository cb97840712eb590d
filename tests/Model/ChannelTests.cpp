#include "Core/Json.h"
#include "Model/Channel.h"
#include "Model/ChannelPalette.h"
#include "Model/FiringMode.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

const Date decodingTime{770000000};
const char* const someId = "0B3C5D7E-1F20-4A31-8B42-5C6D7E8F9A0B";

Channel decode(const std::string& text) {
    auto parsed = json::parse(text);
    EXPECT_TRUE(parsed.ok()) << text;
    return channelFromJson(parsed.value(), decodingTime);
}

bool decodeFails(const std::string& text) {
    auto result = json::decode(
        text, [](const json::Json& value) { return channelFromJson(value, decodingTime); });
    return !result.ok();
}

std::string withKey(const std::string& key, const std::string& value) {
    return std::string(R"({"id":")") + someId + R"(","name":"N",")" + key + "\":" + value + "}";
}

Channel fullChannel() {
    Channel channel;
    channel.id = Uuid::random();
    channel.name = "Mum \xE2\x80\x9Curgent\xE2\x80\x9D";
    channel.usesAutomaticName = true;
    channel.tintHex = "#AF52DE";
    channel.isEnabled = false;
    channel.mode = FiringMode::countdown;
    channel.countdownSeconds = 90;
    channel.snoozeEnabled = true;
    channel.snoozeSeconds = 600;
    channel.showNotificationText = false;
    channel.repeatEnabled = true;
    channel.repeatIntervalSeconds = 45;
    channel.repeatCount = 7;
    channel.sound = AlarmTone::klaxon;
    channel.reminderSound = AlarmTone::bark;
    channel.rule.apps = {"WhatsApp", " Signal "};
    channel.rule.senders = {"Mum"};
    channel.rule.keywords = {"urgent", "asap"};
    channel.rule.usesRegex = true;
    channel.rule.calls = ChannelRule::CallFilter::missed;
    channel.rule.cooldownSeconds = 120;
    channel.rule.activeHours = ActiveHours{{2, 3, 4}, 22 * 60, 7 * 60};
    channel.rule.frequency = FrequencyCondition{3, 600};
    channel.createdAt = Date{761234567.25};
    channel.escalation = {EscalationStep{60, EscalationAction::louder, "", {}, std::nullopt},
                          EscalationStep{300,
                                         EscalationAction::webhook,
                                         "https://ntfy.example.org/t",
                                         {{"Title", "{{channel}}"}},
                                         "{{title}}"}};
    return channel;
}

// Only id and name are required and unknown keys are ignored; a key that is
// present must have its type.
TEST(ChannelJsonTest, DecodingNeedsIdAndNameAndRightlyTypedKeys) {
    Channel channel = decode(std::string(R"({"id":")") + someId + R"(","name":"Work"})");
    EXPECT_EQ(channel.id.toString(), someId);
    EXPECT_EQ(channel.name, "Work");
    EXPECT_EQ(channel.createdAt, decodingTime);
    EXPECT_EQ(decode(withKey("colour", R"("blue")")).name, "N");

    for (const std::string& bad : {
             std::string(R"({"name":"N"})"),
             std::string(R"({"id":")") + someId + "\"}",
             std::string(R"({"id":"not-a-uuid","name":"N"})"),
             std::string(R"({"id":")") + someId + R"(","name":7})",
             std::string("[]"),
             withKey("isEnabled", R"("yes")"),
             withKey("countdownSeconds", "1.5"),
             withKey("repeatCount", "18446744073709551615"),
             withKey("mode", "0"),
             withKey("sound", "4"),
             withKey("rule", R"({"calls":"sometimes"})"),
             withKey("createdAt", R"("2025-01-01T00:00:00Z")"),
         })
        EXPECT_TRUE(decodeFails(bad)) << bad;
}

TEST(ChannelJsonTest, EveryFieldRoundTripsEqual) {
    for (const Channel& channel :
         {fullChannel(), Channel::make(std::nullopt, {}, "#FF9500", Date{1})}) {
        std::string text = json::encode(toJson(channel));
        Channel decoded = decode(text);
        EXPECT_EQ(decoded, channel) << text;
    }
}

TEST(ChannelTest, FollowUpsUseTheMainSoundWithoutReminderTone) {
    Channel channel;
    channel.sound = AlarmTone::chime;
    EXPECT_EQ(channel.followUpSound(), AlarmTone::chime);
    channel.reminderSound = AlarmTone::pager;
    EXPECT_EQ(channel.followUpSound(), AlarmTone::pager);
}

TEST(FiringModeTest, BadgeFormatsTheCountdownInNarrowMinutesAndSeconds) {
    EXPECT_EQ(modeBadge(FiringMode::immediate, 90), "Immediate");
    EXPECT_EQ(modeBadge(FiringMode::countdown, 30), "Countdown 30s");
    EXPECT_EQ(modeBadge(FiringMode::countdown, 90), "Countdown 1m 30s");
    EXPECT_EQ(modeBadge(FiringMode::countdown, 3605), "Countdown 60m 5s");
    EXPECT_EQ(modeBadge(FiringMode::countdown, -4), "Countdown 0s");
}

TEST(TintTest, ColourToHexClampsAndRounds) {
    EXPECT_EQ(tintHex({1.0, 59.0 / 255.0, 48.0 / 255.0}), "#FF3B30");
    EXPECT_EQ(tintHex({2.0, -1.0, 0.5}), "#FF0080");
    EXPECT_EQ(tintHex({std::nan(""), 0, 1}), "#0000FF");
}

TEST(TintTest, HexToColourAcceptsOnlyTheSixDigitForm) {
    auto colour = tintColor("#ff9500");
    ASSERT_TRUE(colour.has_value());
    EXPECT_DOUBLE_EQ(colour->red, 1.0);
    EXPECT_DOUBLE_EQ(colour->green, 149.0 / 255.0);
    EXPECT_DOUBLE_EQ(colour->blue, 0.0);
    EXPECT_FALSE(tintColor("FF9500").has_value());
    EXPECT_FALSE(tintColor("#FF9500FF").has_value());
    EXPECT_FALSE(tintColor("").has_value());
}

} // namespace
} // namespace ringwell
