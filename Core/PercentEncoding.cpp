#include "Core/PercentEncoding.h"

#include "Core/HexDigit.h"

namespace ringwell::PercentEncoding {

std::string encode(std::string_view text) {
    static constexpr char hex[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(text.size());
    for (char ch : text) {
        const auto c = static_cast<unsigned char>(ch);
        const bool unreserved = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                                (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_' ||
                                c == '~';
        if (unreserved) {
            out += ch;
        } else {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 0x0F];
        }
    }
    return out;
}

std::optional<std::string> decode(std::string_view text, Plus plus) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '+' && plus == Plus::isSpace) {
            out.push_back(' ');
        } else if (c == '%') {
            int high = i + 1 < text.size() ? text::hexDigitValue(text[i + 1]) : -1;
            int low = i + 2 < text.size() ? text::hexDigitValue(text[i + 2]) : -1;
            if (high < 0 || low < 0)
                return std::nullopt;
            out.push_back(static_cast<char>(high * 16 + low));
            i += 2;
        } else {
            out.push_back(c);
        }
    }
    return out;
}

} // namespace ringwell::PercentEncoding
