#include "Alarms/Watchdog.h"

#include "Alarms/EventRecord.h"
#include "Alarms/RingwellAlarmError.h"
#include "Core/AppName.h"
#include "Core/Json.h"

#include <algorithm>
#include <exception>

namespace ringwell {
namespace {

constexpr std::string_view settingsKey = "watchdog";
constexpr std::string_view logCategory = "Watchdog";
constexpr std::string_view captureName = "desktop capture";
// The label of the received field that names the LAN device of a Send
// (SendToRingwellIntent::deviceLabel, a layer above this one).
constexpr std::string_view deviceLabel = "Device";

json::Json datesToJson(const std::map<std::string, Date>& dates) {
    json::Json out = json::Json::object();
    for (const auto& [app, date] : dates)
        out[app] = json::dateValue(date);
    return out;
}

std::map<std::string, Date> datesFromJson(const json::Json& settings, std::string_view name) {
    std::map<std::string, Date> dates;
    if (const json::Json* object = json::member(settings, name); object && object->is_object()) {
        // Keyed again: files of earlier versions keyed apps by lower case.
        for (const auto& [app, date] : object->items())
            dates[appKey(app)] = json::asDate(date, app);
    }
    return dates;
}

} // namespace

Watchdog::Watchdog(AppContext& ctx) : ctx_(ctx) {
    // Settings that do not read are logged and left behind: the watches
    // start over rather than keep the daemon from starting.
    if (auto saved = ctx_.defaults.value(settingsKey)) {
        try {
            if (const json::Json* watches = json::optionalArray(*saved, "watches")) {
                for (const auto& watch : *watches)
                    watches_.push_back(watchExpectationFromJson(watch));
            }
            lastHeard_ = datesFromJson(*saved, "lastHeard");
            told_ = datesFromJson(*saved, "told");
        } catch (const std::exception& error) {
            ctx_.logger.log(LogLevel::error, logCategory,
                            std::string("The saved watches do not read: ") + error.what());
        }
    }
    storeToken_ = ctx_.store.subscribe([this](StoreChange change) {
        if (change != StoreChange::events || ctx_.store.events().empty())
            return;
        const FireEvent& newest = ctx_.store.events().front();
        // A setup test's notification proves the forwarding works too.
        if (isForwardedNotification(newest) ||
            (newest.outcome == FireOutcome::setupTest && newest.app))
            heard(*newest.app, newest.receivedAt);
        if (newest.isTest || newest.outcome == FireOutcome::silent || !newest.received)
            return;
        for (const auto& field : *newest.received) {
            if (field.name == deviceLabel)
                heard(deviceWatchName(field.value), newest.receivedAt);
        }
    });
}

Watchdog::~Watchdog() {
    ctx_.store.unsubscribe(storeToken_);
}

void Watchdog::save() {
    json::Json watches = json::Json::array();
    for (const auto& watch : watches_)
        watches.push_back(toJson(watch));
    ctx_.defaults.set(settingsKey, json::Json{{"watches", std::move(watches)},
                                              {"lastHeard", datesToJson(lastHeard_)},
                                              {"told", datesToJson(told_)}});
}

Date Watchdog::silenceStart(const WatchExpectation& watch) const {
    auto heard = lastHeard_.find(appKey(watch.app));
    return heard == lastHeard_.end() ? watch.since : std::max(heard->second, watch.since);
}

std::vector<Watchdog::Status> Watchdog::list() const {
    const Calendar calendar = ctx_.calendar();
    std::vector<Status> out;
    for (const auto& watch : watches_) {
        Status status{watch, std::nullopt, std::nullopt, false};
        if (auto heard = lastHeard_.find(appKey(watch.app)); heard != lastHeard_.end())
            status.lastHeard = heard->second;
        const Date start = silenceStart(watch);
        status.dueAt = Silence::dueAt(watch, start, calendar);
        auto told = told_.find(appKey(watch.app));
        status.isSilent = told != told_.end() && told->second == start;
        out.push_back(std::move(status));
    }
    return out;
}

Result<WatchExpectation> Watchdog::add(WatchExpectation watch) {
    watch.app = cleanAppName(watch.app);
    if (auto problem = ringwell::problem(watch))
        return Error{"The watch of " + watch.app + " can't be kept: " + *problem + ".",
                     Error::Kind::invalidInput};
    watch.since = ctx_.clock.now();
    auto same = std::find_if(watches_.begin(), watches_.end(), [&](const WatchExpectation& w) {
        return isSameApp(w.app, watch.app);
    });
    if (same != watches_.end())
        *same = watch;
    else
        watches_.push_back(watch);
    told_.erase(appKey(watch.app));
    save();
    return watch;
}

bool Watchdog::remove(std::string_view app) {
    auto removed =
        std::erase_if(watches_, [&](const WatchExpectation& w) { return isSameApp(w.app, app); });
    if (removed == 0)
        return false;
    told_.erase(appKey(app));
    save();
    return true;
}

void Watchdog::heard(std::string_view app, Date at) {
    // Only watched apps are remembered: the settings are written at every
    // change, and a watch's clock starts when it is added anyway.
    if (std::none_of(watches_.begin(), watches_.end(),
                     [&](const WatchExpectation& w) { return isSameApp(w.app, app); }))
        return;
    auto [entry, added] = lastHeard_.try_emplace(appKey(app), at);
    if (!added) {
        if (at <= entry->second)
            return;
        entry->second = at;
    }
    told_.erase(appKey(app));
    save();
}

void Watchdog::watchCapture(std::function<bool()> stopped) {
    captureStopped_ = std::move(stopped);
}

std::optional<Date> Watchdog::captureSilentSince() const {
    return captureTold_ ? captureWorked_ : std::nullopt;
}

Awaitable<std::vector<FireEvent>> Watchdog::check() {
    const Date now = ctx_.clock.now();
    const Calendar calendar = ctx_.calendar();
    std::vector<FireEvent> recorded;
    if (captureStopped_) {
        if (!captureStopped_()) {
            captureWorked_ = now;
            captureTold_ = false;
        } else if (captureWorked_ && !captureTold_) {
            // Only a capture that worked can stop: one that never started
            // (no desktop session) has nothing to tell.
            captureTold_ = true;
            recorded.push_back(co_await tell(std::string(captureName), *captureWorked_, {}));
        }
    }
    // A copy: telling suspends, and the list may change meanwhile.
    const std::vector<WatchExpectation> watches = watches_;
    for (const auto& watch : watches) {
        const Date start = silenceStart(watch);
        if (auto told = told_.find(appKey(watch.app)); told != told_.end() && told->second == start)
            continue;
        auto due = Silence::dueAt(watch, start, calendar);
        if (!due || now < *due)
            continue;
        told_[appKey(watch.app)] = start;
        save();
        recorded.push_back(co_await tell(watch.app, start, watch.ring));
    }
    co_return recorded;
}

Awaitable<FireEvent> Watchdog::tell(std::string app, Date start, std::optional<Uuid> ring) {
    const Date now = ctx_.clock.now();
    const std::string text = Silence::noticeText(app, start, ctx_.calendar());
    NotificationInfo silence{app, "", text, "", "", now, false, std::nullopt};
    FireEvent event = EventRecord::make(silence, FireOutcome::silent, now);
    ctx_.store.log(event);
    const std::optional<Channel> channel = ring ? ctx_.store.channel(*ring) : std::nullopt;
    if (ring && !channel)
        ctx_.logger.log(LogLevel::error, logCategory,
                        "The channel to ring for " + app + " is gone; posting the notice");
    if (channel) {
        // Ringwell's own ring: no app, so it is not heard as the app's traffic.
        NotificationInfo payload{"", "", text, "", "", now, false, std::nullopt};
        FireAttempt attempt = co_await ctx_.scheduler.attempt(*channel, payload, RingKind::live);
        if (!attempt.error)
            co_return event;
        ctx_.logger.log(LogLevel::error, logCategory,
                        "Ringing for the silence of " + app +
                            " failed; posting the notice: " + attempt.error->what());
    }
    co_await notify(app, text);
    co_return event;
}

Awaitable<void> Watchdog::notify(std::string app, std::string text) {
    // A named request: temporaries in a co_await's arguments do not live
    // through the suspension with GCC 12.
    NoticeRequest notice{"ringwell.silent." + appKey(app), text, "", "ringwell.silent"};
    std::optional<std::string> problem;
    try {
        co_await ctx_.notices.add(std::move(notice));
    } catch (const std::exception& error) {
        problem = error.what();
    }
    if (problem)
        ctx_.logger.log(LogLevel::error, logCategory,
                        "Posting the silence notice failed: " + *problem);
}

} // namespace ringwell
