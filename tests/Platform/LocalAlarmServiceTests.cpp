#include "Platform/LocalAlarmService.h"

#include "Core/Json.h"
#include "Platform/AlarmFile.h"
#include "Platform/AlarmNotice.h"
#include "PlatformTestSupport.h"
#include "TestSupport/Fakes/SilentAudioSink.h"

#include <gtest/gtest.h>

#include <exception>
#include <memory>

#include <sys/stat.h>

namespace ringwell {
namespace {

using namespace platformtest;
using Call = SilentAudioSink::Call;
namespace fs = std::filesystem;

// The service on an io_context that the test drives by hand, with a clock
// that only moves when told, a recording sink, notice centre and log.
class LocalAlarmServiceTest : public ::testing::Test {
protected:
    // The action keys of a notice, in order, joined by spaces.
    static std::string keys(const NoticeRequest& notice) {
        std::string joined;
        for (const auto& action : notice.actions)
            joined += (joined.empty() ? "" : " ") + action.key;
        return joined;
    }

    LocalAlarmServiceTest() {
        fs::create_directories(directory / "Sounds");
        fs::create_directories(directory / "Bundled");
        writeFile(defaultTone(), "default tone");
        writeFile(klaxon(), "klaxon tone");
    }

    fs::path defaultTone() const { return directory / "Bundled" / "ringwell-default.caf"; }
    fs::path klaxon() const { return directory / "Sounds" / "ringwell-klaxon.caf"; }
    LocalAlarmService::Files files() const {
        return {directory / "data" / "ringwell" / "alarms.json", directory / "Sounds",
                defaultTone()};
    }

    std::unique_ptr<LocalAlarmService> makeService() {
        return std::make_unique<LocalAlarmService>(context, clock, sink, notices, logger, files());
    }
    std::unique_ptr<LocalAlarmService> authorizedService() {
        auto service = makeService();
        service->setAuthorization(AlarmAuthorizationState::authorized);
        return service;
    }

    void schedule(LocalAlarmService& service, const Uuid& id, AlarmConfiguration config) {
        scheduleNow(context, service, id, std::move(config));
    }

    AlarmAuthorizationState request(LocalAlarmService& service) {
        std::optional<AlarmAuthorizationState> answer;
        asio::co_spawn(context, service.requestAuthorization(),
                       [&](std::exception_ptr, AlarmAuthorizationState state) { answer = state; });
        drain(context);
        EXPECT_TRUE(answer.has_value()) << "requestAuthorization did not finish at once";
        return answer.value_or(AlarmAuthorizationState::authorized);
    }

    // Moves the clock and lets the service see it, as its timer would.
    void pass(LocalAlarmService& service, double seconds) {
        clock.advance(seconds);
        service.processDueAlarms();
        drain(context);
    }

    AlarmState stateOf(const LocalAlarmService& service, const Uuid& id) {
        for (const auto& alarm : service.alarms()) {
            if (alarm.id == id)
                return alarm.state;
        }
        ADD_FAILURE() << "no alarm " << id.toString();
        return AlarmState::countdown;
    }

    TemporaryDirectory directory;
    asio::io_context context;
    TestClock clock;
    SilentAudioSink sink;
    FakeNoticeCenter notices;
    RecordingLogger logger;
    const Uuid first = Uuid::random();
    const Uuid second = Uuid::random();
};

// MARK: Authorization

// Observers hear each change of the permission, and only changes; that they
// may leave while they are told is the observer list's own test.
TEST_F(LocalAlarmServiceTest, WithoutPermissionNothingIsScheduledAndObserversHearEachChange) {
    auto service = makeService();
    std::vector<AlarmAuthorizationState> heard;
    const std::uint64_t token = service->observeAuthorization(
        [&](AlarmAuthorizationState state) { heard.push_back(state); });
    EXPECT_EQ(request(*service), AlarmAuthorizationState::denied);
    EXPECT_EQ(request(*service), AlarmAuthorizationState::denied);
    EXPECT_EQ(service->authorizationState(), AlarmAuthorizationState::notDetermined);
    EXPECT_EQ(logger.count(LocalAlarmService::permissionHint), 1);
    EXPECT_EQ(errorKind([&] { schedule(*service, first, configuration(1)); }),
              AlarmServiceError::Kind::failed);
    service->setAuthorization(AlarmAuthorizationState::denied);
    EXPECT_EQ(errorKind([&] { schedule(*service, first, configuration(1)); }),
              AlarmServiceError::Kind::failed);
    EXPECT_TRUE(service->alarms().empty());

    service->setAuthorization(AlarmAuthorizationState::authorized);
    service->setAuthorization(AlarmAuthorizationState::authorized);
    EXPECT_EQ(request(*service), AlarmAuthorizationState::authorized);
    service->stopObservingAuthorization(token);
    service->setAuthorization(AlarmAuthorizationState::denied);
    EXPECT_EQ(heard, (std::vector<AlarmAuthorizationState>{AlarmAuthorizationState::denied,
                                                           AlarmAuthorizationState::authorized}));
}

// MARK: Alerting

TEST_F(LocalAlarmServiceTest, AnAlertingAlarmPlaysItsToneAndItsNoticeFollowsItsState) {
    auto service = authorizedService();
    schedule(*service, first, configuration(30, std::nullopt, "ringwell-klaxon.caf"));

    pass(*service, 29);
    EXPECT_TRUE(sink.calls().empty());
    ASSERT_EQ(notices.posted.size(), 1u);
    EXPECT_EQ(keys(notices.posted[0]), "pause stop default");

    pass(*service, 1);
    EXPECT_EQ(stateOf(*service, first), AlarmState::alerting);
    EXPECT_EQ(sink.calls(), (std::vector<Call>{{Call::Kind::play, klaxon(), "Urgent: Mom"}}));
    ASSERT_EQ(notices.posted.size(), 2u);
    const auto& ringing = notices.posted[1];
    EXPECT_EQ(ringing.identifier, "alarm-" + first.toString());
    EXPECT_EQ(ringing.kind, NoticeKind::alarm);
    EXPECT_EQ(ringing.title, "Urgent: Mom");
    EXPECT_EQ(ringing.body, "Mom\ncall me\nChannel Urgent, from Messages");
    EXPECT_EQ(keys(ringing), "stop default"); // no snooze on this channel
    EXPECT_EQ(logger.count("Alarm " + first.toString() + " is alerting: Urgent: Mom"), 1);

    // Stop on the notice stops the alarm and takes the notice away.
    notices.answer({ringing.identifier, NoticeResponse::Kind::action, "stop"});
    drain(context);
    EXPECT_TRUE(service->alarms().empty());
    EXPECT_EQ(notices.withdrawn, (std::vector<std::string>{"alarm-" + first.toString()}));
}

TEST_F(LocalAlarmServiceTest, PausedRemindersAndSnoozedAlarmsShowTheRightNotices) {
    auto service = authorizedService();
    auto config = configuration(60, 300, "ringwell-klaxon.caf");
    config.attributes.presentation.alert.secondaryButton = AlarmButton{"Snooze", "#FFFFFF", "zzz"};
    config.attributes.presentation.alert.secondaryButtonBehavior =
        SecondaryButtonBehavior::countdown;
    config.stopIntent = StopRingwellAlarmIntent::make(first, {second});
    schedule(*service, first, config);
    schedule(*service, second, configuration(600)); // the reminder: no notice of its own
    service->pause(first);
    drain(context);
    ASSERT_EQ(notices.posted.size(), 2u);
    EXPECT_EQ(keys(notices.posted[1]), "resume stop default");
    EXPECT_EQ(notices.posted[1].body.substr(0, 7), "Paused\n");

    service->resume(first);
    pass(*service, 60);
    EXPECT_EQ(keys(notices.posted.back()), "stop snooze default");
    // Snoozed from its notice, it counts down its post-alert in silence and
    // without a notice.
    const auto rung = notices.posted.size();
    notices.answer({"alarm-" + first.toString(), NoticeResponse::Kind::action, "snooze"});
    drain(context);
    EXPECT_EQ(stateOf(*service, first), AlarmState::countdown);
    EXPECT_EQ(sink.playing(), std::nullopt);
    EXPECT_EQ(notices.withdrawn, (std::vector<std::string>{"alarm-" + first.toString()}));
    pass(*service, 300);
    EXPECT_EQ(sink.playing(), klaxon());
    EXPECT_EQ(notices.posted.size(), rung + 1);
    for (const auto& request : notices.posted)
        EXPECT_EQ(request.identifier, "alarm-" + first.toString());
}

// Dropped by the desktop, the notice comes back, though not forever; closed
// by the person, it stops the alarm and its reminders.
TEST_F(LocalAlarmServiceTest, ADroppedNoticeComesBackAFewTimesAndADismissedOneStops) {
    auto service = authorizedService();
    auto config = configuration(1);
    config.stopIntent = StopRingwellAlarmIntent::make(first, {second});
    schedule(*service, first, config);
    schedule(*service, second, configuration(121));
    pass(*service, 1);
    const auto posted = notices.posted.size();
    for (int i = 0; i < 10; ++i) {
        notices.answer({"alarm-" + first.toString(), NoticeResponse::Kind::closedBySystem, ""});
        drain(context);
    }
    EXPECT_EQ(notices.posted.size(), posted + AlarmNoticePresenter::mostRepostsPerNotice);
    EXPECT_EQ(stateOf(*service, first), AlarmState::alerting);

    notices.answer({"alarm-" + first.toString(), NoticeResponse::Kind::dismissed, ""});
    drain(context);
    EXPECT_TRUE(service->alarms().empty());
}

// A name that leaves the sounds directory must not play what it points at.
TEST_F(LocalAlarmServiceTest, AMissingOrEscapingToneNameAndTheDefaultSoundPlayTheDefaultTone) {
    writeFile(directory / "secret.caf", "not a tone");
    auto service = authorizedService();
    const std::optional<std::string> names[] = {"ringwell-bark.caf", std::nullopt, "../secret.caf"};
    for (const auto& name : names) {
        const Uuid id = Uuid::random();
        schedule(*service, id, configuration(1, std::nullopt, name));
        pass(*service, 1);
        EXPECT_EQ(sink.playing(), defaultTone()) << name.value_or("default");
        service->stop(id);
    }
}

TEST_F(LocalAlarmServiceTest, TheAlarmThatAlertedLastIsHeardUntilItStops) {
    auto service = authorizedService();
    schedule(*service, first, configuration(10, std::nullopt, "ringwell-klaxon.caf"));
    schedule(*service, second, configuration(20, std::nullopt, std::nullopt));

    pass(*service, 10);
    EXPECT_EQ(sink.playing(), klaxon());
    pass(*service, 10);
    EXPECT_EQ(sink.playing(), defaultTone());

    service->stop(second);
    EXPECT_EQ(sink.playing(), klaxon()); // the earlier alarm still alerts
    service->stop(first);
    EXPECT_TRUE(service->alarms().empty());
    EXPECT_EQ(sink.calls().back(), (Call{Call::Kind::stop, {}, {}}));
    EXPECT_EQ(sink.playing(), std::nullopt);
}

TEST_F(LocalAlarmServiceTest, NoAudioServerOrARefusedNoticeIsLoggedAndTheAlarmStillAlerts) {
    sink.failEveryPlay(AudioProblem{AudioProblemKind::noAudioServer, "Connection refused"});
    notices.refuseAll = true;
    auto service = authorizedService();
    schedule(*service, first, configuration(1));
    schedule(*service, second, configuration(2));

    pass(*service, 1);
    pass(*service, 1);
    EXPECT_EQ(sink.calls().size(), 2u);
    EXPECT_EQ(logger.count(LocalAlarmService::noAudioMessage), 1);
    EXPECT_EQ(
        logger.count(
            "The alarm notice could not be shown: the notification server refused the notice"),
        2);
    EXPECT_EQ(stateOf(*service, first), AlarmState::alerting);
    EXPECT_EQ(stateOf(*service, second), AlarmState::alerting);
}

TEST_F(LocalAlarmServiceTest, AToneThatCannotBePlayedGivesWayToTheDefaultTone) {
    sink.failEveryPlay(AudioProblem{AudioProblemKind::playbackFailed, "not a sound file"});
    auto service = authorizedService();
    schedule(*service, first, configuration(1, std::nullopt, "ringwell-klaxon.caf"));
    pass(*service, 1);

    // The default tone fails too here; the service must then give up, not loop.
    EXPECT_EQ(sink.calls(), (std::vector<Call>{{Call::Kind::play, klaxon(), "Urgent: Mom"},
                                               {Call::Kind::play, defaultTone(), "Urgent: Mom"}}));
    EXPECT_EQ(logger.count("The alarm tone could not be played: not a sound file"), 2);
    EXPECT_EQ(stateOf(*service, first), AlarmState::alerting);
}

// MARK: Operations and time

TEST_F(LocalAlarmServiceTest, AnAlarmPastItsDeadlineIsAlertingEvenBeforeTheTimerRuns) {
    auto service = authorizedService();
    schedule(*service, first, configuration(10));
    clock.advance(10); // the timer has not run yet

    EXPECT_EQ(errorKind([&] { service->pause(first); }), AlarmServiceError::Kind::failed);
    EXPECT_EQ(stateOf(*service, first), AlarmState::alerting);
    EXPECT_TRUE(sink.playing().has_value());
}

TEST_F(LocalAlarmServiceTest, ItsOwnTimerMakesADueAlarmAlert) {
    SystemClock wallClock;
    LocalAlarmService service(context, wallClock, sink, notices, logger, files());
    service.setAuthorization(AlarmAuthorizationState::authorized);
    schedule(service, first, configuration(0.05));

    EXPECT_TRUE(runUntil(context, [&] { return sink.playing().has_value(); }));
    EXPECT_EQ(stateOf(service, first), AlarmState::alerting);
}

TEST_F(LocalAlarmServiceTest, DestroyingTheServiceSilencesItAndLeavesNoLiveHandlers) {
    auto service = authorizedService();
    schedule(*service, first, configuration(1));
    schedule(*service, second, configuration(30));
    clock.advance(1);
    service->processDueAlarms(); // the notice is posted but not yet delivered
    service.reset();

    EXPECT_EQ(sink.playing(), std::nullopt);
    drain(context); // must not touch the destroyed service
    EXPECT_EQ(notices.posted.size(), 1u);
}

// MARK: Restarts

// Each "run" of the daemon is a new service over the same file; the clock
// keeps going between runs, as the wall clock does while the daemon is down.
class AlarmPersistenceTest : public LocalAlarmServiceTest {
protected:
    fs::path file() const { return files().alarms; }

    const Alarm& only(const LocalAlarmService& service) {
        alarms = service.alarms();
        EXPECT_EQ(alarms.size(), 1u);
        if (alarms.empty())
            throw std::runtime_error("no alarm");
        return alarms.front();
    }

    std::vector<Alarm> alarms;
    const Uuid id = Uuid::random();
};

// One alarm was alerting when the daemon stopped, one fell due while it was down.
TEST_F(AlarmPersistenceTest, AlarmsThatAreOrFellDueAlertAtStart) {
    const Uuid later = Uuid::random();
    {
        auto service = authorizedService();
        schedule(*service, id, configuration(1));
        schedule(*service, later, configuration(60));
        clock.advance(1);
        service->processDueAlarms();
        drain(context);
    }
    clock.advance(3600);
    auto service = makeService();
    drain(context);

    ASSERT_EQ(service->alarms().size(), 2u);
    for (const Alarm& alarm : service->alarms())
        EXPECT_EQ(alarm.state, AlarmState::alerting);
    EXPECT_EQ(sink.playing(), defaultTone());
    ASSERT_FALSE(notices.posted.empty());
    EXPECT_EQ(notices.posted.back().actions.at(0).key, "stop"); // a ringing notice
}

// A countdown resumes with the time that is left; a cancelled alarm stays gone.
TEST_F(AlarmPersistenceTest, AlarmsAndThePermissionAreRememberedInAPrivateFile) {
    const Date scheduledAt = clock.now();
    const auto config = configuration(60, 300, "ringwell-klaxon.caf");
    const Uuid cancelled = Uuid::random();
    {
        auto service = authorizedService();
        schedule(*service, cancelled, configuration(60));
        schedule(*service, id, config);
        service->cancel(cancelled);
    }
    struct stat info {};
    ASSERT_EQ(::stat(file().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    ASSERT_EQ(::stat(file().parent_path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u);

    clock.advance(20);
    auto service = makeService();
    EXPECT_EQ(service->authorizationState(), AlarmAuthorizationState::authorized);
    const Alarm& alarm = only(*service);
    EXPECT_EQ(alarm.id, id);
    EXPECT_EQ(alarm.state, AlarmState::countdown);
    EXPECT_EQ(alarm.fireDate, scheduledAt.addingSeconds(60));
    EXPECT_EQ(alarm.configuration, config);
    EXPECT_EQ(service->nextDeadline(), scheduledAt.addingSeconds(60));

    service->setAuthorization(AlarmAuthorizationState::denied);
    service.reset();
    EXPECT_EQ(makeService()->authorizationState(), AlarmAuthorizationState::denied);
}

TEST_F(AlarmPersistenceTest, AFileThatIsNotJsonIsQuarantined) {
    const fs::path quarantined = file().parent_path() / "alarms.corrupt.json";
    for (const std::string contents :
         {"{\"authorization\": \"authorized\", \"alarms\": [",
          "{\"authorization\": \"authorized\", \"alarms\": [], \"x\": 1e999}"}) {
        SCOPED_TRACE(contents);
        fs::create_directories(file().parent_path());
        writeFile(file(), contents);
        auto service = makeService();

        EXPECT_TRUE(service->alarms().empty());
        EXPECT_EQ(service->authorizationState(), AlarmAuthorizationState::notDetermined);
        EXPECT_EQ(readFile(quarantined), contents);
        EXPECT_FALSE(fs::exists(file()));
    }
    EXPECT_EQ(logger.count(quarantined.string()), 2);

    auto service = authorizedService();
    EXPECT_TRUE(fs::exists(file()));
    EXPECT_EQ(makeService()->authorizationState(), AlarmAuthorizationState::authorized);
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

    auto service = makeService();
    EXPECT_EQ(service->authorizationState(), AlarmAuthorizationState::authorized);
    EXPECT_EQ(only(*service).id, id);
    EXPECT_EQ(logger.count("has no fireDate"), 1);
    EXPECT_EQ(logger.count("appears twice"), 1);
    EXPECT_EQ(logger.count("alarm 4: "), 1);
    // The file as it was is kept aside; the readable part is what loads next time.
    EXPECT_EQ(readFile(file().parent_path() / "alarms.corrupt.json"), original);
    service.reset();
    const auto lines = logger.lines().size();
    service = makeService();
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
