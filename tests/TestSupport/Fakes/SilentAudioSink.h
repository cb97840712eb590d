#pragma once

#include "Platform/AudioSink.h"

#include <optional>
#include <string>
#include <vector>

namespace ringwell {

// An audio sink that plays nothing and records what it was asked. It can
// pretend a problem: every `play` then reports it at once, from inside the call.
class SilentAudioSink final : public AudioSink {
public:
    struct Call {
        enum class Kind { play, stop };
        Kind kind = Kind::play;
        std::filesystem::path file; // empty for stop
        std::string title;          // what the desktop would list; empty for stop
        bool operator==(const Call&) const = default;
    };

    void play(const std::filesystem::path& file, const std::string& title,
              ProblemHandler onProblem) override {
        calls_.push_back({Call::Kind::play, file, title});
        playing_ = file;
        if (problem_ && onProblem)
            onProblem(*problem_);
    }
    void stop() override {
        calls_.push_back({Call::Kind::stop, {}, {}});
        playing_.reset();
    }

    const std::vector<Call>& calls() const { return calls_; }
    // The file playing now, none when silent.
    const std::optional<std::filesystem::path>& playing() const { return playing_; }
    void failEveryPlay(std::optional<AudioProblem> problem) { problem_ = std::move(problem); }

private:
    std::vector<Call> calls_;
    std::optional<std::filesystem::path> playing_;
    std::optional<AudioProblem> problem_;
};

} // namespace ringwell
