#include "Core/Calendar.h"

#include "Core/Iso8601.h"

#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

namespace ringwell {

Calendar::Calendar(std::unique_ptr<icu::Calendar> calendar) : calendar_(std::move(calendar)) {}

Calendar Calendar::userDefault() {
    UErrorCode status = U_ZERO_ERROR;
    // ICU's default zone honours TZ, then the system's zone.
    auto calendar = std::make_unique<icu::GregorianCalendar>(icu::TimeZone::createDefault(),
                                                             icu::Locale::getRoot(), status);
    return Calendar(std::move(calendar));
}

std::optional<Calendar> Calendar::inTimeZone(std::string_view zoneId) {
    icu::UnicodeString id = icu::UnicodeString::fromUTF8(
        icu::StringPiece(zoneId.data(), static_cast<int32_t>(zoneId.size())));
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(id));
    if (*zone == icu::TimeZone::getUnknown())
        return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    auto calendar =
        std::make_unique<icu::GregorianCalendar>(zone.release(), icu::Locale::getRoot(), status);
    if (U_FAILURE(status))
        return std::nullopt;
    return Calendar(std::move(calendar));
}

Calendar::Calendar(const Calendar& other)
    : calendar_(other.calendar_->clone()), pinned_(other.pinned_) {}
Calendar& Calendar::operator=(const Calendar& other) {
    if (this != &other) {
        calendar_.reset(other.calendar_->clone());
        pinned_ = other.pinned_;
    }
    return *this;
}
Calendar::Calendar(Calendar&&) noexcept = default;
Calendar& Calendar::operator=(Calendar&&) noexcept = default;
Calendar::~Calendar() = default;

Calendar Calendar::pinnedTo(Components face) const {
    Calendar pinned(*this);
    pinned.pinned_ = face;
    return pinned;
}

std::optional<Calendar::Components> Calendar::components(Date date) const {
    if (pinned_)
        return pinned_;
    UErrorCode status = U_ZERO_ERROR;
    calendar_->setTime(date.unixMilliseconds(), status);
    Components result;
    result.weekday = calendar_->get(UCAL_DAY_OF_WEEK, status);
    result.hour = calendar_->get(UCAL_HOUR_OF_DAY, status);
    result.minute = calendar_->get(UCAL_MINUTE, status);
    if (U_FAILURE(status))
        return std::nullopt;
    return result;
}

std::optional<Date> Calendar::startOfDay(Date date) const {
    UErrorCode status = U_ZERO_ERROR;
    calendar_->setTime(date.unixMilliseconds(), status);
    int year = calendar_->get(UCAL_YEAR, status);
    int month = calendar_->get(UCAL_MONTH, status);
    int day = calendar_->get(UCAL_DATE, status);
    int era = calendar_->get(UCAL_ERA, status);
    calendar_->clear();
    calendar_->set(UCAL_ERA, era);
    calendar_->set(year, month, day, 0, 0, 0);
    UDate start = calendar_->getTime(status);
    if (U_FAILURE(status))
        return std::nullopt;
    return Date::fromUnixMilliseconds(start);
}

std::optional<Date> Calendar::addingDays(Date date, int days) const {
    UErrorCode status = U_ZERO_ERROR;
    calendar_->setTime(date.unixMilliseconds(), status);
    calendar_->add(UCAL_DATE, days, status);
    UDate moved = calendar_->getTime(status);
    if (U_FAILURE(status))
        return std::nullopt;
    return Date::fromUnixMilliseconds(moved);
}

bool Calendar::isSameDay(Date a, Date b) const {
    auto startA = startOfDay(a);
    auto startB = startOfDay(b);
    return startA && startB && *startA == *startB;
}

std::string Calendar::timeZoneId() const {
    icu::UnicodeString id;
    calendar_->getTimeZone().getID(id);
    std::string out;
    id.toUTF8String(out);
    return out;
}

std::string Calendar::localText(Date date) const {
    UErrorCode status = U_ZERO_ERROR;
    icu::SimpleDateFormat format(icu::UnicodeString("yyyy-MM-dd HH:mm"), icu::Locale::getRoot(),
                                 status);
    if (U_FAILURE(status))
        return formatIso8601(date);
    format.setTimeZone(calendar_->getTimeZone());
    icu::UnicodeString text;
    format.format(date.unixMilliseconds(), text);
    std::string out;
    text.toUTF8String(out);
    return out;
}

} // namespace ringwell
