#pragma once

#include <string_view>
#include <vector>

// The recipes of Ringwell's alarm tones. Each tone is short (0.8 to 1.6 s),
// mono, loud (its peak is at -1 dBFS) and ends in silence or a decay to
// nothing, so that it loops without a click. Pure: the same name always gives
// the same samples.
namespace ringwell::ToneSynthesis {

inline constexpr int sampleRate = 44100;
// -1 dBFS.
inline constexpr double peak = 0.8912509381337456;

// The eight named tones and "default", the tone of the service's default sound.
inline constexpr std::string_view toneNames[] = {"default", "beacon", "klaxon", "chime", "pulse",
                                                 "sonar",   "rise",   "pager",  "bark"};

// Samples in -1...1; empty for a name that is not in `toneNames`.
std::vector<float> synthesize(std::string_view name);

} // namespace ringwell::ToneSynthesis
