#include "Alarms/EscalationRunner.h"
#include "Core/Json.h"
#include "Daemon/HttpServer.h"
#include "Platform/WebhookClient.h"

#include "Alarms/AppTestSupport.h"

#include <gtest/gtest.h>

#include <chrono>

namespace ringwell::testing {
namespace {

class RecordingAmplifier final : public AlarmAmplifier {
public:
    struct Call {
        std::vector<Uuid> alarms;
        int percent;
        AlarmSound sound;
    };
    std::vector<Call> calls;
    void louder(const std::vector<Uuid>& alarms, int percent, AlarmSound sound) override {
        calls.push_back({alarms, percent, sound});
    }
};

// The escalation runner with the real webhook client, posting to a loopback
// server of the test's own on the same io_context; everything else is faked
// and the clock only moves when a test moves it.
class EscalationTest : public AppTest {
protected:
    void SetUp() override {
        server =
            HttpServer::onLoopback(io, 0, [this](ApiRequest request) -> Awaitable<ApiResponse> {
                received.push_back(request);
                ApiResponse response = ApiResponse::text("ok");
                response.status = answerStatus;
                co_return response;
            });
    }

    // The seeded channel with these steps, and its alarm `alarm` ringing now.
    void ring(std::vector<EscalationStep> steps) {
        const Channel channel = change(urgent().id, [&](Channel& c) {
            c.escalation = std::move(steps);
            c.reminderSound = AlarmTone::klaxon;
        });
        FireEvent event;
        event.id = Uuid::random();
        event.channelID = channel.id;
        event.channelName = channel.name;
        event.alarmID = alarm;
        event.followUpAlarmIDs = std::vector<Uuid>{};
        event.outcome = FireOutcome::fired;
        event.receivedAt = event.firedAt = clock.now();
        store.log(event);
        eventID = event.id;
        runner.emplace(io, ctx, client, amplifier,
                       EscalationRunner::Options{std::chrono::milliseconds(0), [](const Uuid& id) {
                                                     return "http://127.0.0.1:7383/history/" +
                                                            id.toString();
                                                 }});
        Alarm held{alarm, AlarmState::countdown, {}, {}, {}};
        held.configuration.attributes.presentation.alert.title = "Urgent: Disk full";
        service.held.push_back(held);
        service.startAlerting(alarm, clock.now());
        settle();
    }

    std::string webhookUrl() const {
        return "http://127.0.0.1:" + std::to_string(server->port()) + "/hook?from=ringwell";
    }

    // Moves the clock and runs what became due, to the end of every step started.
    void advance(double seconds) {
        clock.advance(seconds);
        runner->processDue();
        settle();
    }
    void settle() {
        io.restart();
        io.poll();
        for (int turns = 0; runner->stepsInFlight() > 0 && turns < 1000; ++turns)
            io.run_one_for(std::chrono::seconds(1));
        ASSERT_EQ(runner->stepsInFlight(), 0u);
    }

    const std::vector<EscalationRecord>& records() const {
        return store.events().front().escalations;
    }

    static EscalationStep step(std::int64_t after, EscalationAction action) {
        EscalationStep result;
        result.afterSeconds = after;
        result.action = action;
        return result;
    }
    EscalationStep webhook(std::int64_t after) const {
        EscalationStep result = step(after, EscalationAction::webhook);
        result.url = webhookUrl();
        result.headers = {{"Authorization", "Bearer SECRET-TOKEN-42"},
                          {"Title", "{{channel}} rings"}};
        return result;
    }

    WebhookClient client{io};
    RecordingAmplifier amplifier;
    std::unique_ptr<HttpServer> server;
    std::vector<ApiRequest> received;
    unsigned answerStatus = 200;
    Uuid alarm = Uuid::random();
    Uuid eventID;
    std::optional<EscalationRunner> runner;
};

TEST_F(EscalationTest, StepsRunInOrderAtTheirTimesAndTheWebhookSendsTheDocumentedBody) {
    ring({step(0, EscalationAction::notice), step(60, EscalationAction::louder), webhook(120)});
    ASSERT_EQ(notices.posted.size(), 1u);
    EXPECT_EQ(notices.posted[0].title, "Still ringing: Urgent");
    EXPECT_TRUE(amplifier.calls.empty());

    advance(60);
    ASSERT_EQ(amplifier.calls.size(), 1u);
    EXPECT_EQ(amplifier.calls[0].percent, 15);
    EXPECT_EQ(amplifier.calls[0].sound.named, AlarmTones::alertSoundName(AlarmTone::klaxon));
    EXPECT_TRUE(received.empty());

    advance(60);
    ASSERT_EQ(received.size(), 1u);
    const ApiRequest& request = received[0];
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.target, "/hook?from=ringwell");
    EXPECT_EQ(request.header("content-type"), "application/json");
    EXPECT_EQ(request.header("authorization"), "Bearer SECRET-TOKEN-42");
    EXPECT_EQ(request.header("title"), "Urgent rings");
    EXPECT_EQ(json::parse(request.body).value(),
              (json::Json{{"title", "Urgent: Disk full"},
                          {"channel", "Urgent"},
                          {"time", "2026-03-01T09:30:00Z"},
                          {"stopLink", "http://127.0.0.1:7383/history/" + eventID.toString()}}));

    ASSERT_EQ(records().size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(records()[i].step, static_cast<std::int64_t>(i + 1));
        EXPECT_TRUE(records()[i].ok) << records()[i].detail;
    }
    EXPECT_EQ(records()[2].detail, "HTTP 200");
    EXPECT_EQ(records()[1].at, at("2026-03-01T09:31:00Z"));
    advance(3600);
    EXPECT_EQ(received.size(), 1u); // each step runs once
}

// The failure is logged and recorded, its secret header and address nowhere.
TEST_F(EscalationTest, AFailingServerIsRetriedTwiceAndTheFailureRecordedWithoutSecrets) {
    answerStatus = 500;
    ring({webhook(0)});
    EXPECT_EQ(received.size(), 3u);
    ASSERT_EQ(records().size(), 1u);
    EXPECT_FALSE(records()[0].ok);
    EXPECT_EQ(records()[0].detail, "HTTP 500 (attempt 3 of 3)");
    ASSERT_FALSE(logger.lines().empty());
    for (const auto& line : logger.lines()) {
        EXPECT_EQ(line.message.find("SECRET-TOKEN-42"), std::string::npos) << line.message;
        EXPECT_EQ(line.message.find(std::to_string(server->port())), std::string::npos)
            << line.message;
    }
    EXPECT_EQ(json::encode(toJson(store.events().front())).find("SECRET-TOKEN-42"),
              std::string::npos);
}

TEST_F(EscalationTest, ASnoozedAlarmKeepsEscalatingAndStopCancelsEveryPendingStep) {
    ring({step(10, EscalationAction::notice), webhook(20), step(30, EscalationAction::louder)});
    service.held[0].state = AlarmState::countdown; // snoozed: counting down again
    advance(10);
    EXPECT_EQ(notices.posted.size(), 1u);
    service.stop(alarm);
    advance(100);
    EXPECT_TRUE(received.empty());
    EXPECT_TRUE(amplifier.calls.empty());
    EXPECT_EQ(records().size(), 1u);
    EXPECT_EQ(runner->activeCount(), 0u);
    EXPECT_FALSE(runner->nextDue());
}

} // namespace
} // namespace ringwell::testing
