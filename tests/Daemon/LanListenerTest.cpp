// The LAN listener of a real daemon on 127.0.0.2, driven as a phone would.
#include "DaemonFixture.h"

#include "Shared/Asio.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl.hpp>

#include <fstream>

namespace ringwell::testing {
namespace {

namespace beast = boost::beast;
namespace http = beast::http;
using Tcp = asio::ip::tcp;

struct Answer {
    unsigned status = 0;
    std::string body;
    http::fields headers;
};

http::request<http::string_body> request(http::verb method, const std::string& target,
                                         const std::string& token, std::string body) {
    http::request<http::string_body> out{method, target, 11};
    out.set(http::field::host, "127.0.0.2");
    if (!token.empty())
        out.set(http::field::authorization, "Bearer " + token);
    out.set(http::field::content_type, "application/json");
    out.body() = std::move(body);
    out.prepare_payload();
    return out;
}

// One connection to the listener, kept alive across requests.
template <typename Stream>
Answer exchange(Stream& stream, beast::flat_buffer& buffer,
                const http::request<http::string_body>& out) {
    http::write(stream, out);
    http::response<http::string_body> in;
    http::read(stream, buffer, in);
    return {in.result_int(), in.body(), in.base()};
}

class LanListenerTest : public DaemonTest {
protected:
    void SetUp() override {
        DaemonTest::SetUp();
        serveArguments = {"--lan-address", "127.0.0.2", "--lan-port", "0"};
    }
    // Adds a device and returns its token; `port` and `url` are its listener's.
    std::string addDevice(const std::string& name) {
        json::Json added = ringwellJson({"devices", "add", name, "--json"});
        url = added.value("url", "");
        auto colon = url.rfind(':');
        port = static_cast<std::uint16_t>(std::stoi(url.substr(colon + 1)));
        return added.value("token", "");
    }
    Tcp::socket connect() {
        Tcp::socket socket(io);
        socket.connect({asio::ip::make_address("127.0.0.2"), port});
        return socket;
    }
    Answer send(http::verb method, const std::string& target, const std::string& token,
                std::string body = "{}") {
        auto socket = connect();
        beast::flat_buffer buffer;
        return exchange(socket, buffer, request(method, target, token, std::move(body)));
    }

    asio::io_context io;
    std::string url;
    std::uint16_t port = 0;
};

TEST_F(LanListenerTest, ADeviceSendsTheOneRouteAndEverythingElseIsRefused) {
    startDaemon();
    EXPECT_EQ(ringwellJson({"devices", "--json"}).value("listening", true), false);
    const std::string token = addDevice("Kitchen phone");
    ASSERT_EQ(url.rfind("http://127.0.0.2:", 0), 0u) << url;

    Answer sent = send(http::verb::post, "/v1/send", token,
                       R"({"app": "Signal", "notificationTitle": "Mom"})");
    ASSERT_EQ(sent.status, 200u) << sent.body;
    // The history says where the notification came from.
    json::Json events = ringwellJson({"events", "--json"});
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].value("app", ""), "Signal");
    EXPECT_EQ(events[0]["received"].back(),
              (json::Json{{"name", "Device"}, {"value", "Kitchen phone"}}));

    std::ifstream webTokenFile(root / "config" / "ringwell" / "web-token");
    std::string webToken;
    std::getline(webTokenFile, webToken);
    ASSERT_FALSE(webToken.empty());

    // The gate's refusals are its unit tests; here the local API and its
    // token stay out of reach.
    EXPECT_EQ(send(http::verb::get, "/v1/status", token).status, 404u);
    EXPECT_EQ(send(http::verb::post, "/v1/send", webToken).status, 401u);

    // A body over 64 KiB is refused on its length alone.
    auto socket = connect();
    beast::flat_buffer buffer;
    auto big = request(http::verb::post, "/v1/send", token, "");
    big.set(http::field::content_length, std::to_string(64 * 1024 + 1));
    http::write(socket, big);
    http::response<http::string_body> tooLarge;
    http::read(socket, buffer, tooLarge);
    EXPECT_EQ(tooLarge.result_int(), 413u);

    ASSERT_EQ(ringwell({"devices", "remove", "kitchen PHONE"}).exitCode, 0);
    // The last device gone, the listener is closed.
    EXPECT_THROW(connect(), boost::system::system_error);
    EXPECT_EQ(ringwellJson({"events", "--json"}).size(), 1u);

    const std::string log = daemonLog();
    EXPECT_NE(log.find("refused peer 127.0.0."), std::string::npos) << log;
    EXPECT_NE(log.find("413 request body too large"), std::string::npos) << log;
}

TEST_F(LanListenerTest, ARevokedTokenAndAFloodAreRefused) {
    startDaemon();
    const std::string revoked = addDevice("Old phone");
    const std::string token = addDevice("New phone");
    ASSERT_EQ(ringwell({"devices", "remove", "Old phone"}).exitCode, 0);
    EXPECT_EQ(send(http::verb::post, "/v1/send", revoked).status, 401u);

    // Malformed bodies answer at once, so the flood outruns the refill of
    // 10 a second whatever the machine's speed.
    auto socket = connect();
    beast::flat_buffer buffer;
    Answer answer;
    int answered = 0;
    for (; answered < 5000; ++answered) {
        answer = exchange(socket, buffer, request(http::verb::post, "/v1/send", token, "["));
        if (answer.status != 400u)
            break;
    }
    EXPECT_EQ(answer.status, 429u) << answer.body;
    EXPECT_GE(answered, 50);
    EXPECT_EQ(answer.headers[http::field::retry_after], "1");
    EXPECT_NE(daemonLog().find("refused device \"New phone\""), std::string::npos);
}

TEST_F(LanListenerTest, WithACertificateDevicesSendOverTls) {
    auto cert = (root / "lan.crt").string();
    auto key = (root / "lan.key").string();
    auto made = runProcess({"/usr/bin/openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes",
                            "-days", "1", "-subj", "/CN=127.0.0.2", "-keyout", key, "-out", cert});
    ASSERT_EQ(made.exitCode, 0) << made.err;
    serveArguments.insert(serveArguments.end(), {"--lan-cert", cert, "--lan-key", key});
    startDaemon();
    const std::string token = addDevice("Tablet");
    ASSERT_EQ(url.rfind("https://127.0.0.2:", 0), 0u) << url;

    asio::ssl::context tls(asio::ssl::context::tls_client);
    tls.load_verify_file(cert);
    tls.set_verify_mode(asio::ssl::verify_peer);
    beast::ssl_stream<Tcp::socket> stream(connect(), tls);
    stream.handshake(asio::ssl::stream_base::client);
    beast::flat_buffer buffer;
    Answer sent = exchange(stream, buffer,
                           request(http::verb::post, "/v1/send", token, R"({"app": "Mail"})"));
    EXPECT_EQ(sent.status, 200u) << sent.body;

    // Plain HTTP gets no answer from a TLS listener.
    auto plain = connect();
    http::write(plain, request(http::verb::post, "/v1/send", token, "{}"));
    http::response<http::string_body> none;
    boost::system::error_code ec;
    http::read(plain, buffer, none, ec);
    EXPECT_TRUE(ec);
}

} // namespace
} // namespace ringwell::testing
