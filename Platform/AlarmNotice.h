#pragma once

#include "Alarms/NoticeCenter.h"
#include "Core/Calendar.h"
#include "Shared/AlarmService.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// The desktop notice of an alarm that counts down, is paused or rings: what
// it says and which of the alarm's buttons it carries. Pure.
namespace AlarmNotice {

// All alarm notices group under this thread.
inline constexpr const char* threadIdentifier = "ringwell-alarm";
// The key of a click on the notice itself, which opens the web app.
inline constexpr const char* openAction = "default";
inline constexpr const char* openLabel = "Open Ringwell";

// "alarm-<ID>": each alarm has its own notice, replaced as its state changes.
std::string identifier(const Uuid& alarm);
// The alarm an identifier names; none for any other notice.
std::optional<Uuid> alarmOf(std::string_view identifier);

// Which alarms have a notice now, given every alarm held and those that have
// rung at least once:
// - a ringing alarm always;
// - a paused alarm;
// - a counting-down alarm unless it is a reminder still waiting behind
//   another held alarm (the first alarm's notice stands for the run), has
//   rung before (a snooze takes its notice away until it rings again), or is
//   an immediate alarm's short wait (the ringing notice follows at once).
bool isShown(const Alarm& alarm, const std::vector<Alarm>& all, const std::set<Uuid>& hasRung);

// The notice of one alarm, whatever its state.
// Title: the alarm's alert title (the channel name when that is empty).
// Body: a first line for a countdown ("Rings at HH:MM", in `calendar`'s zone)
// or a paused alarm (its paused title), then the notification's title,
// subtitle and body from the metadata, one per line, those that are blank left
// out (they are all empty when the channel hides notification text), then
// "Channel <name>, from <app>" (", from <app>" only with an app).
// Actions: ringing: Stop, and Snooze when the alarm has a snooze; counting
// down: Pause and Stop; paused: Resume and Stop; always "default", which opens
// Ringwell. The buttons' texts are the alarm's own where it has them.
NoticeRequest make(const Alarm& alarm, const Calendar& calendar);

} // namespace AlarmNotice
} // namespace ringwell
