#pragma once

#include "Cli/Command.h"

namespace ringwell::cli {

// `ringwell devices [list | add NAME | remove NAME] [--json]`.
extern const Command devicesCommand;

} // namespace ringwell::cli
