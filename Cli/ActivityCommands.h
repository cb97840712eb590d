#pragma once

#include "Cli/Command.h"

// Commands about what happened: the history, statistics, diagnostics and the
// setup test, through the daemon.
namespace ringwell::cli {

extern const Command eventsCommand;
extern const Command clearHistoryCommand;
extern const Command statsCommand;
extern const Command diagnosticsCommand;
extern const Command setupTestCommand;

} // namespace ringwell::cli
