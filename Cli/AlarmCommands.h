#pragma once

#include "Cli/Command.h"

// Commands that forward notifications, ring channels and handle alarms,
// through the daemon.
namespace ringwell::cli {

extern const Command sendCommand;
extern const Command ringCommand;
extern const Command stopAllCommand;
extern const Command alarmsCommand;
extern const Command alarmStopCommand;
extern const Command alarmPauseCommand;
extern const Command alarmResumeCommand;
extern const Command alarmSnoozeCommand;
extern const Command permissionCommand;

} // namespace ringwell::cli
