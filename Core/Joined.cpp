#include "Core/Joined.h"

namespace ringwell::text {

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
