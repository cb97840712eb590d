#pragma once

#include "Cli/Command.h"

// Commands that check rules locally, without the daemon.
namespace ringwell::cli {

extern const Command ruleExplainCommand;
extern const Command ruleDescribeCommand;
extern const Command templatesCommand;

} // namespace ringwell::cli
