#pragma once

#include "Cli/Command.h"

namespace ringwell::cli {

// `ringwell watch [list | add APP --every DURATION ... | remove APP] [--json]`.
extern const Command watchCommand;

} // namespace ringwell::cli
