#include "Platform/SilentAudioSink.h"

namespace ringwell {

void SilentAudioSink::play(const std::filesystem::path& file, ProblemHandler onProblem) {
    calls_.push_back({Call::Kind::play, file});
    playing_ = file;
    if (problem_ && onProblem)
        onProblem(*problem_);
}

void SilentAudioSink::stop() {
    calls_.push_back({Call::Kind::stop, {}});
    playing_.reset();
}

} // namespace ringwell
