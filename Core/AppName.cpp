#include "Core/AppName.h"

#include "Core/TextFolding.h"
#include "Core/Whitespace.h"

namespace ringwell {

std::string cleanAppName(std::string_view name) {
    return text::trimmed(name);
}

bool isSameApp(std::string_view a, std::string_view b) {
    return text::equalsIgnoringCase(text::trimmed(a), text::trimmed(b));
}

std::string appKey(std::string_view name) {
    return text::caseFolded(text::trimmed(name));
}

} // namespace ringwell
