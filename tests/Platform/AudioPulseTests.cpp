#include "Platform/AudioPulse.h"

#include "Platform/BundledSounds.h"
#include "PlatformTestSupport.h"
#include "TestSupport/PrivatePulse.h"

#include <gtest/gtest.h>

#include <optional>

namespace ringwell {
namespace {

using namespace platformtest;
using testing::eventually;
using testing::PrivatePulse;

class AudioPulseTest : public ::testing::Test {
protected:
    AudioSink::ProblemHandler recordInto(std::optional<AudioProblem>& problem) {
        return [&problem](const AudioProblem& reported) { problem = reported; };
    }

    AudioPulse::Options breakingThrough() {
        return {directory / "raised-sink.json",
                [] {
                    return BreakthroughSettings{true, 70};
                },
                nullptr, nullptr};
    }

    TemporaryDirectory directory;
    EnvironmentGuard server{"PULSE_SERVER", "unix:" + (directory / "native").string()};
    asio::io_context context;
};

TEST_F(AudioPulseTest, WithoutAServerTheProblemIsReportedAndAServerThatAppearsLaterIsUsed) {
    AudioPulse sink(context, breakingThrough());
    std::optional<AudioProblem> problem;
    sink.play(BundledSounds::defaultTone(), "Mom", recordInto(problem));
    ASSERT_TRUE(runUntil(context, [&] { return problem.has_value(); }));
    EXPECT_EQ(problem->kind, AudioProblemKind::noAudioServer);
    EXPECT_FALSE(sink.status().reachable);
    EXPECT_NE(sink.status().problem.find("No audio server"), std::string::npos);

    PrivatePulse pulse(directory.path());
    if (!pulse.start())
        GTEST_SKIP() << "pulseaudio is not available";
    sink.play(BundledSounds::defaultTone(), "Mom", recordInto(problem));
    EXPECT_TRUE(eventually([&] { return pulse.alarmStream().has_value(); }));
    EXPECT_TRUE(sink.status().reachable);
    EXPECT_NE(sink.status().server.find("pulseaudio"), std::string::npos);
}

TEST_F(AudioPulseTest, AFileThatCannotBeReadIsReported) {
    AudioPulse sink(context, {});
    std::optional<AudioProblem> problem;
    sink.play("/nonexistent/ringwell-klaxon.caf", "Mom", recordInto(problem));

    ASSERT_TRUE(runUntil(context, [&] { return problem.has_value(); }));
    EXPECT_EQ(problem->kind, AudioProblemKind::playbackFailed);
    EXPECT_NE(problem->message.find("/nonexistent/ringwell-klaxon.caf"), std::string::npos);
}

class AudioPulseServerTest : public AudioPulseTest {
protected:
    void SetUp() override {
        if (!pulse.start())
            GTEST_SKIP() << "pulseaudio is not available";
        pulse.setSink(true, 40);
    }

    PrivatePulse pulse{directory.path()};
};

TEST_F(AudioPulseServerTest, AnAlarmRingsThroughAMutedSinkWhichGoesBackWhenItStops) {
    AudioPulse sink(context, breakingThrough());
    sink.play(BundledSounds::defaultTone(), "Urgent: Mom", nullptr);

    ASSERT_TRUE(eventually([&] { return pulse.alarmStream().has_value(); }));
    const auto properties = (*pulse.alarmStream())["properties"];
    EXPECT_EQ(properties["media.name"], "Urgent: Mom");
    EXPECT_EQ((*pulse.alarmStream())["mute"], false);
    EXPECT_TRUE(eventually([&] { return pulse.sinkIs(false, 70); }));
    EXPECT_TRUE(std::filesystem::exists(directory / "raised-sink.json"));

    sink.stop();
    EXPECT_TRUE(eventually([&] { return pulse.sinkIs(true, 40); }));
    EXPECT_TRUE(eventually([&] { return pulse.streams().empty(); }));
    EXPECT_TRUE(
        eventually([&] { return !std::filesystem::exists(directory / "raised-sink.json"); }));
}

TEST_F(AudioPulseServerTest, TheStreamStartsUnmutedAtFullVolumeWhateverTheServerRemembers) {
    AudioPulse sink(context, {});
    sink.play(BundledSounds::defaultTone(), "Urgent: Mom", nullptr);
    ASSERT_TRUE(eventually([&] { return pulse.alarmStream().has_value(); }));
    const std::string stream = std::to_string((*pulse.alarmStream())["index"].get<int>());
    // The person turns the alarm stream down and mutes it; the server keeps
    // that for the role's next stream.
    pulse.pactl({"set-sink-input-volume", stream, "10%"});
    pulse.pactl({"set-sink-input-mute", stream, "1"});
    ASSERT_TRUE(eventually([&] { return (*pulse.alarmStream())["mute"] == true; }));
    sink.stop();
    ASSERT_TRUE(eventually([&] { return pulse.streams().empty(); }));

    sink.play(BundledSounds::defaultTone(), "Urgent: Mom", nullptr);
    ASSERT_TRUE(eventually([&] { return pulse.alarmStream().has_value(); }));
    const auto next = *pulse.alarmStream();
    EXPECT_EQ(next["mute"], false);
    for (const auto& channel : next["volume"])
        EXPECT_EQ(channel["value"], 65536) << next.dump();
}

TEST_F(AudioPulseServerTest, AVolumeThePersonSetsMidAlarmStands) {
    AudioPulse sink(context, breakingThrough());
    sink.play(BundledSounds::defaultTone(), "Urgent: Mom", nullptr);
    ASSERT_TRUE(eventually([&] { return pulse.sinkIs(false, 70); }));

    pulse.pactl({"set-sink-volume", "ringwell_test", "30%"});
    sink.stop();
    // Their volume stays; the mute Ringwell lifted comes back.
    EXPECT_TRUE(eventually([&] { return pulse.sink()->muted; }));
    EXPECT_TRUE(pulse.sinkIs(true, 30));
}

TEST_F(AudioPulseServerTest, AServerThatGoesAwayMidAlarmIsReported) {
    AudioPulse sink(context, breakingThrough());
    std::optional<AudioProblem> problem;
    sink.play(BundledSounds::defaultTone(), "Urgent: Mom", recordInto(problem));
    ASSERT_TRUE(eventually([&] { return pulse.sinkIs(false, 70); }));

    pulse.stop();
    ASSERT_TRUE(runUntil(context, [&] { return problem.has_value(); }));
    EXPECT_EQ(problem->kind, AudioProblemKind::noAudioServer);
    EXPECT_FALSE(sink.status().reachable);
}

TEST_F(AudioPulseServerTest, WithRingThroughMuteOffTheSinkIsLeftAlone) {
    auto options = breakingThrough();
    options.settings = [] { return BreakthroughSettings{false, 70}; };
    AudioPulse sink(context, options);
    sink.play(BundledSounds::defaultTone(), "Urgent: Mom", nullptr);
    ASSERT_TRUE(eventually([&] { return pulse.alarmStream().has_value(); }));
    // The worker takes requests in order: once the second tone's stream is
    // there, whatever the first would have done to the sink is done.
    const auto first = (*pulse.alarmStream())["index"];
    sink.play(BundledSounds::defaultTone(), "Urgent: Dad", nullptr);
    ASSERT_TRUE(eventually([&] {
        auto stream = pulse.alarmStream();
        return stream && (*stream)["index"] != first;
    }));
    EXPECT_TRUE(pulse.sinkIs(true, 40));
}

} // namespace
} // namespace ringwell
