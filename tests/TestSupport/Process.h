#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace ringwell::testing {

struct ProcessResult {
    int exitCode = -1; // -1 when the process did not exit normally
    std::string out;
    std::string err;
};

// Runs a program to completion with extra environment variables and the given
// standard input, collecting both output streams.
ProcessResult runProcess(const std::vector<std::string>& argv,
                         const std::map<std::string, std::string>& environment = {},
                         const std::string& input = "");

// Runs the built `ringwell` executable.
ProcessResult runRingwell(const std::vector<std::string>& args,
                          const std::map<std::string, std::string>& environment = {},
                          const std::string& input = "");

// Sends `bytes` on a connected socket, ends the sending side and returns
// everything the peer answers until it closes; closes `fd`.
std::string exchangeOn(int fd, const std::string& bytes);

// Polls `done` every 20 ms for up to 20 s, for work that another thread or
// process does in its own time; false when it never held.
bool eventually(const std::function<bool()>& done);

} // namespace ringwell::testing
