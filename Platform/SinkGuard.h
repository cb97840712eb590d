#pragma once

#include "Core/SinkBreakthrough.h"
#include "Platform/PulseConnection.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace ringwell {

// Breaks through the sink an alarm plays on and puts it back afterwards, with
// SinkBreakthrough's decisions and a PulseConnection's calls.
//
// Before each change of the sink, what it was and what Ringwell sets is
// written crash-safely to `file`; the file is removed once the sink is back.
// A file found at start (the daemon died mid-alarm) is acted on by
// `restoreLeftover` as soon as the server answers.
//
// Used by AudioPulse's worker thread only; `log` is called on that thread.
class SinkGuard {
public:
    using Clock = std::chrono::steady_clock;

    SinkGuard(PulseConnection& pulse, std::filesystem::path file,
              std::function<void(const std::string&)> log);

    // Unmutes and starts raising sink `index` as `settings` say; nothing when
    // it is loud enough. Already raised, it fades on up to a higher alarm
    // volume (an escalation's "louder" step), unless the person has moved it.
    void begin(std::uint32_t index, const BreakthroughSettings& settings);
    // When the next fade step is due; none when not fading.
    std::optional<Clock::time_point> nextStep() const;
    // Takes the fade's next step, unless the person changed the sink meanwhile.
    void step();
    // Puts the sink back (what the person changed stays); keeps the file when
    // the server is gone, so the next connection finishes the job.
    void end();
    // Puts back the sink a previous run left raised; none to do without a file.
    void restoreLeftover();
    bool isActive() const { return saved_.has_value(); }

private:
    void raiseFurther(const BreakthroughSettings& settings);
    bool apply(const PulseSink& sink, SinkLevel level);
    bool save();
    void finish(const SavedSink& saved);

    PulseConnection& pulse_;
    std::filesystem::path file_;
    std::function<void(const std::string&)> log_;
    std::optional<SavedSink> saved_;
    std::deque<SinkLevel> fade_;
    Clock::time_point nextStep_{};
};

} // namespace ringwell
