#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace ringwell {

// Why a tone could not be heard.
enum class AudioProblemKind {
    // No sound server answers (none running, or no session to reach it).
    noAudioServer,
    // The file cannot be opened or decoded, or playback broke off.
    playbackFailed,
};

struct AudioProblem {
    AudioProblemKind kind = AudioProblemKind::playbackFailed;
    std::string message;
    bool operator==(const AudioProblem&) const = default;
};

// Where alarm tones are played: one tone at a time, looped until `stop` or the
// next `play`. The daemon uses AudioPulse; the tests use a silent fake that
// records the calls.
//
// Called from the daemon's main thread. Neither call blocks: playback runs
// elsewhere and a problem found there reaches `onProblem` later, on the main
// thread (the io_context the sink was given), at most once per `play`.
class AudioSink {
public:
    using ProblemHandler = std::function<void(const AudioProblem& problem)>;

    virtual ~AudioSink() = default;
    // Starts looping `file`, replacing whatever plays now. `title` names the
    // sound where the desktop lists what plays (the alarm's title).
    virtual void play(const std::filesystem::path& file, const std::string& title,
                      ProblemHandler onProblem) = 0;
    // Silences the sink; nothing happens when it is already silent.
    virtual void stop() = 0;
    // Percent of full volume added to the alarm volume from the next `play`
    // on (an escalation's "louder" step); 0 puts it back. A sink that does
    // not raise the output ignores it.
    virtual void setExtraVolume(int percent) { (void)percent; }
};

} // namespace ringwell
