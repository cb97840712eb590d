#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ringwell::text {

// The items with `separator` between each two.
std::string joined(const std::vector<std::string>& items, std::string_view separator);

} // namespace ringwell::text
