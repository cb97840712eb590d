#pragma once

#include "Cli/Command.h"

namespace ringwell::cli {

extern const Command serveCommand;

} // namespace ringwell::cli
