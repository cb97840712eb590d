#include "Platform/ToneSynthesis.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>

namespace ringwell::ToneSynthesis {
namespace {

constexpr double twoPi = 2.0 * std::numbers::pi;
constexpr double nyquist = sampleRate / 2.0;

enum class Wave { sine, triangle, square, sawtooth };

// The waveform at `phase` (radians), built from harmonics below the Nyquist
// frequency so that bright waves do not alias into noise.
double waveAt(Wave wave, double phase, double frequency) {
    if (wave == Wave::sine)
        return std::sin(phase);
    double sum = 0;
    for (int k = 1; k * frequency < nyquist && k <= 40; ++k) {
        switch (wave) {
        case Wave::triangle:
            if (k % 2 == 1)
                sum += ((k / 2) % 2 == 0 ? 1.0 : -1.0) * std::sin(k * phase) / (k * k);
            break;
        case Wave::square:
            if (k % 2 == 1)
                sum += std::sin(k * phase) / k;
            break;
        case Wave::sawtooth:
            sum += std::sin(k * phase) / k;
            break;
        case Wave::sine:
            break;
        }
    }
    return sum;
}

struct Voice {
    double start = 0;                        // seconds
    double length = 0;                       // seconds
    std::function<double(double)> frequency; // Hz at a time since the voice's start
    Wave wave = Wave::sine;
    double amplitude = 1;
    double attack = 0.005;
    double release = 0.005;
    double decay = 0; // time constant of an exponential decay; 0 for none
};

class Score {
public:
    explicit Score(double seconds)
        : samples_(static_cast<std::size_t>(seconds * sampleRate), 0.0) {}

    void add(const Voice& voice) {
        const auto first = static_cast<std::size_t>(voice.start * sampleRate);
        const auto count = static_cast<std::size_t>(voice.length * sampleRate);
        double phase = 0;
        for (std::size_t i = 0; i < count && first + i < samples_.size(); ++i) {
            const double t = static_cast<double>(i) / sampleRate;
            const double frequency = voice.frequency(t);
            double envelope = 1;
            if (t < voice.attack)
                envelope = t / voice.attack;
            const double left = voice.length - t;
            if (left < voice.release)
                envelope = std::min(envelope, left / voice.release);
            if (voice.decay > 0)
                envelope *= std::exp(-t / voice.decay);
            samples_[first + i] +=
                voice.amplitude * envelope * waveAt(voice.wave, phase, frequency);
            phase = std::fmod(phase + twoPi * frequency / sampleRate, twoPi);
        }
    }

    // Low-passed noise from a fixed seed, for the breath of the bark.
    void addNoise(double start, double length, double amplitude, double decay) {
        std::uint32_t state = 0x2545F491;
        double smoothed = 0;
        const auto first = static_cast<std::size_t>(start * sampleRate);
        const auto count = static_cast<std::size_t>(length * sampleRate);
        for (std::size_t i = 0; i < count && first + i < samples_.size(); ++i) {
            state = state * 1664525u + 1013904223u;
            const double white = static_cast<double>(state >> 8) / (1u << 24) * 2.0 - 1.0;
            smoothed += 0.25 * (white - smoothed);
            const double t = static_cast<double>(i) / sampleRate;
            const double fade = std::min({1.0, t / 0.004, (length - t) / 0.01});
            samples_[first + i] += amplitude * fade * std::exp(-t / decay) * smoothed;
        }
    }

    std::vector<float> normalized() const {
        double loudest = 0;
        for (double sample : samples_)
            loudest = std::max(loudest, std::abs(sample));
        std::vector<float> out(samples_.size());
        const double gain = loudest > 0 ? peak / loudest : 0;
        for (std::size_t i = 0; i < samples_.size(); ++i)
            out[i] = static_cast<float>(samples_[i] * gain);
        return out;
    }

private:
    std::vector<double> samples_;
};

auto constant(double hz) {
    return [hz](double) { return hz; };
}

// Four quick, high square beeps: the classic alarm clock.
std::vector<float> defaultTone() {
    Score score(1.0);
    for (int i = 0; i < 4; ++i)
        score.add(
            {.start = i * 0.15, .length = 0.09, .frequency = constant(2048), .wave = Wave::square});
    return score.normalized();
}

// Two long, soft-edged triangle tones, like a warning light's signal.
std::vector<float> beacon() {
    Score score(1.0);
    for (int i = 0; i < 2; ++i)
        score.add({.start = i * 0.5,
                   .length = 0.3,
                   .frequency = constant(960),
                   .wave = Wave::triangle,
                   .attack = 0.02,
                   .release = 0.04});
    return score.normalized();
}

// A harsh sawtooth horn that sweeps up an octave, twice.
std::vector<float> klaxon() {
    Score score(1.0);
    for (int i = 0; i < 2; ++i)
        score.add({.start = i * 0.5,
                   .length = 0.44,
                   .frequency = [](double t) { return 350.0 * std::pow(2.0, t / 0.44); },
                   .wave = Wave::sawtooth,
                   .release = 0.02});
    return score.normalized();
}

// Two struck bells (E6, then C6) with inharmonic partials that ring out.
std::vector<float> chime() {
    Score score(1.5);
    const double partials[][2] = {{1.0, 1.0}, {2.76, 0.5}, {5.40, 0.25}, {8.93, 0.12}};
    const double notes[][2] = {{0.0, 1318.5}, {0.5, 1046.5}};
    for (const auto& [start, fundamental] : notes) {
        for (const auto& [ratio, level] : partials)
            score.add({.start = start,
                       .length = 1.0 - 0.01,
                       .frequency = constant(fundamental * ratio),
                       .amplitude = level,
                       .attack = 0.002,
                       .release = 0.05,
                       .decay = 0.35 / ratio * 1.5});
    }
    return score.normalized();
}

// A 1 kHz tone chopped eight times a second.
std::vector<float> pulse() {
    Score score(1.0);
    for (int i = 0; i < 8; ++i)
        score.add({.start = i * 0.125, .length = 0.0625, .frequency = constant(1000)});
    return score.normalized();
}

// A ping that dies away, and its fainter echo.
std::vector<float> sonar() {
    Score score(1.6);
    score.add({.start = 0,
               .length = 0.9,
               .frequency = constant(1500),
               .attack = 0.004,
               .release = 0.05,
               .decay = 0.22});
    score.add({.start = 0.45,
               .length = 0.9,
               .frequency = constant(1500),
               .amplitude = 0.4,
               .attack = 0.004,
               .release = 0.05,
               .decay = 0.22});
    return score.normalized();
}

// A sweep from 400 Hz up two octaves.
std::vector<float> rise() {
    Score score(1.3);
    auto sweep = [](double t) { return 400.0 * std::pow(4.0, t / 1.2); };
    score.add({.start = 0, .length = 1.2, .frequency = sweep, .attack = 0.02, .release = 0.03});
    score.add({.start = 0,
               .length = 1.2,
               .frequency = [sweep](double t) { return 3 * sweep(t); },
               .amplitude = 0.2,
               .attack = 0.02,
               .release = 0.03});
    return score.normalized();
}

// Two pitches trading places quickly, then a pause.
std::vector<float> pager() {
    Score score(1.2);
    for (int i = 0; i < 8; ++i)
        score.add({.start = i * 0.1,
                   .length = 0.095,
                   .frequency = constant(i % 2 ? 1050 : 1400),
                   .wave = Wave::square,
                   .attack = 0.003,
                   .release = 0.003});
    return score.normalized();
}

// Two short woofs: a falling growl with breath in it.
std::vector<float> bark() {
    Score score(0.8);
    for (double start : {0.0, 0.28}) {
        score.add({.start = start,
                   .length = 0.18,
                   .frequency = [](double t) { return 320.0 - 900.0 * t; },
                   .wave = Wave::sawtooth,
                   .attack = 0.004,
                   .release = 0.02,
                   .decay = 0.08});
        score.addNoise(start, 0.16, 0.6, 0.05);
    }
    return score.normalized();
}

} // namespace

std::vector<float> synthesize(std::string_view name) {
    if (name == "default")
        return defaultTone();
    if (name == "beacon")
        return beacon();
    if (name == "klaxon")
        return klaxon();
    if (name == "chime")
        return chime();
    if (name == "pulse")
        return pulse();
    if (name == "sonar")
        return sonar();
    if (name == "rise")
        return rise();
    if (name == "pager")
        return pager();
    if (name == "bark")
        return bark();
    return {};
}

} // namespace ringwell::ToneSynthesis
