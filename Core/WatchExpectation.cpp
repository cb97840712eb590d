#include "Core/WatchExpectation.h"

#include "Core/Json.h"
#include "Core/Whitespace.h"

namespace ringwell {

std::string WatchExpectation::summary() const {
    const std::int64_t minutes = everySeconds / 60;
    std::string every =
        minutes % 60 == 0 ? std::to_string(minutes / 60) + " h" : std::to_string(minutes) + " min";
    return "every " + every + ", " + (hours ? hours->summary() : std::string("any time"));
}

json::Json toJson(const WatchExpectation& watch) {
    json::Json out{{"app", watch.app}, {"everySeconds", watch.everySeconds}};
    if (watch.hours)
        out["hours"] = toJson(*watch.hours);
    out["since"] = json::dateValue(watch.since);
    if (watch.ring)
        out["ring"] = watch.ring->toString();
    return out;
}

WatchExpectation watchExpectationFromJson(const json::Json& value) {
    json::requireObject(value, "watch");
    WatchExpectation watch;
    watch.app = json::requireString(value, "app");
    watch.everySeconds = json::requireInt(value, "everySeconds");
    if (const json::Json* hours = json::member(value, "hours"))
        watch.hours = activeHoursFromJson(*hours);
    watch.since = json::requireDate(value, "since");
    watch.ring = json::optionalUuid(value, "ring");
    return watch;
}

std::optional<std::string> problem(const WatchExpectation& watch) {
    if (text::isBlank(watch.app))
        return "the app is blank";
    // The app names its watch in the API's paths (DELETE /v1/watches/APP).
    if (watch.app.find('/') != std::string::npos)
        return "an app's name can't contain \"/\"";
    if (watch.everySeconds < WatchExpectation::minimumSeconds ||
        watch.everySeconds > WatchExpectation::maximumSeconds)
        return "the interval must be between 1 minute and 7 days";
    if (!watch.hours)
        return std::nullopt;
    if (watch.hours->weekdays.empty())
        return "no weekday is selected";
    for (auto day : watch.hours->weekdays) {
        if (day < 1 || day > 7)
            return "weekdays are 1 (Sunday) to 7 (Saturday)";
    }
    for (auto minute : {watch.hours->startMinute, watch.hours->endMinute}) {
        if (minute < 0 || minute > 1439)
            return "times of day are 00:00 to 23:59";
    }
    return std::nullopt;
}

std::string deviceWatchName(std::string_view device) {
    return "device:" + std::string(device);
}

namespace Silence {

std::optional<Date> dueAt(const WatchExpectation& watch, Date lastHeard, const Calendar& calendar) {
    if (!watch.hours)
        return lastHeard.addingSeconds(static_cast<double>(watch.everySeconds));
    constexpr int minutesScanned = 60 * 24 * 60;
    std::int64_t watched = 0;
    Date moment = lastHeard;
    for (int step = 0; step < minutesScanned; ++step) {
        if (watch.hours->contains(moment, calendar))
            watched += 60;
        moment = moment.addingSeconds(60);
        if (watched >= watch.everySeconds)
            return moment;
    }
    return std::nullopt;
}

std::string noticeText(std::string_view app, Date lastHeard, const Calendar& calendar) {
    return "No notifications from " + std::string(app) + " since " + calendar.localText(lastHeard) +
           " \u2014 is forwarding still working?";
}

} // namespace Silence
} // namespace ringwell
