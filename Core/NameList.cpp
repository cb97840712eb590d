#include "Core/NameList.h"

#include "Core/TextFolding.h"
#include "Core/Whitespace.h"

#include <algorithm>

namespace ringwell {

void addName(std::vector<std::string>& list, std::string_view name) {
    std::string clean = text::trimmed(name);
    if (clean.empty())
        return;
    const bool present = std::any_of(list.begin(), list.end(), [&](const std::string& entry) {
        return text::equalsIgnoringCase(entry, clean);
    });
    if (!present)
        list.push_back(std::move(clean));
}

void sortForDisplay(std::vector<std::string>& list) {
    std::sort(list.begin(), list.end(), [](const std::string& a, const std::string& b) {
        return text::compareForDisplay(a, b) < 0;
    });
}

} // namespace ringwell
