#include "Platform/AudioPulse.h"

#include "Platform/BundledSounds.h"
#include "PlatformTestSupport.h"

#include <gtest/gtest.h>

#include <optional>

namespace ringwell {
namespace {

using namespace platformtest;

// These run without a sound server: the sink must say so rather than hang
// or fail silently.
class AudioPulseTest : public ::testing::Test {
protected:
    AudioSink::ProblemHandler recordInto(std::optional<AudioProblem>& problem) {
        return [&problem](const AudioProblem& reported) { problem = reported; };
    }

    EnvironmentGuard server{"PULSE_SERVER", "unix:/nonexistent/ringwell-test/native"};
    asio::io_context context;
};

TEST_F(AudioPulseTest, AMissingSoundServerIsReportedOnTheMainLoop) {
    AudioPulse sink(context);
    std::optional<AudioProblem> problem;
    sink.play(BundledSounds::defaultTone(), recordInto(problem));

    EXPECT_TRUE(runUntil(context, [&] { return problem.has_value(); }));
    ASSERT_TRUE(problem.has_value());
    EXPECT_EQ(problem->kind, AudioProblemKind::noAudioServer);
    EXPECT_FALSE(problem->message.empty());
}

TEST_F(AudioPulseTest, AFileThatCannotBeReadIsReported) {
    AudioPulse sink(context);
    std::optional<AudioProblem> problem;
    sink.play("/nonexistent/ringwell-klaxon.caf", recordInto(problem));

    EXPECT_TRUE(runUntil(context, [&] { return problem.has_value(); }));
    ASSERT_TRUE(problem.has_value());
    EXPECT_EQ(problem->kind, AudioProblemKind::playbackFailed);
    EXPECT_NE(problem->message.find("/nonexistent/ringwell-klaxon.caf"), std::string::npos);
}

} // namespace
} // namespace ringwell
