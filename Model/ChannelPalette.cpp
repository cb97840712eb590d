#include "Model/ChannelPalette.h"

#include "Core/HexDigit.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace ringwell {
namespace {

int byteOf(double component) {
    if (std::isnan(component))
        component = 0;
    component = std::clamp(component, 0.0, 1.0);
    return static_cast<int>(std::lround(component * 255.0));
}

} // namespace

std::string tintHex(TintColor color) {
    char buffer[8];
    std::snprintf(buffer, sizeof buffer, "#%02X%02X%02X", byteOf(color.red), byteOf(color.green),
                  byteOf(color.blue));
    return buffer;
}

std::optional<TintColor> tintColor(std::string_view hex) {
    if (hex.size() != 7 || hex[0] != '#')
        return std::nullopt;
    double components[3];
    for (int i = 0; i < 3; ++i) {
        const int high = text::hexDigitValue(hex[1 + 2 * i]);
        const int low = text::hexDigitValue(hex[2 + 2 * i]);
        if (high < 0 || low < 0)
            return std::nullopt;
        components[i] = (high * 16 + low) / 255.0;
    }
    return TintColor{components[0], components[1], components[2]};
}

} // namespace ringwell
