#pragma once

#include "Cli/Command.h"

namespace ringwell::cli {

// `ringwell capture ...` and `ringwell status`.
extern const Command captureCommand;
extern const Command statusCommand;

} // namespace ringwell::cli
