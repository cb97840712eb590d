#include "TestSupport/Process.h"

#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <thread>

namespace ringwell::testing {

ProcessResult runProcess(const std::vector<std::string>& argv,
                         const std::map<std::string, std::string>& environment,
                         const std::string& input) {
    int inPipe[2], outPipe[2], errPipe[2];
    if (pipe(inPipe) != 0 || pipe(outPipe) != 0 || pipe(errPipe) != 0)
        throw std::runtime_error("pipe failed");
    pid_t pid = fork();
    if (pid < 0)
        throw std::runtime_error("fork failed");
    if (pid == 0) {
        dup2(inPipe[0], STDIN_FILENO);
        dup2(outPipe[1], STDOUT_FILENO);
        dup2(errPipe[1], STDERR_FILENO);
        for (int fd : {inPipe[0], inPipe[1], outPipe[0], outPipe[1], errPipe[0], errPipe[1]})
            close(fd);
        for (const auto& [name, value] : environment)
            setenv(name.c_str(), value.c_str(), 1);
        std::vector<char*> args;
        args.reserve(argv.size() + 1);
        for (const auto& arg : argv)
            args.push_back(const_cast<char*>(arg.c_str()));
        args.push_back(nullptr);
        execv(args[0], args.data());
        _exit(127);
    }
    close(inPipe[0]);
    close(outPipe[1]);
    close(errPipe[1]);

    ProcessResult result;
    size_t written = 0;
    int inFd = inPipe[1];
    if (input.empty()) {
        close(inFd);
        inFd = -1;
    }
    bool outOpen = true, errOpen = true;
    while (outOpen || errOpen || inFd >= 0) {
        pollfd fds[3] = {{outOpen ? outPipe[0] : -1, POLLIN, 0},
                         {errOpen ? errPipe[0] : -1, POLLIN, 0},
                         {inFd, POLLOUT, 0}};
        if (poll(fds, 3, -1) < 0 && errno != EINTR)
            break;
        char buffer[4096];
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP | POLLERR)))
                continue;
            ssize_t n = read(fds[i].fd, buffer, sizeof buffer);
            if (n > 0) {
                (i == 0 ? result.out : result.err).append(buffer, static_cast<size_t>(n));
            } else {
                (i == 0 ? outOpen : errOpen) = false;
            }
        }
        if (inFd >= 0 && (fds[2].revents & (POLLOUT | POLLERR | POLLHUP))) {
            ssize_t n = write(inFd, input.data() + written, input.size() - written);
            if (n > 0)
                written += static_cast<size_t>(n);
            if (n <= 0 || written == input.size()) {
                close(inFd);
                inFd = -1;
            }
        }
    }
    close(outPipe[0]);
    close(errPipe[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

ProcessResult runRingwell(const std::vector<std::string>& args,
                          const std::map<std::string, std::string>& environment,
                          const std::string& input) {
    std::vector<std::string> argv{RINGWELL_BINARY};
    argv.insert(argv.end(), args.begin(), args.end());
    return runProcess(argv, environment, input);
}

std::string exchangeOn(int fd, const std::string& bytes) {
    for (size_t sent = 0; sent < bytes.size();) {
        const ssize_t n = send(fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (n <= 0)
            break;
        sent += static_cast<size_t>(n);
    }
    shutdown(fd, SHUT_WR);
    std::string answer;
    char buffer[8192];
    for (ssize_t n; (n = read(fd, buffer, sizeof buffer)) > 0;)
        answer.append(buffer, static_cast<size_t>(n));
    close(fd);
    return answer;
}

bool eventually(const std::function<bool()>& done) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!done()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

} // namespace ringwell::testing
