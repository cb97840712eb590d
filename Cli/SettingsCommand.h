#pragma once

#include "Cli/Command.h"

namespace ringwell::cli {

// `ringwell settings [KEY [VALUE]]`: the person's sound settings.
extern const Command settingsCommand;

} // namespace ringwell::cli
