#pragma once

#include "Core/Result.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

namespace ringwell::cli {

struct DaemonReply {
    unsigned status = 0;
    std::string body;
    std::string contentType;
};

// Talks to the running daemon over its Unix socket: one HTTP request per call,
// with a timeout. `reachable` is false when nothing listens on the socket.
class DaemonClient {
public:
    explicit DaemonClient(std::filesystem::path socketPath,
                          std::chrono::seconds timeout = std::chrono::seconds(60));

    struct Outcome {
        bool reachable = false;
        std::optional<DaemonReply> reply; // absent when the exchange failed
        std::string failure;              // why, when it failed
    };
    Outcome request(const std::string& method, const std::string& target,
                    const std::string& body = "") const;

private:
    std::filesystem::path socketPath_;
    std::chrono::seconds timeout_;
};

} // namespace ringwell::cli
