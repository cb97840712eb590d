#include "Core/Date.h"

#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <cmath>
#include <memory>

namespace ringwell {
namespace {

std::unique_ptr<icu::SimpleDateFormat> makeFormat(const char* pattern) {
    UErrorCode status = U_ZERO_ERROR;
    auto format = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString(pattern, -1, US_INV),
                                                          icu::Locale::getRoot(), status);
    if (U_FAILURE(status))
        return nullptr;
    format->adoptTimeZone(icu::TimeZone::createTimeZone("UTC"));
    format->setLenient(false);
    return format;
}

// Parses the whole text with one pattern; partial matches do not count.
std::optional<Date> parseWith(icu::SimpleDateFormat* format, const icu::UnicodeString& text) {
    if (format == nullptr)
        return std::nullopt;
    icu::ParsePosition position(0);
    UDate parsed = format->parse(text, position);
    if (position.getErrorIndex() >= 0 || position.getIndex() != text.length())
        return std::nullopt;
    return Date::fromUnixMilliseconds(parsed);
}

// ICU also reads "+0100"; the internet form requires the colon ("+01:00") or "Z".
bool hasInternetZoneDesignator(std::string_view text) {
    if (!text.empty() && (text.back() == 'Z' || text.back() == 'z'))
        return true;
    return text.size() > 6 && (text[text.size() - 6] == '+' || text[text.size() - 6] == '-') &&
           text[text.size() - 3] == ':';
}

} // namespace

std::optional<Date> parseIso8601(std::string_view text) {
    if (!hasInternetZoneDesignator(text))
        return std::nullopt;
    // Formats are not safe to share between threads; one set per thread.
    thread_local auto whole = makeFormat("yyyy-MM-dd'T'HH:mm:ssXXX");
    thread_local auto fractional = makeFormat("yyyy-MM-dd'T'HH:mm:ss.SSSXXX");
    icu::UnicodeString unicodeText = icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    if (auto date = parseWith(whole.get(), unicodeText))
        return date;
    return parseWith(fractional.get(), unicodeText);
}

std::string formatIso8601(Date date) {
    thread_local auto format = makeFormat("yyyy-MM-dd'T'HH:mm:ss'Z'");
    icu::UnicodeString formatted;
    double wholeSeconds = std::floor(date.unixSeconds());
    format->format(wholeSeconds * 1000.0, formatted);
    std::string out;
    formatted.toUTF8String(out);
    return out;
}

} // namespace ringwell
