#pragma once

#include "Alarms/AlarmAmplifier.h"
#include "Alarms/Logger.h"
#include "Alarms/NoticeCenter.h"
#include "Core/ObserverList.h"
#include "Model/Clock.h"
#include "Platform/AlarmBook.h"
#include "Platform/AlarmNoticePresenter.h"
#include "Platform/AudioSink.h"
#include "Shared/AlarmService.h"
#include "Shared/Asio.h"

#include <boost/asio/steady_timer.hpp>

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>

namespace ringwell {

// The daemon's alarm service: an AlarmBook moved on by a timer on the
// io_context, kept in a file, and made audible and visible while an alarm
// alerts.
//
// Alerting: the alarm's tone loops through the AudioSink (the named tone from
// the sounds directory, else the default tone); when several alarms alert,
// the one that started last is heard, and a tone file that cannot be played
// gives way to the default tone, and a line is logged. Without an audio server
// the alarm alerts all the same and the missing sound is logged once per run.
//
// Desktop notices: each alarm that counts down, is paused or rings has its
// notice "alarm-<ID>" with its buttons, kept in step by an
// AlarmNoticePresenter after every change; the buttons pressed there act on
// this service.
//
// Authorization is the person's consent, kept in the same file. While it is
// `notDetermined`, `requestAuthorization` cannot wait for an answer (nobody is
// there to answer a daemon's prompt, and a forwarded notification must never
// hang), so it answers `denied` for that request at once, leaves the state
// `notDetermined` and logs, once per run, how to give the permission.
// Only `setAuthorization` (the command line, the web app) changes the state;
// observers hear of every change. `schedule` refuses to schedule while the
// state is not `authorized`.
//
// Persistence: after every change the alarms and the authorization are
// rewritten crash-safely to the file. On construction the file is loaded:
// countdowns keep their wall-clock deadlines, an alarm whose deadline passed
// while the daemon was down alerts at once, alerting alarms alert again and
// paused ones stay paused. A file that does not decode is moved aside to
// "alarms.corrupt.json" and logged, and the service starts empty. A failed
// save is logged; the alarms stay in memory.
//
// Threading: every member runs on the io_context's thread; the timer, the
// notices and the audio problem reports come back there. The clock, sink,
// notice centre and logger must outlive the service. Operations that fail
// throw AlarmServiceError (see AlarmBook for which).
//
// Escalation (AlarmAmplifier): "louder" adds to the volume the ringing alarm is
// raised to and may switch its tone; both end with the last alerting alarm.
class LocalAlarmService final : public AlarmService, public AlarmAmplifier {
public:
    static constexpr const char* fileName = "alarms.json";
    static constexpr const char* logCategory = "AlarmService";
    static constexpr const char* permissionHint =
        "Alarm permission not yet given: run `ringwell permission alarms allow`";
    static constexpr const char* noAudioMessage =
        "No audio server is reachable: alarms alert without sound";

    struct Files {
        // "$XDG_DATA_HOME/ringwell/alarms.json"
        std::filesystem::path alarms;
        // Where named tones are looked up: "$XDG_DATA_HOME/ringwell/Sounds".
        std::filesystem::path sounds;
        // What the service's default sound and a missing named tone play.
        std::filesystem::path defaultTone;
    };
    // The daemon's files under $XDG_DATA_HOME (or ~/.local/share) and the
    // bundled default tone; none when there is no home directory to use.
    static std::optional<Files> defaultFiles();

    LocalAlarmService(asio::io_context& context, const Clock& clock, AudioSink& audio,
                      NoticeCenter& notices, Logger& logger, Files files);
    ~LocalAlarmService() override;
    LocalAlarmService(const LocalAlarmService&) = delete;
    LocalAlarmService& operator=(const LocalAlarmService&) = delete;

    AlarmAuthorizationState authorizationState() const override { return authorization_; }
    Awaitable<AlarmAuthorizationState> requestAuthorization() override;
    void setAuthorization(AlarmAuthorizationState state) override;
    std::uint64_t observeAuthorization(AuthorizationObserver observer) override;
    void stopObservingAuthorization(std::uint64_t token) override;

    std::vector<Alarm> alarms() const override { return book_.alarms(); }
    Awaitable<void> schedule(Uuid id, AlarmConfiguration configuration) override;
    void stop(const Uuid& id) override;
    void cancel(const Uuid& id) override;
    void pause(const Uuid& id) override;
    void resume(const Uuid& id) override;
    void snooze(const Uuid& id) override;
    void louder(const std::vector<Uuid>& alarms, int percent, AlarmSound sound) override;

    // Makes every alarm whose countdown has ended at the clock's now alert.
    // The timer calls it; tests call it after moving their clock.
    void processDueAlarms();
    // The deadline the timer waits for; none when nothing counts down.
    std::optional<Date> nextDeadline() const { return book_.nextDeadline(); }

private:
    void load();
    void save();
    void alert(const Alarm& alarm);
    void updateSound();
    void playTone(const Uuid& alarm, const std::string& title, const std::filesystem::path& file);
    void armTimer();
    void log(LogLevel level, const std::string& message);

    asio::io_context& context_;
    const Clock& clock_;
    AudioSink& audio_;
    Logger& logger_;
    Files files_;

    AlarmBook book_;
    AlarmAuthorizationState authorization_ = AlarmAuthorizationState::notDetermined;
    ObserverList<AlarmAuthorizationState> observers_;

    // The alarm whose tone the sink plays now.
    std::optional<Uuid> sounding_;
    // What "louder" steps changed: the added volume and the tones switched to.
    int extraVolume_ = 0;
    std::map<Uuid, AlarmSound> escalatedSounds_;
    bool loggedPermissionHint_ = false;
    bool loggedMissingAudio_ = false;

    asio::steady_timer timer_;
    AlarmNoticePresenter presenter_;
    // Handlers that may run after the service is gone (timer, notices, audio
    // reports) hold a weak reference to this and do nothing once it expired.
    std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

} // namespace ringwell
