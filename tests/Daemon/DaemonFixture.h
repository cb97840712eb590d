#pragma once

#include "Core/Json.h"

#include "TestSupport/Process.h"

#include <gtest/gtest.h>

#include <sys/types.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace ringwell::testing {

// A real `ringwell serve` in fresh XDG directories, with no session bus and no
// audio server, driven through the `ringwell` command line.
class DaemonTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Starts the daemon and waits until its socket answers.
    void startDaemon();
    // Stops it with SIGTERM and waits for it to exit; returns its exit status.
    int stopDaemon();

    // A connection to the API socket; -1 when nothing listens.
    int connectSocket() const;
    // Sends raw bytes on the API socket and returns everything the daemon
    // answers; "" when nothing listens.
    std::string rawExchange(const std::string& bytes) const;
    // One HTTP request on the API socket; the raw answer.
    std::string apiRequest(const std::string& method, const std::string& path,
                           const std::string& body = "") const;

    ProcessResult ringwell(const std::vector<std::string>& args, const std::string& input = "");
    // Runs a command that must succeed and returns its JSON output.
    json::Json ringwellJson(const std::vector<std::string>& args);

    // Arguments `ringwell serve` gets after "--port 0".
    std::vector<std::string> serveArguments;
    // The environment every process of the test runs with.
    std::map<std::string, std::string> environment;
    std::filesystem::path root;
    std::filesystem::path socket;
    pid_t daemon = -1;
    std::string daemonLog() const;
};

} // namespace ringwell::testing
