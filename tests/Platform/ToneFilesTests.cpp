#include "Model/AlarmTone.h"
#include "Platform/BundledSounds.h"
#include "PlatformTestSupport.h"

#include <gtest/gtest.h>

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <vector>

namespace ringwell {
namespace {

namespace fs = std::filesystem;

struct Decoded {
    SF_INFO info{};
    std::vector<float> samples;
};

// The tone file as libsndfile reads it; fails the test when it cannot.
Decoded decode(const fs::path& path) {
    Decoded out;
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &out.info);
    EXPECT_NE(file, nullptr) << path << ": " << sf_strerror(nullptr);
    if (!file)
        return out;
    out.samples.resize(static_cast<std::size_t>(out.info.frames * out.info.channels));
    EXPECT_EQ(sf_readf_float(file, out.samples.data(), out.info.frames), out.info.frames);
    sf_close(file);
    return out;
}

// The files the build synthesises: the eight named tones and the default.
std::vector<std::string> toneFileNames() {
    std::vector<std::string> names;
    for (auto tone : AlarmTones::allCases) {
        if (auto name = AlarmTones::alertSoundName(tone))
            names.push_back(*name);
    }
    names.push_back(BundledSounds::defaultToneFileName);
    return names;
}

class ToneFilesTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        for (const auto& name : toneFileNames())
            tones()[name] = decode(BundledSounds::directory() / name);
    }
    static std::map<std::string, Decoded>& tones() {
        static std::map<std::string, Decoded> decoded;
        return decoded;
    }
};

TEST_F(ToneFilesTest, EveryToneIsAShortLoudMonoCafFileThatLoopsWithoutAClick) {
    ASSERT_EQ(tones().size(), 9u);
    for (const auto& [name, tone] : tones()) {
        SCOPED_TRACE(name);
        EXPECT_EQ(tone.info.format, SF_FORMAT_CAF | SF_FORMAT_PCM_16);
        EXPECT_EQ(tone.info.samplerate, 44100);
        EXPECT_EQ(tone.info.channels, 1);
        const double seconds = static_cast<double>(tone.info.frames) / tone.info.samplerate;
        EXPECT_GE(seconds, 0.5);
        EXPECT_LE(seconds, 2.0);
        ASSERT_FALSE(tone.samples.empty());
        float peak = 0;
        for (float sample : tone.samples)
            peak = std::max(peak, std::abs(sample));
        EXPECT_GE(peak, 0.85f); // about -1.4 dBFS
        EXPECT_LE(peak, 0.9f);  // and not clipped
        // Where the loop joins, the signal must be close to silence on both sides.
        EXPECT_LT(std::abs(tone.samples.front()), 0.05f);
        EXPECT_LT(std::abs(tone.samples.back()), 0.05f);
    }
}

TEST_F(ToneFilesTest, NoTwoTonesAreAlike) {
    std::vector<std::pair<std::string, const Decoded*>> all;
    for (const auto& [name, tone] : tones())
        all.emplace_back(name, &tone);
    for (std::size_t a = 0; a < all.size(); ++a) {
        for (std::size_t b = a + 1; b < all.size(); ++b) {
            const auto& x = all[a].second->samples;
            const auto& y = all[b].second->samples;
            // Compared over their common length, so that a tone is not merely
            // another one padded with silence.
            const std::size_t common = std::min(x.size(), y.size());
            double difference = 0;
            for (std::size_t i = 0; i < common; ++i)
                difference += std::abs(x[i] - y[i]);
            EXPECT_GT(difference / static_cast<double>(common), 0.01)
                << all[a].first << " and " << all[b].first;
        }
    }
}

} // namespace
} // namespace ringwell
