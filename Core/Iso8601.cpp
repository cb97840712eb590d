#include "Core/Iso8601.h"

#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <algorithm>
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

bool isDigits(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

int number(std::string_view digits) {
    int value = 0;
    for (char c : digits)
        value = value * 10 + (c - '0');
    return value;
}

// The longest fraction read: nanoseconds. ICU scales a fraction by a power of
// ten that overflows (and divides by zero) past nine or so digits, so longer
// texts must never reach it.
constexpr std::size_t maxFractionDigits = 9;

// Checks the exact shape "yyyy-MM-ddTHH:mm:ss[.f]Z|+HH:mm" with each field in
// range before ICU sees the text, and returns it with the fraction cut to the
// milliseconds ICU's pattern reads. The calendar check of the day (30 April,
// 29 February) is left to ICU's strict parse.
std::optional<std::string> normalisedInternetDateTime(std::string_view text) {
    constexpr std::size_t wholeLength = 19; // "2025-01-02T03:04:05"
    if (text.size() < wholeLength + 1 || text.size() > wholeLength + 1 + maxFractionDigits + 6)
        return std::nullopt;
    const std::string_view head = text.substr(0, wholeLength);
    if (head[4] != '-' || head[7] != '-' || head[10] != 'T' || head[13] != ':' || head[16] != ':')
        return std::nullopt;
    const std::string_view year = head.substr(0, 4), month = head.substr(5, 2),
                           day = head.substr(8, 2), hour = head.substr(11, 2),
                           minute = head.substr(14, 2), second = head.substr(17, 2);
    for (auto field : {year, month, day, hour, minute, second})
        if (!isDigits(field))
            return std::nullopt;
    if (number(month) < 1 || number(month) > 12 || number(day) < 1 || number(day) > 31 ||
        number(hour) > 23 || number(minute) > 59 || number(second) > 59)
        return std::nullopt;

    std::string_view rest = text.substr(wholeLength);
    std::string fraction;
    if (rest.front() == '.') {
        const std::size_t digits =
            std::find_if(rest.begin() + 1, rest.end(), [](char c) { return c < '0' || c > '9'; }) -
            rest.begin() - 1;
        if (digits == 0 || digits > maxFractionDigits)
            return std::nullopt;
        fraction = std::string(rest.substr(1, digits));
        fraction.resize(3, '0');
        rest.remove_prefix(1 + digits);
    }

    // ICU also reads "+0100"; the internet form requires the colon ("+01:00") or "Z".
    if (rest == "Z" || rest == "z") {
        rest = "Z";
    } else if (rest.size() != 6 || (rest[0] != '+' && rest[0] != '-') || rest[3] != ':' ||
               !isDigits(rest.substr(1, 2)) || !isDigits(rest.substr(4, 2)) ||
               number(rest.substr(1, 2)) > 23 || number(rest.substr(4, 2)) > 59) {
        return std::nullopt;
    }
    std::string normalised(head);
    if (!fraction.empty())
        normalised += "." + fraction;
    normalised += rest;
    return normalised;
}

} // namespace

std::optional<Date> parseIso8601(std::string_view text) {
    auto normalised = normalisedInternetDateTime(text);
    if (!normalised)
        return std::nullopt;
    // Formats are not safe to share between threads; one set per thread.
    thread_local auto whole = makeFormat("yyyy-MM-dd'T'HH:mm:ssXXX");
    thread_local auto fractional = makeFormat("yyyy-MM-dd'T'HH:mm:ss.SSSXXX");
    icu::UnicodeString unicodeText = icu::UnicodeString::fromUTF8(*normalised);
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
