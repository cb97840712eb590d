#include "Platform/LocalAlarmService.h"

#include "Core/Json.h"
#include "Model/XdgPaths.h"
#include "Platform/AlarmFile.h"
#include "Platform/AlarmSoundFile.h"
#include "Platform/BundledSounds.h"
#include "Platform/JsonFile.h"
#include "Platform/SystemTimeZone.h"

#include <algorithm>
#include <chrono>
#include <exception>

namespace ringwell {
namespace {

// Deadlines are wall-clock times but the timer runs on the monotonic clock,
// which does not see the system suspending or the wall clock being set. The
// timer therefore never waits longer than this before looking at the wall
// clock again, which bounds how late an alarm can be after such a jump.
constexpr double longestTimerWait = 10.0;

} // namespace

std::optional<LocalAlarmService::Files> LocalAlarmService::defaultFiles() {
    auto data = XdgPaths::dataHome();
    if (!data)
        return std::nullopt;
    const auto directory = *data / "ringwell";
    return Files{directory / fileName, directory / "Sounds", BundledSounds::defaultTone()};
}

LocalAlarmService::LocalAlarmService(asio::io_context& context, const Clock& clock,
                                     AudioSink& audio, NoticeCenter& notices, Logger& logger,
                                     Files files)
    : context_(context), clock_(clock), audio_(audio), logger_(logger), files_(std::move(files)),
      timer_(context),
      presenter_(context, notices, *this, logger, SystemTimeZone::currentCalendar) {
    load();
    // Alarms that were alerting when the daemon stopped alert again; those
    // whose deadline passed meanwhile join them in processDueAlarms.
    for (const auto& alarm : book_.alarms()) {
        if (alarm.state == AlarmState::alerting)
            alert(alarm);
    }
    presenter_.show(book_.alarms());
    updateSound();
    processDueAlarms();
}

LocalAlarmService::~LocalAlarmService() {
    alive_.reset();
    timer_.cancel();
    if (sounding_)
        audio_.stop();
}

void LocalAlarmService::log(LogLevel level, const std::string& message) {
    logger_.log(level, logCategory, message);
}

// MARK: Authorization

Awaitable<AlarmAuthorizationState> LocalAlarmService::requestAuthorization() {
    if (authorization_ != AlarmAuthorizationState::notDetermined)
        co_return authorization_;
    if (!loggedPermissionHint_) {
        loggedPermissionHint_ = true;
        log(LogLevel::notice, permissionHint);
    }
    co_return AlarmAuthorizationState::denied;
}

void LocalAlarmService::setAuthorization(AlarmAuthorizationState state) {
    if (state == authorization_)
        return;
    authorization_ = state;
    save();
    observers_.notify(state);
}

std::uint64_t LocalAlarmService::observeAuthorization(AuthorizationObserver observer) {
    return observers_.subscribe(std::move(observer));
}

void LocalAlarmService::stopObservingAuthorization(std::uint64_t token) {
    observers_.unsubscribe(token);
}

// MARK: Alarms

Awaitable<void> LocalAlarmService::schedule(Uuid id, AlarmConfiguration configuration) {
    if (authorization_ != AlarmAuthorizationState::authorized)
        throw AlarmServiceError(AlarmServiceError::Kind::failed,
                                "Alarms are not allowed: run `ringwell permission alarms allow`");
    book_.schedule(id, std::move(configuration), clock_.now());
    save();
    processDueAlarms();
    co_return;
}

void LocalAlarmService::stop(const Uuid& id) {
    processDueAlarms();
    book_.stop(id);
    save();
    updateSound();
    armTimer();
}

void LocalAlarmService::cancel(const Uuid& id) {
    processDueAlarms();
    book_.cancel(id);
    save();
    updateSound();
    armTimer();
}

void LocalAlarmService::pause(const Uuid& id) {
    // An alarm whose deadline has just passed is alerting, not counting down,
    // even if the timer has not run yet.
    processDueAlarms();
    book_.pause(id, clock_.now());
    save();
    armTimer();
}

void LocalAlarmService::resume(const Uuid& id) {
    book_.resume(id, clock_.now());
    save();
    processDueAlarms();
}

void LocalAlarmService::snooze(const Uuid& id) {
    processDueAlarms();
    book_.snooze(id, clock_.now());
    save();
    updateSound();
    armTimer();
}

void LocalAlarmService::louder(const std::vector<Uuid>& alarms, int percent, AlarmSound sound) {
    extraVolume_ = std::min(100, extraVolume_ + percent);
    audio_.setExtraVolume(extraVolume_);
    for (const auto& id : alarms)
        if (sound.named && book_.find(id))
            escalatedSounds_[id] = sound;
    // Played again, the tone picks up the new volume and sound.
    if (sounding_ && std::find(alarms.begin(), alarms.end(), *sounding_) != alarms.end()) {
        sounding_.reset();
        updateSound();
    }
}

void LocalAlarmService::processDueAlarms() {
    const auto started = book_.advance(clock_.now());
    if (!started.empty()) {
        save();
        for (const auto& id : started) {
            if (const Alarm* alarm = book_.find(id))
                alert(*alarm);
        }
        updateSound();
    }
    armTimer();
}

void LocalAlarmService::alert(const Alarm& alarm) {
    const auto& title = alarm.configuration.attributes.presentation.alert.title;
    log(LogLevel::notice, "Alarm " + alarm.id.toString() + " is alerting: " + title);
}

void LocalAlarmService::updateSound() {
    // The alarm that started alerting last is the one heard; on a tie of
    // deadlines, the one scheduled last.
    const Alarm* loudest = nullptr;
    for (const auto& alarm : book_.alarms()) {
        if (alarm.state == AlarmState::alerting &&
            (!loudest || alarm.fireDate.value_or(Date{}) >= loudest->fireDate.value_or(Date{})))
            loudest = &alarm;
    }
    std::erase_if(escalatedSounds_, [&](const auto& entry) { return !book_.find(entry.first); });
    if (!loudest) {
        if (sounding_) {
            sounding_.reset();
            audio_.stop();
        }
        if (extraVolume_ != 0) {
            extraVolume_ = 0;
            audio_.setExtraVolume(0);
        }
        return;
    }
    if (sounding_ == loudest->id)
        return;
    sounding_ = loudest->id;

    auto escalated = escalatedSounds_.find(loudest->id);
    const AlarmSound& sound =
        escalated != escalatedSounds_.end() ? escalated->second : loudest->configuration.sound;
    auto file = alarmSoundFile(sound, files_.sounds, files_.defaultTone);
    if (!file) {
        log(LogLevel::error, "No tone file for alarm " + loudest->id.toString() + " (not even " +
                                 files_.defaultTone.string() + "): it alerts without sound");
        audio_.stop();
        return;
    }
    playTone(loudest->id, loudest->configuration.attributes.presentation.alert.title, *file);
}

void LocalAlarmService::playTone(const Uuid& alarm, const std::string& title,
                                 const std::filesystem::path& file) {
    audio_.play(file, title,
                [this, alive = std::weak_ptr<int>(alive_), alarm, title,
                 file](const AudioProblem& problem) {
                    if (alive.expired())
                        return;
                    if (problem.kind == AudioProblemKind::noAudioServer) {
                        if (!loggedMissingAudio_) {
                            loggedMissingAudio_ = true;
                            log(LogLevel::error,
                                std::string(noAudioMessage) + " (" + problem.message + ")");
                        }
                        return;
                    }
                    log(LogLevel::error, "The alarm tone could not be played: " + problem.message);
                    // A damaged tone file should not leave an alarm silent while the
                    // default tone is there to play.
                    if (sounding_ == alarm && file != files_.defaultTone)
                        playTone(alarm, title, files_.defaultTone);
                });
}

void LocalAlarmService::armTimer() {
    auto next = book_.nextDeadline();
    if (!next) {
        timer_.cancel();
        return;
    }
    const double wait = std::clamp(next->secondsSince(clock_.now()), 0.0, longestTimerWait);
    timer_.expires_after(std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(wait)));
    timer_.async_wait([this, alive = std::weak_ptr<int>(alive_)](boost::system::error_code error) {
        if (error || alive.expired())
            return;
        processDueAlarms();
    });
}

// MARK: File

void LocalAlarmService::load() {
    AtomicFile::removeLeftovers(files_.alarms);
    const ErrorLog fileLog = [this](const std::string& message) {
        log(LogLevel::error, "The alarm file " + message);
    };
    auto file = JsonFile::loadOrQuarantine(files_.alarms, alarmFileFromJson, fileLog);
    if (!file)
        return;
    authorization_ = file->state.authorization;
    book_ = AlarmBook(std::move(file->state.alarms));
    if (file->dropped.empty())
        return;
    // What could be read is kept; the file as it was is moved aside for a
    // closer look, and the readable part written back in its place.
    for (const auto& problem : file->dropped)
        log(LogLevel::error, "The alarm file: " + problem + "; left out");
    JsonFile::quarantine(files_.alarms,
                         "had " + std::to_string(file->dropped.size()) + " unreadable part" +
                             (file->dropped.size() == 1 ? "" : "s"),
                         fileLog);
    save();
}

void LocalAlarmService::save() {
    auto written =
        JsonFile::write(files_.alarms, toJson(AlarmServiceState{authorization_, book_.alarms()}));
    if (!written)
        log(LogLevel::error, "Saving the alarms failed: " + written.error().message);
    // Every change is saved, so the desktop notices and the observers follow from here.
    presenter_.show(book_.alarms());
    alarmsChanged();
}

} // namespace ringwell
