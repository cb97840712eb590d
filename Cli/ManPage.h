#pragma once

#include "Cli/Command.h"

#include <span>
#include <string>
#include <string_view>

namespace ringwell::cli {

// The manual page ringwell(1), in roff, made from the commands' own summaries
// and help texts, so that the page and `--help` never disagree. The build
// writes it with `ringwell help --man`. Pure.
std::string manPage(std::span<const Command* const> commands, std::string_view version);

// Text as roff reads it literally: backslashes and minus signs escaped, and
// lines that would start with a control character guarded.
std::string roffEscaped(std::string_view text);

} // namespace ringwell::cli
