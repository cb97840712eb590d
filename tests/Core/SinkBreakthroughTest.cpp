#include "Core/SinkBreakthrough.h"

#include "Core/Json.h"
#include "Core/SoundSettings.h"

#include <gtest/gtest.h>

#include <map>

namespace ringwell {
namespace {

using namespace SinkBreakthrough;

constexpr BreakthroughSettings on{true, 70};

TEST(SinkBreakthroughTest, AMutedOrQuietSinkIsRaisedToTheAlarmVolumeButNeverLowered) {
    EXPECT_EQ(target({true, 1.0}, on, false), (SinkLevel{false, 0.7}));
    EXPECT_EQ(target({false, 0.2}, on, false), (SinkLevel{false, 0.7}));
    EXPECT_EQ(target({false, 0.9}, on, false), std::nullopt);
    EXPECT_EQ(target({true, 0.2}, {false, 70}, false), std::nullopt);
}

TEST(SinkBreakthroughTest, HeadphonesAreCappedAtHalfButNotTurnedDown) {
    EXPECT_EQ(target({true, 1.0}, {true, 100}, true), (SinkLevel{false, 0.5}));
    EXPECT_EQ(target({false, 0.8}, {true, 100}, true), std::nullopt);
    EXPECT_TRUE(isHeadphonePort("analog-output-headphones", false));
    EXPECT_TRUE(isHeadphonePort("[Out] Headset", false));
    EXPECT_TRUE(isHeadphonePort("bluetooth-output", true));
    EXPECT_FALSE(isHeadphonePort("analog-output-speaker", false));
}

TEST(SinkBreakthroughTest, TheFadeRisesEvenlyFromQuietToTheTarget) {
    auto fromMute = fadeSteps({true, 1.0}, {false, 0.7});
    ASSERT_EQ(fromMute.size(), static_cast<size_t>(fadeStepCount));
    EXPECT_NEAR(fromMute.front().volume, fadeFloor + (0.7 - fadeFloor) / fadeStepCount, 1e-9);
    EXPECT_EQ(fromMute.back(), (SinkLevel{false, 0.7}));
    for (size_t i = 1; i < fromMute.size(); ++i) {
        EXPECT_FALSE(fromMute[i].muted);
        EXPECT_GT(fromMute[i].volume, fromMute[i - 1].volume);
    }
    // An audible sink starts from where it is, not from silence.
    EXPECT_GT(fadeSteps({false, 0.4}, {false, 0.7}).front().volume, 0.4);
}

// An untouched sink goes back to what it was; what the person changed stands.
TEST(SinkBreakthroughTest, WhatThePersonChangedStandsAndTheRestGoesBack) {
    const SavedSink saved{"speakers", {true, 0.3}, {false, 0.7}, std::nullopt};
    EXPECT_TRUE(untouched({false, 0.705}, saved)); // the server's rounding
    EXPECT_EQ(restore({false, 0.7}, saved), (SinkLevel{true, 0.3}));
    EXPECT_FALSE(untouched({false, 0.4}, saved));
    // The volume is theirs; the mute Ringwell lifted comes back.
    EXPECT_EQ(restore({false, 0.4}, saved), (SinkLevel{true, 0.4}));
    // They muted it themselves: the volume still goes back.
    EXPECT_EQ(restore({true, 0.7}, saved), (SinkLevel{true, 0.3}));
    // Both theirs: nothing to do.
    EXPECT_EQ(restore({true, 0.2}, saved), std::nullopt);
}

TEST(SinkBreakthroughTest, ACrashBetweenSavingAndSettingStillRestores) {
    const SavedSink saved{"speakers", {true, 0.3}, {false, 0.5}, SinkLevel{false, 0.45}};
    EXPECT_TRUE(untouched({false, 0.45}, saved));
    EXPECT_EQ(restore({false, 0.45}, saved), (SinkLevel{true, 0.3}));

    auto decoded = json::decode(json::encode(toJson(saved)), savedSinkFromJson);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded.value(), saved);
    EXPECT_FALSE(json::decode(R"({"sink":"s","original":{"muted":true}})", savedSinkFromJson));
}

TEST(SoundSettingsTest, StoredValuesAreCheckedAndBadOnesReadAsTheDefaults) {
    std::map<std::string, json::Json> stored{{"alarmVolume", 85}, {"ringThroughMute", "yes"}};
    auto settings = SoundSettings::read([&](std::string_view key) -> std::optional<json::Json> {
        auto found = stored.find(std::string(key));
        return found == stored.end() ? std::nullopt : std::optional(found->second);
    });
    EXPECT_TRUE(settings.ringThroughMute);
    EXPECT_EQ(settings.alarmVolumePercent, 85);

    EXPECT_EQ(SoundSettings::check("alarmVolume", 50.0).value(), json::Json(50));
    for (const json::Json& bad :
         {json::Json(5), json::Json(101), json::Json(50.5), json::Json("80"), json::Json(1e300)})
        EXPECT_EQ(SoundSettings::check("alarmVolume", bad).error().kind, Error::Kind::invalidInput)
            << bad;
    EXPECT_FALSE(SoundSettings::check("ringThroughMute", 1));
    auto unknown = SoundSettings::check("volume", 1);
    EXPECT_EQ(unknown.error().kind, Error::Kind::notFound);
    EXPECT_NE(unknown.error().message.find("alarmVolume"), std::string::npos);
}

} // namespace
} // namespace ringwell
