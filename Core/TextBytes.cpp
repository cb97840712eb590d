// The text helpers that work on bytes alone. They need no ICU, so the command
// line, which links only RingwellCoreData, can use them.
#include "Core/Text.h"

namespace ringwell::text {

int hexDigitValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

std::string joined(const std::vector<std::string>& items, std::string_view separator) {
    std::string out;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0)
            out.append(separator);
        out.append(items[i]);
    }
    return out;
}

} // namespace ringwell::text
