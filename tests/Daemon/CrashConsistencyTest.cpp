#include "DaemonFixture.h"
#include "TestSupport/TemporaryDirectory.h"

#include <signal.h> // NOLINT(modernize-deprecated-headers): POSIX declares kill here
#include <sys/wait.h>

#include <cstdlib>
#include <random>
#include <set>
#include <thread>

namespace ringwell::testing {
namespace {

// The daemon SIGKILLed at a random moment of a burst of sends, channel edits
// and alarm actions, then started again: its files always parse, none is moved
// aside, and every send it acknowledged is in the history. The kill point is
// random; the assertions hold wherever it falls. RINGWELL_CRASH_ROUNDS sets
// the number of rounds (`make soak`), RINGWELL_CRASH_SEED replays one run.
class CrashConsistencyTest : public DaemonTest {
protected:
    struct Answer {
        int status = 0; // 0 when the connection broke before a full answer
        json::Json body;
    };

    Answer call(const std::string& method, const std::string& path, const std::string& body = "") {
        const std::string raw = apiRequest(method, path, body);
        const auto split = raw.find("\r\n\r\n");
        const auto length = raw.find("Content-Length: ");
        Answer answer;
        if (raw.rfind("HTTP/1.1 ", 0) != 0 || split == std::string::npos ||
            length == std::string::npos)
            return answer;
        // Acknowledged only when the whole body arrived.
        if (raw.size() - split - 4 != std::stoul(raw.substr(length + 16)))
            return answer;
        answer.status = std::stoi(raw.substr(9, 3));
        auto parsed = json::parse(raw.substr(split + 4));
        if (parsed)
            answer.body = parsed.value();
        return answer;
    }

    // Every JSON file the daemon keeps parses, and none was moved aside.
    void expectFilesIntact(unsigned round) {
        for (const char* dir : {"data", "config"}) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(root / dir)) {
                std::string name = entry.path().filename().string();
                EXPECT_EQ(name.find("corrupt"), std::string::npos)
                    << "round " << round << ": " << entry.path();
                if (!entry.is_regular_file() || entry.path().extension() != ".json")
                    continue;
                EXPECT_TRUE(json::parse(readFile(entry.path())))
                    << "round " << round << ": " << entry.path() << " does not parse";
            }
        }
    }
};

TEST_F(CrashConsistencyTest, AcknowledgedWorkSurvivesAKillAtAnyMoment) {
    const char* roundsText = std::getenv("RINGWELL_CRASH_ROUNDS");
    const unsigned rounds = roundsText ? static_cast<unsigned>(std::atoi(roundsText)) : 100;
    const char* seedText = std::getenv("RINGWELL_CRASH_SEED");
    const unsigned seed = seedText ? static_cast<unsigned>(std::strtoul(seedText, nullptr, 10))
                                   : std::random_device{}();
    std::printf("crash consistency: %u rounds, RINGWELL_CRASH_SEED=%u\n", rounds, seed);
    std::fflush(stdout); // before the daemon forks with a copy of the buffer
    RecordProperty("seed", std::to_string(seed));
    std::mt19937 random(seed);

    // Each round's restarted daemon is the next round's victim.
    startDaemon();
    for (unsigned round = 0; round < rounds && !HasFailure(); ++round) {
        ASSERT_GT(daemon, 0);
        const pid_t victim = daemon;
        const auto killAfter = std::chrono::microseconds(random() % 60000);
        std::thread killer([victim, killAfter] {
            std::this_thread::sleep_for(killAfter);
            ::kill(victim, SIGKILL);
        });
        std::vector<std::string> acknowledged;
        std::vector<std::string> createdChannels;
        for (unsigned i = 0; i < 12; ++i) {
            unsigned pick = random() % 10;
            Answer answer;
            if (pick < 6) {
                std::string title = "r" + std::to_string(round) + "-" + std::to_string(i);
                answer = call("POST", "/v1/send",
                              json::encode({{"app", "Crash"}, {"notificationTitle", title}}));
                if (answer.status == 200)
                    acknowledged.push_back(answer.body.value("id", ""));
            } else if (pick < 8) {
                answer = call("POST", "/v1/channels",
                              json::encode({{"name", "C" + std::to_string(round)}}));
                if (answer.status == 201)
                    createdChannels.push_back(answer.body.value("id", ""));
            } else if (pick < 9 && !createdChannels.empty()) {
                // Unanswered, the delete may or may not have happened: expect nothing.
                answer = call("DELETE", "/v1/channels/" + createdChannels.back());
                createdChannels.pop_back();
            } else {
                answer = call("POST", "/v1/stop-all");
            }
            if (answer.status == 0)
                break; // killed
        }
        killer.join();
        int status = 0;
        ::waitpid(victim, &status, 0);
        daemon = -1;
        expectFilesIntact(round);

        startDaemon();
        Answer history = call("GET", "/v1/events");
        ASSERT_EQ(history.status, 200) << "round " << round;
        std::set<std::string> kept;
        for (const auto& event : history.body)
            kept.insert(event.value("id", ""));
        for (const auto& id : acknowledged)
            EXPECT_TRUE(kept.count(id)) << "round " << round << " (seed " << seed
                                        << "): acknowledged send " << id << " was lost";
        Answer channels = call("GET", "/v1/channels");
        ASSERT_EQ(channels.status, 200);
        for (const auto& id : createdChannels) {
            bool found = false;
            for (const auto& channel : channels.body)
                found = found || channel.value("id", "") == id;
            EXPECT_TRUE(found) << "round " << round << ": created channel " << id << " was lost";
        }
        expectFilesIntact(round);
    }
}

} // namespace
} // namespace ringwell::testing
