// One crash-safe save of a full store (200 events) against the bare minimum
// of writing the same bytes to disk: write + fsync + rename, with no directory
// sync, no encoding and no retry logic. The target is within 2x of the bare
// write; both are dominated by fsync, so run them on the same file system.

#include "Core/Json.h"
#include "Model/Clock.h"
#include "Model/RingwellStore.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace ringwell;

// A fresh directory under $TMPDIR (or /tmp), removed at the end.
class BenchDirectory {
public:
    BenchDirectory() {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/ringwell-bench-XXXXXX";
        if (!::mkdtemp(pattern.data()))
            throw std::runtime_error("mkdtemp failed");
        path = pattern;
    }
    ~BenchDirectory() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    fs::path path;
};

// A notification as the dispatcher records it, with realistic text sizes.
FireEvent sampleEvent(int i, Date now) {
    FireEvent event;
    event.id = Uuid::random();
    event.channelID = Uuid::random();
    event.channelName = "Family";
    event.followUpAlarmIDs = std::vector<Uuid>{};
    event.app = i % 3 == 0 ? "WhatsApp" : "Mail";
    event.sender = "Sender " + std::to_string(i % 17);
    event.title = "Re: the quarterly numbers, round " + std::to_string(i);
    event.body = "Could you call me back as soon as you see this? It is about the delivery "
                 "that was due this morning and the customer is waiting on the line.";
    event.isTimeSensitive = i % 2 == 0;
    event.received = std::vector<ReceivedField>{{"Title", *event.title}, {"Body", *event.body}};
    event.receivedAt = now;
    event.firedAt = now;
    event.outcome = i % 4 == 0 ? FireOutcome::fired : FireOutcome::noMatch;
    return event;
}

std::unique_ptr<RingwellStore> fullStore(const fs::path& directory, const Clock& clock) {
    auto store = RingwellStore::open(directory / "ringwell.json", clock);
    if (!store)
        throw std::runtime_error(store.error().message);
    for (int i = 0; i < 200; ++i)
        store.value()->log(sampleEvent(i, clock.now()));
    return std::move(store).value();
}

// One `log` into a full store: insert, drop the oldest, encode 200 events and
// rewrite the file crash-safely.
void BM_StoreSave200Events(benchmark::State& state) {
    BenchDirectory directory;
    SystemClock clock;
    auto store = fullStore(directory.path, clock);
    int i = 200;
    for (auto _ : state)
        store->log(sampleEvent(i++, clock.now()));
    state.counters["fileBytes"] =
        static_cast<double>(fs::file_size(directory.path / "ringwell.json"));
}
BENCHMARK(BM_StoreSave200Events)->Unit(benchmark::kMillisecond)->UseRealTime();

// The same bytes written the bare way: write, fsync, rename.
void BM_BareWriteFsyncRename(benchmark::State& state) {
    BenchDirectory directory;
    SystemClock clock;
    std::string bytes;
    {
        auto store = fullStore(directory.path, clock);
        bytes = json::encode(toJson(StoreSnapshot{store->channels(), store->events()}));
    }
    const fs::path temporary = directory.path / "bare.tmp";
    const fs::path target = directory.path / "bare.json";
    for (auto _ : state) {
        const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (fd < 0 ||
            ::write(fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()) ||
            ::fsync(fd) != 0 || ::close(fd) != 0 ||
            ::rename(temporary.c_str(), target.c_str()) != 0) {
            state.SkipWithError("bare write failed");
            break;
        }
    }
    state.counters["fileBytes"] = static_cast<double>(bytes.size());
}
BENCHMARK(BM_BareWriteFsyncRename)->Unit(benchmark::kMillisecond)->UseRealTime();

// The bare write plus the directory fsync that makes the rename durable: the
// one step the store adds on the disk side, shown apart to explain the gap.
void BM_BareWriteFsyncRenameSyncDirectory(benchmark::State& state) {
    BenchDirectory directory;
    SystemClock clock;
    std::string bytes;
    {
        auto store = fullStore(directory.path, clock);
        bytes = json::encode(toJson(StoreSnapshot{store->channels(), store->events()}));
    }
    const fs::path temporary = directory.path / "bare.tmp";
    const fs::path target = directory.path / "bare.json";
    const int dir = ::open(directory.path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (auto _ : state) {
        const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (fd < 0 ||
            ::write(fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()) ||
            ::fsync(fd) != 0 || ::close(fd) != 0 ||
            ::rename(temporary.c_str(), target.c_str()) != 0 || ::fsync(dir) != 0) {
            state.SkipWithError("bare write failed");
            break;
        }
    }
    ::close(dir);
}
BENCHMARK(BM_BareWriteFsyncRenameSyncDirectory)->Unit(benchmark::kMillisecond)->UseRealTime();

// The CPU part of a save alone: building and encoding the JSON of 200 events.
void BM_StoreEncode200Events(benchmark::State& state) {
    SystemClock clock;
    RingwellStore store(clock);
    for (int i = 0; i < 200; ++i)
        store.log(sampleEvent(i, clock.now()));
    for (auto _ : state) {
        std::string bytes = json::encode(toJson(StoreSnapshot{store.channels(), store.events()}));
        benchmark::DoNotOptimize(bytes);
    }
}
BENCHMARK(BM_StoreEncode200Events)->Unit(benchmark::kMicrosecond);

} // namespace
