// The command line against a stand-in daemon whose answers the test chooses:
// what it prints for the answers a real daemon gives rarely or never.

#include "Core/Json.h"
#include "Shared/Asio.h"

#include "TestSupport/Process.h"
#include "TestSupport/TemporaryDirectory.h"

#include <boost/asio/local/stream_protocol.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <string>
#include <thread>

namespace ringwell {
namespace {

using testing::runRingwell;
namespace beast = boost::beast;
namespace http = beast::http;
using Protocol = asio::local::stream_protocol;

using Answers = std::map<std::string, std::string>;

// Listens on the runtime directory's socket and answers each request with the
// JSON kept for its target (404 for others), one connection at a time.
class StandInDaemon {
public:
    explicit StandInDaemon(Answers answers) : answers_(std::move(answers)) {
        const auto directory = runtime_.path() / "ringwell";
        std::filesystem::create_directories(directory);
        ::chmod(directory.c_str(), 0700);
        acceptor_.open();
        acceptor_.bind(Protocol::endpoint((directory / "ringwell.sock").string()));
        acceptor_.listen();
        thread_ = std::thread([this] { serve(); });
    }
    ~StandInDaemon() {
        // A connection of its own wakes the accepting thread to see the stop.
        stopping_ = true;
        asio::io_context io;
        Protocol::socket wake(io);
        boost::system::error_code ignored;
        wake.connect(acceptor_.local_endpoint(), ignored);
        thread_.join();
    }

    std::map<std::string, std::string> environment() const {
        return {{"XDG_RUNTIME_DIR", runtime_.path().string()}};
    }

private:
    void serve() {
        for (;;) {
            Protocol::socket socket(io_);
            boost::system::error_code ec;
            acceptor_.accept(socket, ec);
            if (ec || stopping_)
                return;
            beast::flat_buffer buffer;
            http::request<http::string_body> request;
            http::read(socket, buffer, request, ec);
            if (ec)
                continue;
            http::response<http::string_body> response{http::status::ok, 11};
            auto answer = answers_.find(std::string(request.target()));
            if (answer == answers_.end()) {
                response.result(http::status::not_found);
                response.body() = R"({"error":"not here"})";
            } else {
                response.body() = answer->second;
            }
            response.set(http::field::content_type, "application/json");
            response.prepare_payload();
            http::write(socket, response, ec);
        }
    }

    testing::TemporaryDirectory runtime_;
    std::map<std::string, std::string> answers_;
    asio::io_context io_;
    Protocol::acceptor acceptor_{io_};
    std::atomic<bool> stopping_ = false;
    std::thread thread_;
};

TEST(CliAnswersTest, SendSaysWhenTheWaitingSetupTestTookTheNotification) {
    StandInDaemon daemon(
        Answers{{"/v1/send", R"({"id":"E1","outcome":"setupTest","isTest":true})"}});
    auto taken = runRingwell({"send", "--app", "Mail"}, daemon.environment());
    EXPECT_EQ(taken.exitCode, 0) << taken.err;
    EXPECT_EQ(taken.out,
              "The waiting setup test took this notification; see `ringwell setup-test status`.\n");
}

// With no server yet, the daemon's status says whether one was asked; the
// daemon's own test holds the answer when none is reachable.
TEST(CliAnswersTest, StatusTellsANotificationServerNotAskedYet) {
    StandInDaemon daemon(Answers{{"/v1/status", R"({"version":"1","channels":0,"events":0,)"
                                                R"("alarms":0,"notifications":)"
                                                R"({"permission":"unknown","server":null}})"}});
    EXPECT_NE(
        runRingwell({"status"}, daemon.environment()).out.find("Alarm notices: not known yet"),
        std::string::npos);
}

TEST(CliAnswersTest, ChannelsPrintEntitiesOrWholeChannelsInListOrder) {
    StandInDaemon daemon(Answers{
        {"/v1/channel-entities?matching=o",
         R"([{"id":"B","name":"Mom","ruleSummary":"from Mom"},{"id":"A","name":"Pager","ruleSummary":"Pager"}])"},
        {"/v1/channels", R"([{"id":"A","name":"Pager","mode":"immediate"},)"
                         R"({"id":"C","name":"Urgent","mode":"immediate"},)"
                         R"({"id":"B","name":"Mom","mode":"countdown"}])"},
        {"/v1/channels/B", R"({"id":"B","name":"Mom","mode":"countdown"})"},
    });
    auto entities = runRingwell({"channels", "o", "--json"}, daemon.environment());
    ASSERT_EQ(entities.exitCode, 0) << entities.err;
    EXPECT_EQ(json::Json::parse(entities.out)[0]["ruleSummary"], "from Mom");

    auto full = runRingwell({"channels", "o", "--full", "--json"}, daemon.environment());
    ASSERT_EQ(full.exitCode, 0) << full.err;
    const auto channels = json::Json::parse(full.out);
    ASSERT_EQ(channels.size(), 2u);
    EXPECT_EQ(channels[0]["mode"], "countdown");
    EXPECT_EQ(channels[1]["name"], "Pager");
    EXPECT_EQ(runRingwell({"channels", "--full"}, daemon.environment()).exitCode, 2);

    auto shown = runRingwell({"channel", "show", "B", "--json"}, daemon.environment());
    ASSERT_EQ(shown.exitCode, 0) << shown.err;
    EXPECT_EQ(json::Json::parse(shown.out)["name"], "Mom");
}

TEST(CliAnswersTest, EventsKeepOneRowPerEventWhateverItsTextHolds) {
    StandInDaemon daemon(Answers{
        {"/v1/events",
         R"([{"id":"E2","receivedAt":0,"label":"Fired","isTest":false,"channelName":"Urgent",)"
         R"("title":"Server\ndown","body":"disk\r\n\u2028full"},)"
         R"({"id":"E1","receivedAt":0,"label":"No match","isTest":false,"app":"Mail"}])"}});
    auto events = runRingwell({"events"}, daemon.environment());
    ASSERT_EQ(events.exitCode, 0) << events.err;
    ASSERT_EQ(std::count(events.out.begin(), events.out.end(), '\n'), 2) << events.out;
    EXPECT_NE(events.out.find("Urgent  Server down: disk full\n"), std::string::npos) << events.out;
}

TEST(CliAnswersTest, AnAnswerOfTheWrongShapeEndsWithAMessageAndStatusOne) {
    // An alarm whose title is a number: reading it as text throws.
    StandInDaemon daemon(Answers{
        {"/v1/alarms",
         R"([{"id":"A1","state":"alerting","configuration":{"presentation":{"alert":{"title":42}}}}])"}});
    auto alarms = runRingwell({"alarms"}, daemon.environment());
    EXPECT_EQ(alarms.exitCode, 1);
    EXPECT_EQ(alarms.err.rfind("ringwell: ", 0), 0u) << alarms.err;
}

} // namespace
} // namespace ringwell
