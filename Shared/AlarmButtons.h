#pragma once

#include "Core/Uuid.h"

#include <optional>
#include <string_view>

namespace ringwell {

class AlarmService;

// The alarm's own buttons, as every presentation of an alarm offers them (the
// web app, the desktop notification, `ringwell alarm ...`), so that they all
// act alike.
enum class AlarmButtonKey { stop, snooze, pause, resume };

std::string_view rawValue(AlarmButtonKey button);
std::optional<AlarmButtonKey> alarmButtonFromRaw(std::string_view raw);

// Presses a button of the alarm `alarm`: Stop runs the alarm's stop intent, so
// its reminders end with it; Pause and Resume run their intents; Snooze is the
// secondary button's countdown. Throws AlarmServiceError as the service does
// (`notFound` for an alarm that is not held).
void press(AlarmService& service, const Uuid& alarm, AlarmButtonKey button);

} // namespace ringwell
