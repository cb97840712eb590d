#include "DaemonFixture.h"

#include <sys/socket.h>
#include <unistd.h>

namespace ringwell::testing {
namespace {

// Bad requests get a clear 4xx answer and never hurt the daemon.
class ApiRobustnessTest : public DaemonTest {
protected:
    void SetUp() override {
        DaemonTest::SetUp();
        startDaemon();
    }

    std::string post(const std::string& path, const std::string& body) {
        return apiRequest("POST", path, body);
    }
};

TEST_F(ApiRobustnessTest, MalformedRequestsGetJsonErrors) {
    EXPECT_NE(post("/v1/send", "{broken").find("HTTP/1.1 400"), std::string::npos);
    EXPECT_NE(post("/v1/send", "[1,2]").find("must be a JSON object"), std::string::npos);
    EXPECT_NE(post("/v1/send", R"({"app": 5})").find("HTTP/1.1 400"), std::string::npos);
    EXPECT_NE(post("/v1/send", "{\"app\":\"\xFF\"}").find("HTTP/1.1 400"), std::string::npos);
    EXPECT_NE(rawExchange("GET /v1/channels/%zz HTTP/1.1\r\nHost: x\r\n\r\n").find("HTTP/1.1 400"),
              std::string::npos);
    EXPECT_NE(rawExchange("this is not http\r\n\r\n").find("HTTP/1.1 400"), std::string::npos);
    EXPECT_NE(post("/v1/send", std::string(2 << 20, 'x')).find("HTTP/1.1 413"), std::string::npos);
    EXPECT_NE(post("/v1/channels/not-a-channel/move", "{}").find("No channel is named"),
              std::string::npos);
    EXPECT_EQ(ringwell({"channels"}).exitCode, 0);
}

TEST_F(ApiRobustnessTest, UnknownRoutesAnswer404AndOtherMethods405) {
    EXPECT_NE(apiRequest("GET", "/v2/status").find("HTTP/1.1 404"), std::string::npos);
    auto refused = apiRequest("DELETE", "/v1/status");
    EXPECT_NE(refused.find("HTTP/1.1 405"), std::string::npos) << refused;
    EXPECT_NE(refused.find("Allow: GET\r\n"), std::string::npos) << refused;
    auto unknownAction = post("/v1/alarms/" + std::string(36, '0') + "/wake", "");
    EXPECT_NE(unknownAction.find("HTTP/1.1 404"), std::string::npos) << unknownAction;
}

TEST_F(ApiRobustnessTest, ARuleOverTheLimitsIsRefusedOnAddAndUpdate) {
    const auto channelsBefore = ringwellJson({"channels", "--json"});
    json::Json keywords = json::Json::array();
    for (int i = 0; i < 101; ++i)
        keywords.push_back("k" + std::to_string(i));
    const json::Json rule{{"keywords", keywords}};
    const std::string added = post("/v1/channels", json::encode(json::Json{{"rule", rule}}));
    EXPECT_EQ(added.rfind("HTTP/1.1 400", 0), 0u);
    EXPECT_NE(added.find("at most 100 keywords"), std::string::npos) << added;

    auto channel = ringwellJson({"channel", "show", "Urgent"});
    channel["rule"]["senders"] = json::Json::array({std::string(201, 'x')});
    auto updated = ringwell({"channel", "update"}, json::encode(channel));
    EXPECT_NE(updated.err.find("longer than 200 characters"), std::string::npos) << updated.err;
    EXPECT_EQ(ringwellJson({"channels", "--json"}), channelsBefore);
}

// The HTTP server's own refusals (framing, Host, HEAD) are its unit tests.
TEST_F(ApiRobustnessTest, HostileRequestsGetAClearRefusalWhileOthersAreServed) {
    // A client that trickles a request and never finishes it.
    const int slow = connectSocket();
    ASSERT_GE(slow, 0);
    ASSERT_GT(::send(slow, "POST /v1/send HTTP/1.1\r\nHo", 26, MSG_NOSIGNAL), 0);

    EXPECT_EQ(post("/v1/send", R"({"app":"Mail","a":1e999})").substr(0, 12), "HTTP/1.1 400");
    EXPECT_NE(post("/v1/ring", R"({"channel":1e999})").find("invalid JSON"), std::string::npos);
    auto sent = ringwell({"send", "--app", "Mail", "--json"});
    EXPECT_EQ(sent.exitCode, 0) << sent.err;
    ::close(slow);
}

// Usage errors exit 2, whether the command line or the daemon finds them;
// what does not exist exits 1.
TEST_F(ApiRobustnessTest, UsageErrorsAndUnknownNamesHaveTheirExitCodes) {
    EXPECT_EQ(ringwell({"alarm", "stop", "nope"}).exitCode, 2);
    EXPECT_EQ(ringwell({"alarm", "stop", "ABCD"}).exitCode, 1);
    EXPECT_EQ(ringwell({"ring"}).exitCode, 2);
    EXPECT_EQ(ringwell({"permission", "alarms", "maybe"}).exitCode, 2);
    EXPECT_EQ(ringwell({"events", "--channel", "nope"}).exitCode, 1);
    auto missing = ringwell({"ring", "Nobody"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.err, "No channel matches \"Nobody\".\n");
}

} // namespace
} // namespace ringwell::testing
