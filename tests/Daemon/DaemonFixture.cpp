#include "DaemonFixture.h"
#include "Core/Json.h"
#include "TestSupport/TemporaryDirectory.h"

#include <signal.h> // NOLINT(modernize-deprecated-headers): POSIX declares kill here
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <thread>

namespace ringwell::testing {

void DaemonTest::SetUp() {
    // Short: the socket's path must fit in a Unix socket address.
    static int counter = 0;
    root = std::filesystem::path(::testing::TempDir()) /
           ("rw-" + std::to_string(::getpid()) + "-" + std::to_string(++counter));
    std::filesystem::remove_all(root);
    for (const char* dir : {"data", "config", "run", "home"})
        std::filesystem::create_directories(root / dir);
    environment = {{"XDG_DATA_HOME", (root / "data").string()},
                   {"XDG_CONFIG_HOME", (root / "config").string()},
                   {"XDG_RUNTIME_DIR", (root / "run").string()},
                   {"HOME", (root / "home").string()},
                   {"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (root / "no-bus").string()},
                   {"PULSE_SERVER", "unix:" + (root / "no-pulse").string()},
                   {"TZ", "UTC"}};
    socket = root / "run" / "ringwell" / "ringwell.sock";
}

void DaemonTest::TearDown() {
    if (daemon > 0)
        stopDaemon();
    std::filesystem::remove_all(root);
}

void DaemonTest::startDaemon() {
    std::string log = (root / "daemon.log").string();
    daemon = ::fork();
    ASSERT_GE(daemon, 0);
    if (daemon == 0) {
        for (const auto& [name, value] : environment)
            ::setenv(name.c_str(), value.c_str(), 1);
        if (!std::freopen(log.c_str(), "a", stdout) || !std::freopen(log.c_str(), "a", stderr))
            ::_exit(126);
        // Port 0: tests run side by side, each daemon on a free port of its own.
        std::vector<std::string> args = {RINGWELL_BINARY, "serve", "--port", "0"};
        args.insert(args.end(), serveArguments.begin(), serveArguments.end());
        std::vector<char*> argv;
        argv.reserve(args.size() + 1);
        for (auto& arg : args)
            argv.push_back(arg.data());
        argv.push_back(nullptr);
        ::execv(RINGWELL_BINARY, argv.data());
        ::_exit(127);
    }
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < deadline) {
        if (apiRequest("GET", "/v1/channels").rfind("HTTP/1.1 200", 0) == 0)
            return;
        int status = 0;
        if (::waitpid(daemon, &status, WNOHANG) == daemon) {
            daemon = -1;
            FAIL() << "the daemon exited at start:\n" << daemonLog();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    FAIL() << "the daemon did not start:\n" << daemonLog();
}

int DaemonTest::stopDaemon() {
    if (daemon <= 0)
        return -1;
    ::kill(daemon, SIGTERM);
    int status = 0;
    ::waitpid(daemon, &status, 0);
    daemon = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int DaemonTest::connectSocket() const {
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, socket.c_str(), sizeof address.sun_path - 1);
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0)
        return fd;
    ::close(fd);
    return -1;
}

std::string DaemonTest::rawExchange(const std::string& bytes) const {
    const int fd = connectSocket();
    return fd < 0 ? "" : exchangeOn(fd, bytes);
}

std::string DaemonTest::apiRequest(const std::string& method, const std::string& path,
                                   const std::string& body) const {
    return rawExchange(method + " " + path +
                       " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\nContent-Length: " +
                       std::to_string(body.size()) + "\r\n\r\n" + body);
}

ProcessResult DaemonTest::ringwell(const std::vector<std::string>& args, const std::string& input) {
    return runRingwell(args, environment, input);
}

json::Json DaemonTest::ringwellJson(const std::vector<std::string>& args) {
    auto result = ringwell(args);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    auto parsed = json::parse(result.out);
    EXPECT_TRUE(parsed) << result.out;
    return parsed ? parsed.value() : json::Json();
}

std::string DaemonTest::daemonLog() const {
    return readFile(root / "daemon.log");
}

} // namespace ringwell::testing
