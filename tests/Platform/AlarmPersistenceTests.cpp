#include "Core/Json.h"
#include "Platform/AlarmFile.h"
#include "Platform/LocalAlarmService.h"
#include "PlatformTestSupport.h"
#include "TestSupport/Fakes/SilentAudioSink.h"

#include <gtest/gtest.h>

#include <exception>
#include <memory>

#include <sys/stat.h>

namespace ringwell {
namespace {

using namespace platformtest;
namespace fs = std::filesystem;

// Each "run" of the daemon is a new service over the same file; the clock
// keeps going between runs, as the wall clock does while the daemon is down.
class AlarmPersistenceTest : public ::testing::Test {
protected:
    AlarmPersistenceTest() {
        fs::create_directories(directory / "Sounds");
        writeFile(directory / "default.caf", "default tone");
    }

    fs::path file() const { return directory / "ringwell" / "alarms.json"; }

    std::unique_ptr<LocalAlarmService> run() {
        return std::make_unique<LocalAlarmService>(
            context, clock, sink, notices, logger,
            LocalAlarmService::Files{file(), directory / "Sounds", directory / "default.caf"});
    }

    void schedule(LocalAlarmService& service, const Uuid& id, AlarmConfiguration config) {
        scheduleNow(context, service, id, std::move(config));
    }

    const Alarm& only(const LocalAlarmService& service) {
        alarms = service.alarms();
        EXPECT_EQ(alarms.size(), 1u);
        if (alarms.empty())
            throw std::runtime_error("no alarm");
        return alarms.front();
    }

    TemporaryDirectory directory;
    asio::io_context context;
    TestClock clock;
    SilentAudioSink sink;
    FakeNoticeCenter notices;
    RecordingLogger logger;
    std::vector<Alarm> alarms;
    const Uuid id = Uuid::random();
};

TEST_F(AlarmPersistenceTest, ARestartResumesACountdownWithTheTimeThatIsLeft) {
    const Date scheduledAt = clock.now();
    const auto config = configuration(60, 300, "ringwell-klaxon.caf");
    {
        auto service = run();
        service->setAuthorization(AlarmAuthorizationState::authorized);
        schedule(*service, id, config);
    }
    clock.advance(20);
    auto service = run();

    const Alarm& alarm = only(*service);
    EXPECT_EQ(alarm.state, AlarmState::countdown);
    EXPECT_EQ(alarm.fireDate, scheduledAt.addingSeconds(60));
    EXPECT_EQ(alarm.configuration, config);
    EXPECT_EQ(service->nextDeadline(), scheduledAt.addingSeconds(60));

    clock.advance(39);
    service->processDueAlarms();
    EXPECT_EQ(only(*service).state, AlarmState::countdown);
    clock.advance(1);
    service->processDueAlarms();
    EXPECT_EQ(only(*service).state, AlarmState::alerting);
}

// One alarm was alerting when the daemon stopped, one fell due while it was down.
TEST_F(AlarmPersistenceTest, AlarmsThatAreOrFellDueAlertAtStart) {
    const Uuid later = Uuid::random();
    {
        auto service = run();
        service->setAuthorization(AlarmAuthorizationState::authorized);
        schedule(*service, id, configuration(1));
        schedule(*service, later, configuration(60));
        clock.advance(1);
        service->processDueAlarms();
        drain(context);
    }
    EXPECT_EQ(sink.playing(), std::nullopt); // the old run went quiet as it ended
    clock.advance(3600);
    auto service = run();
    drain(context);

    ASSERT_EQ(service->alarms().size(), 2u);
    for (const Alarm& alarm : service->alarms())
        EXPECT_EQ(alarm.state, AlarmState::alerting);
    EXPECT_EQ(sink.playing(), directory / "default.caf");
    ASSERT_FALSE(notices.posted.empty());
    EXPECT_EQ(notices.posted.back().actions.at(0).key, "stop"); // a ringing notice
}

TEST_F(AlarmPersistenceTest, APausedAlarmStaysPausedWithItsRemainingTime) {
    {
        auto service = run();
        service->setAuthorization(AlarmAuthorizationState::authorized);
        schedule(*service, id, configuration(60));
        clock.advance(25);
        service->pause(id);
    }
    clock.advance(10000);
    auto service = run();

    const Alarm& alarm = only(*service);
    EXPECT_EQ(alarm.state, AlarmState::paused);
    EXPECT_EQ(alarm.remainingSeconds, 35);
    EXPECT_EQ(sink.playing(), std::nullopt);
}

TEST_F(AlarmPersistenceTest, StoppedAlarmsAndThePermissionAreRememberedInAPrivateFile) {
    {
        auto service = run();
        service->setAuthorization(AlarmAuthorizationState::authorized);
        schedule(*service, id, configuration(60));
        schedule(*service, Uuid::random(), configuration(60));
        service->cancel(id);
    }
    struct stat info {};
    ASSERT_EQ(::stat(file().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    ASSERT_EQ(::stat(file().parent_path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u);

    auto service = run();
    EXPECT_EQ(service->authorizationState(), AlarmAuthorizationState::authorized);
    ASSERT_EQ(service->alarms().size(), 1u);
    EXPECT_NE(service->alarms().front().id, id);

    service->setAuthorization(AlarmAuthorizationState::denied);
    service.reset();
    EXPECT_EQ(run()->authorizationState(), AlarmAuthorizationState::denied);
}

TEST_F(AlarmPersistenceTest, AFileThatIsNotJsonIsQuarantined) {
    const fs::path quarantined = file().parent_path() / "alarms.corrupt.json";
    for (const std::string contents :
         {"{\"authorization\": \"authorized\", \"alarms\": [",
          "{\"authorization\": \"authorized\", \"alarms\": [], \"x\": 1e999}"}) {
        SCOPED_TRACE(contents);
        fs::create_directories(file().parent_path());
        writeFile(file(), contents);
        auto service = run();

        EXPECT_TRUE(service->alarms().empty());
        EXPECT_EQ(service->authorizationState(), AlarmAuthorizationState::notDetermined);
        EXPECT_EQ(readFile(quarantined), contents);
        EXPECT_FALSE(fs::exists(file()));
    }
    EXPECT_EQ(logger.count(quarantined.string()), 2);

    auto service = run();
    service->setAuthorization(AlarmAuthorizationState::authorized);
    EXPECT_TRUE(fs::exists(file()));
    EXPECT_EQ(run()->authorizationState(), AlarmAuthorizationState::authorized);
}

TEST_F(AlarmPersistenceTest, ABadAlarmIsLeftOutAndTheOthersAndThePermissionAreKept) {
    const Alarm good{id, AlarmState::countdown, configuration(60), clock.now().addingSeconds(60),
                     std::nullopt};
    Alarm noDeadline = good;
    noDeadline.id = Uuid::random();
    noDeadline.fireDate.reset();
    json::Json saved =
        toJson(AlarmServiceState{AlarmAuthorizationState::authorized, {good, noDeadline, good}});
    saved["alarms"].push_back(42);
    const std::string original = json::encode(saved);
    fs::create_directories(file().parent_path());
    writeFile(file(), original);

    auto service = run();
    EXPECT_EQ(service->authorizationState(), AlarmAuthorizationState::authorized);
    EXPECT_EQ(only(*service).id, id);
    EXPECT_EQ(logger.count("has no fireDate"), 1);
    EXPECT_EQ(logger.count("appears twice"), 1);
    EXPECT_EQ(logger.count("alarm 4: "), 1);
    // The file as it was is kept aside; the readable part is what loads next time.
    EXPECT_EQ(readFile(file().parent_path() / "alarms.corrupt.json"), original);
    service.reset();
    const auto lines = logger.lines().size();
    service = run();
    EXPECT_EQ(service->authorizationState(), AlarmAuthorizationState::authorized);
    EXPECT_EQ(only(*service).id, id);
    EXPECT_EQ(logger.lines().size(), lines);
}

TEST_F(AlarmPersistenceTest, AnUnreadablePermissionCostsOnlyItself) {
    const Alarm paused{id, AlarmState::paused, configuration(60), std::nullopt, 12.5};
    json::Json saved = toJson(AlarmServiceState{AlarmAuthorizationState::denied, {paused}});
    saved["authorization"] = "maybe";
    const auto decoded = json::decode(json::encode(saved), alarmFileFromJson);
    ASSERT_TRUE(decoded.ok());
    EXPECT_EQ(decoded.value().state.authorization, AlarmAuthorizationState::notDetermined);
    EXPECT_EQ(decoded.value().state.alarms, std::vector<Alarm>{paused});
    EXPECT_EQ(decoded.value().dropped.size(), 1u);
}

} // namespace
} // namespace ringwell
