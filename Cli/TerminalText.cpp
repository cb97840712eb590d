#include "Cli/TerminalText.h"

#include "Core/Date.h"
#include "Core/Json.h"

#include <clocale>
#include <cmath>
#include <ctime>
#include <cwchar>
#include <cwctype>

#include <locale.h> // NOLINT(modernize-deprecated-headers): POSIX declares newlocale here

namespace ringwell::cli {

std::string localTime(const json::Json& dateNumber) {
    if (!dateNumber.is_number())
        return "?";
    const double unixSeconds = std::floor(Date{dateNumber.get<double>()}.unixSeconds());
    // Beyond ±10^12 seconds (about 31,000 years) a year no longer fits the format.
    if (!std::isfinite(unixSeconds) || std::fabs(unixSeconds) > 1e12)
        return "?";
    const auto seconds = static_cast<std::time_t>(unixSeconds);
    std::tm local{};
    char text[64];
    if (!::localtime_r(&seconds, &local) ||
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local) == 0)
        return "?";
    return text;
}

std::string idStart(std::string_view id) {
    return std::string(id.substr(0, 8));
}

std::string oneLine(std::string_view text) {
    // The C.UTF-8 locale gives the Unicode white space classes whatever the
    // user's locale is; it is this thread's locale only while the text is read.
    static const locale_t utf8 = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{});
    const locale_t previous = utf8 ? ::uselocale(utf8) : locale_t{};
    std::string out;
    bool pendingSpace = false;
    std::mbstate_t state{};
    for (std::size_t i = 0; i < text.size();) {
        wchar_t c = 0;
        std::size_t length = utf8 ? std::mbrtowc(&c, text.data() + i, text.size() - i, &state)
                                  : static_cast<std::size_t>(-1);
        bool space;
        if (length == static_cast<std::size_t>(-1) || length == static_cast<std::size_t>(-2) ||
            length == 0) {
            state = {};
            length = 1;
            space = std::isspace(static_cast<unsigned char>(text[i])) != 0;
        } else {
            space = std::iswspace(static_cast<wint_t>(c)) != 0;
        }
        if (space) {
            pendingSpace = !out.empty();
        } else {
            if (pendingSpace)
                out.push_back(' ');
            pendingSpace = false;
            out.append(text.substr(i, length));
        }
        i += length;
    }
    if (utf8)
        ::uselocale(previous);
    return out;
}

} // namespace ringwell::cli
