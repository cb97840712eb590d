#pragma once

#include "Cli/Command.h"

namespace ringwell::cli {

extern const Command openCommand;

} // namespace ringwell::cli
