#pragma once

#include "Cli/Command.h"

// Commands that replay routing through the daemon: why one recorded event
// ended as it did, and what today's channels would do with recent
// notifications at another moment.
namespace ringwell::cli {

extern const Command whyCommand;
extern const Command traceCommand;

} // namespace ringwell::cli
