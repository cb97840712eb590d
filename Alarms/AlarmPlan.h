#pragma once

#include "Core/NotificationInfo.h"
#include "Core/Uuid.h"
#include "Model/Channel.h"
#include "Shared/AlarmService.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// What the scheduler hands to the alarm service for one ring of a channel: the
// first alarm and its follow-up reminders. Pure: every identity is chosen by
// the caller, and nothing here talks to the service.
namespace AlarmPlan {

// At most this many reminders follow one alarm, whatever the channel asks.
inline constexpr std::int64_t followUpLimit = 10;
inline constexpr std::string_view reminderPrefix = "Reminder: ";

// The channel's repeat count clamped to 0...10, or 0 when repeat is off.
std::int64_t followUpCount(const Channel& channel);

// The alert shows the title with a "Stop" button, and a "Snooze" button that
// restarts the post-alert countdown when the channel snoozes; the countdown
// shows the channel name with "Pause"; the paused alarm shows "Resume". On
// Linux the presentation is Ringwell's own, so the stop button is always there.
AlarmPresentation presentation(const Channel& channel, std::string title);

// The channel and the app always; the notification's title, subtitle and body
// only when the channel shows notification text.
RingwellAlarmMetadata metadata(const Channel& channel, const NotificationInfo& payload);

// The first alarm: a countdown of the channel's countdown in countdown mode,
// else of one second; a post-alert countdown of the snooze time when snooze is
// on; the channel's sound; and a stop intent that also cancels every reminder.
AlarmConfiguration firstAlarm(const Channel& channel, const NotificationInfo& payload,
                              const Uuid& alarmID, const std::vector<Uuid>& followUpIDs);

// Reminder `index` (0-based) of `followUpIDs`: it alerts `index + 1` repeat
// intervals after the first alarm, is titled with "Reminder: ", sounds the
// reminder tone (else the channel's sound), and its stop intent cancels the
// later reminders only.
AlarmConfiguration followUp(const Channel& channel, const NotificationInfo& payload,
                            std::size_t index, const std::vector<Uuid>& followUpIDs);

} // namespace AlarmPlan
} // namespace ringwell
