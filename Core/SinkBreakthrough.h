#pragma once

#include "Core/JsonFwd.h"

#include <optional>
#include <string>
#include <vector>

namespace ringwell {

// What a sound output (a sink) plays at: muted or not, and its loudest
// channel's volume as a fraction of full volume (1.0 = 100%).
struct SinkLevel {
    bool muted = false;
    double volume = 1.0;
    bool operator==(const SinkLevel&) const = default;
};

// How far Ringwell may push the sink an alarm rings on: whether it unmutes and
// raises it at all ("Ring through mute") and the volume it raises it to
// ("Alarm volume", in percent).
struct BreakthroughSettings {
    bool ringThroughMute = true;
    int alarmVolumePercent = 70;
};

// What Ringwell changed on a sink while an alarm rang, kept in a file so a
// daemon that dies mid-alarm can put the sink back at its next start.
// `applied` is the level Ringwell set last; `previous` the one before it,
// because the file is written just before each change and a crash between
// the write and the change leaves the sink at `previous`.
struct SavedSink {
    std::string sink;
    SinkLevel original;
    SinkLevel applied;
    std::optional<SinkLevel> previous;
    bool operator==(const SavedSink&) const = default;
};

json::Json toJson(const SavedSink& saved);
// Throws json::DecodeError when a key is missing or has the wrong type.
SavedSink savedSinkFromJson(const json::Json& value);

// The decisions of breaking through a muted or quiet sink, apart from the
// sound server: what to set, in which steps, and what to put back. Pure.
namespace SinkBreakthrough {

// Headphones are never raised above this, whatever the alarm volume says.
inline constexpr double headphoneCap = 0.5;
// Two volumes closer than this are the same (servers round volumes).
inline constexpr double sameVolume = 0.01;
// The fade from quiet to the alarm volume.
inline constexpr int fadeStepCount = 15;
inline constexpr int fadeStepMilliseconds = 200;
// Where a fade out of mute begins.
inline constexpr double fadeFloor = 0.1;

// The level the sink should reach while the alarm rings; none when it is
// already loud enough (or breaking through is off). A muted sink goes to the
// alarm volume; an audible one is raised to it but never lowered; on
// headphones neither goes above `headphoneCap` by Ringwell's doing.
std::optional<SinkLevel> target(SinkLevel current, const BreakthroughSettings& settings,
                                bool headphones);

// The levels to set one after the other, `fadeStepCount` of them, ending at
// `target`: all unmuted, rising evenly from the sink's audible volume (from
// `fadeFloor` when it was muted) to the target volume.
std::vector<SinkLevel> fadeSteps(SinkLevel current, SinkLevel target);

// Whether the sink's level `now` is still what Ringwell left it at; when not,
// the person has changed it and Ringwell stops touching it.
bool untouched(SinkLevel now, const SavedSink& saved);

// What to set when the alarm ends, none when nothing needs setting: mute and
// volume each go back to the original unless the person changed that one.
std::optional<SinkLevel> restore(SinkLevel now, const SavedSink& saved);

// A port is headphones when the server says so or its name says so.
bool isHeadphonePort(const std::string& portName, bool typedAsHeadphones);

} // namespace SinkBreakthrough
} // namespace ringwell
