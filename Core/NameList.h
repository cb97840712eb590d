#pragma once

#include <string>
#include <string_view>
#include <vector>

// Lists of names people pick from (apps, senders): each name once whatever its
// letter case, without blanks around it, in the order a person expects.
namespace ringwell {

// Adds `name` without the blanks around it, unless it is blank or the list
// already holds it ignoring case.
void addName(std::vector<std::string>& list, std::string_view name);

// Case-insensitive, in the root locale's collation.
void sortForDisplay(std::vector<std::string>& list);

} // namespace ringwell
