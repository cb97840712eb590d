#pragma once

#include "Cli/Command.h"

// Commands that list, change and preview channels, through the daemon.
namespace ringwell::cli {

extern const Command channelsCommand;
extern const Command channelShowCommand;
extern const Command channelAddCommand;
extern const Command channelUpdateCommand;
extern const Command channelDeleteCommand;
extern const Command channelMoveCommand;
extern const Command previewCommand;

} // namespace ringwell::cli
