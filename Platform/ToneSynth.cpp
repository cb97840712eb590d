// ringwell-tones DIRECTORY: writes Ringwell's alarm tones into DIRECTORY as
// ringwell-<tone>.caf (CAF, 16-bit PCM, 44.1 kHz, mono). Run by the build.
#include "Platform/ToneSynthesis.h"

#include <sndfile.h>

#include <cstdio>
#include <string>

namespace {

bool writeTone(const std::string& path, const std::vector<float>& samples) {
    SF_INFO info{};
    info.samplerate = ringwell::ToneSynthesis::sampleRate;
    info.channels = 1;
    info.format = SF_FORMAT_CAF | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file) {
        std::fprintf(stderr, "ringwell-tones: cannot write %s: %s\n", path.c_str(),
                     sf_strerror(nullptr));
        return false;
    }
    const auto count = static_cast<sf_count_t>(samples.size());
    const bool complete = sf_write_float(file, samples.data(), count) == count;
    if (!complete)
        std::fprintf(stderr, "ringwell-tones: writing %s failed: %s\n", path.c_str(),
                     sf_strerror(file));
    return sf_close(file) == 0 && complete;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: ringwell-tones DIRECTORY\n");
        return 2;
    }
    const std::string directory = argv[1];
    for (auto name : ringwell::ToneSynthesis::toneNames) {
        const std::string path = directory + "/ringwell-" + std::string(name) + ".caf";
        if (!writeTone(path, ringwell::ToneSynthesis::synthesize(name)))
            return 1;
    }
    return 0;
}
