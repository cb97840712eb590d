#pragma once

#include "Alarms/NoticeCenter.h"
#include "Shared/AlarmService.h"

#include <string>

namespace ringwell {

// The desktop notice shown while an alarm alerts.
namespace AlarmNotice {

// All alarm notices group under this thread.
inline constexpr const char* threadIdentifier = "ringwell-alarm";

// "alarm-<ID>": each alarm has its own notice, and a snoozed alarm that alerts
// again replaces its earlier one.
std::string identifier(const Uuid& alarm);

// Title: the alarm's alert title (the channel name when that is empty).
// Body: the notification's title, subtitle and body from the metadata, one per
// line, those that are blank left out (they are all empty when the channel
// hides notification text), then "Channel <name>, from <app>" (", from <app>"
// only with an app).
NoticeRequest make(const Alarm& alarm);

} // namespace AlarmNotice
} // namespace ringwell
