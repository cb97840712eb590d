#pragma once

#include <optional>
#include <string>

namespace ringwell {

// The daemon's side of running as a systemd user service: the API socket
// systemd listens on for it (ringwell.socket), and telling systemd when the
// daemon serves (ringwell.service is Type=notify). Outside systemd both do
// nothing, so `ringwell serve` runs the same daemon standalone.
namespace Systemd {

// The listening Unix stream socket passed by socket activation (LISTEN_FDS,
// LISTEN_PID for this process), made close-on-exec; none when nothing was
// passed. The environment variables are cleared either way, so that no child
// takes them for its own. A passed descriptor that is not one listening Unix
// stream socket is an error: the message says what was passed.
struct PassedSocket {
    std::optional<int> descriptor;
    std::optional<std::string> error;
};
PassedSocket passedSocket();

// READY=1 with a status line; a no-op without NOTIFY_SOCKET.
void notifyReady(const std::string& status);
// STOPPING=1; a no-op without NOTIFY_SOCKET.
void notifyStopping();

} // namespace Systemd
} // namespace ringwell
