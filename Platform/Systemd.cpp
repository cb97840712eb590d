#include "Platform/Systemd.h"

#include <systemd/sd-daemon.h>

#include <cstring>

#include <fcntl.h>
#include <sys/socket.h>

namespace ringwell::Systemd {

PassedSocket passedSocket() {
    const int count = sd_listen_fds(1);
    if (count < 0)
        return {std::nullopt, std::string("the sockets passed by systemd cannot be read: ") +
                                  std::strerror(-count)};
    if (count == 0)
        return {};
    if (count > 1)
        return {std::nullopt, "systemd passed " + std::to_string(count) +
                                  " sockets; ringwell.socket listens on one"};
    const int fd = SD_LISTEN_FDS_START;
    if (sd_is_socket_unix(fd, SOCK_STREAM, 1, nullptr, 0) <= 0)
        return {std::nullopt, "the socket passed by systemd is not a listening Unix stream socket"};
    ::fcntl(fd, F_SETFD, FD_CLOEXEC);
    return {fd, std::nullopt};
}

void notifyReady(const std::string& status) {
    sd_notify(0, ("READY=1\nSTATUS=" + status).c_str());
}

void notifyStopping() {
    sd_notify(0, "STOPPING=1");
}

} // namespace ringwell::Systemd
