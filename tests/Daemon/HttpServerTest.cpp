#include "Daemon/HttpServer.h"
#include "TestSupport/Process.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <future>
#include <thread>
#include <vector>

namespace ringwell {
namespace {

// A loopback server on its own io_context thread that echoes request bodies.
class HttpServerTest : public ::testing::Test {
protected:
    void start(HttpServer::Limits limits) {
        limits.log = [](const std::string&) {};
        server = HttpServer::onLoopback(
            io, 0,
            [](ApiRequest request) -> Awaitable<ApiResponse> {
                co_return ApiResponse::text("got:" + request.body);
            },
            limits);
        work.emplace(io.get_executor());
        thread = std::thread([this] { io.run(); });
    }
    // Runs `read` on the server's thread and returns its result.
    template <typename Read> auto onLoop(Read read) {
        std::promise<decltype(read())> result;
        asio::post(io, [&] { result.set_value(read()); });
        return result.get_future().get();
    }
    void TearDown() override {
        onLoop([this] {
            server->close();
            return 0;
        });
        work.reset();
        io.stop();
        thread.join();
    }
    int connectClient(int fd = -1) {
        if (fd < 0)
            fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(server->port());
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        return fd;
    }
    std::string exchange(const std::string& bytes) {
        return testing::exchangeOn(connectClient(), bytes);
    }

    asio::io_context io;
    std::optional<asio::executor_work_guard<asio::io_context::executor_type>> work;
    std::unique_ptr<HttpServer> server;
    std::thread thread;
};

TEST_F(HttpServerTest, AmbiguousFramingIsRefusedAndHeadHasNoBody) {
    start({});
    const std::string head = "POST / HTTP/1.1\r\nHost: a\r\nConnection: close\r\n";
    for (const char* encoding :
         {"xchunked", "chunked, identity", "identity", "chunked\r\nTransfer-Encoding: chunked"})
        EXPECT_EQ(
            exchange(head + "Transfer-Encoding: " + encoding + "\r\n\r\n3\r\nabc\r\n0\r\n\r\n")
                .rfind("HTTP/1.1 400", 0),
            0u)
            << encoding;
    auto chunked = exchange(head + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n0\r\n\r\n");
    EXPECT_EQ(chunked.rfind("HTTP/1.1 200", 0), 0u);
    EXPECT_NE(chunked.find("got:abc"), std::string::npos);
    auto twoHosts = exchange("GET / HTTP/1.1\r\nHost: a\r\nHost: b\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(twoHosts.rfind("HTTP/1.1 400", 0), 0u);
    EXPECT_NE(twoHosts.find("Host"), std::string::npos);
    auto headAnswer = exchange("HEAD / HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(headAnswer.rfind("HTTP/1.1 200", 0), 0u);
    EXPECT_NE(headAnswer.find("Content-Length: 4\r\n"), std::string::npos);
    EXPECT_EQ(headAnswer.substr(headAnswer.size() - 4), "\r\n\r\n") << headAnswer;
}

TEST_F(HttpServerTest, ConnectionsBeyondTheCapWaitForAFreeSlot) {
    HttpServer::Limits limits;
    limits.maxConnections = 2;
    start(limits);
    int first = connectClient(), second = connectClient(), third = connectClient();
    ASSERT_TRUE(testing::eventually(
        [&] { return onLoop([&] { return server->openConnections(); }) == 2; }));
    // The third stays in the backlog, however long it waits.
    for (int i = 0; i < 20; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        ASSERT_EQ(onLoop([&] { return server->openConnections(); }), 2u);
    }
    ::close(first);
    auto answer =
        testing::exchangeOn(third, "GET / HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(answer.rfind("HTTP/1.1 200", 0), 0u);
    ::close(second);
}

// Takes every descriptor below a lowered limit, so the server's accepts fail
// with EMFILE, until `release`. Everything the test does while descriptors are
// short runs once before: UBSan checks a type's first use through a pipe, which
// needs a descriptor.
class DescriptorShortageTest : public HttpServerTest {
protected:
    void exhaust() {
        EXPECT_EQ(exchange("GET / HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n")
                      .rfind("HTTP/1.1 200", 0),
                  0u);
        onLoop([&] { return server->failedAccepts(); });
        onLoop([] { return 0; });
        client = ::socket(AF_INET, SOCK_STREAM, 0);
        ::getrlimit(RLIMIT_NOFILE, &saved);
        rlimit low = saved;
        low.rlim_cur = 512;
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &low), 0);
        for (int fd; (fd = ::open("/dev/null", O_RDONLY)) >= 0;)
            taken.push_back(fd);
        connectClient(client);
        ASSERT_TRUE(testing::eventually(
            [&] { return onLoop([&] { return server->failedAccepts(); }) >= 1; }));
    }
    void release() {
        for (int fd : taken)
            ::close(fd);
        taken.clear();
        ::setrlimit(RLIMIT_NOFILE, &saved);
    }
    rlimit saved{};
    std::vector<int> taken;
    int client = -1;
};

TEST_F(DescriptorShortageTest, AcceptingPausesInsteadOfSpinning) {
    HttpServer::Limits limits;
    limits.acceptBackoff = std::chrono::hours(1);
    start(limits);
    exhaust();
    // A loop that retried at once would fail again on every one of these turns.
    for (int turn = 0; turn < 100; ++turn)
        onLoop([] { return 0; });
    const std::size_t failures = onLoop([&] { return server->failedAccepts(); });
    release();
    ::close(client);
    EXPECT_EQ(failures, 1u);
}

TEST_F(DescriptorShortageTest, TheWaitingClientIsServedOnceDescriptorsAreFree) {
    HttpServer::Limits limits;
    limits.acceptBackoff = std::chrono::milliseconds(10);
    start(limits);
    exhaust();
    release();
    auto answer =
        testing::exchangeOn(client, "GET / HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(answer.rfind("HTTP/1.1 200", 0), 0u);
}

TEST(ReportEscapedTest, AnExceptionLeavingACoroutineIsReported) {
    asio::io_context io;
    std::vector<std::string> reports;
    auto failing = []() -> Awaitable<void> {
        throw std::runtime_error("disk full");
        co_return;
    };
    auto report = [&](const std::string& message) { reports.push_back(message); };
    asio::co_spawn(io, failing(), reportEscaped(report, "saving"));
    asio::co_spawn(
        io, []() -> Awaitable<void> { co_return; }(), reportEscaped(report, "idle"));
    io.run();
    EXPECT_EQ(reports, (std::vector<std::string>{"saving failed: disk full"}));
}

} // namespace
} // namespace ringwell
