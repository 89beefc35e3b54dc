#include "base/Calendar.h"

#include <climits>
#include <cmath>

#include <unicode/datefmt.h>
#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>

namespace daywyn {

namespace {

std::unique_ptr<icu::GregorianCalendar> makeCalendar(icu::TimeZone* zone,
                                                     const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    auto calendar = std::make_unique<icu::GregorianCalendar>(zone, locale, status);
    if (U_FAILURE(status)) {
        status = U_ZERO_ERROR;
        calendar = std::make_unique<icu::GregorianCalendar>(icu::TimeZone::getGMT()->clone(),
                                                            icu::Locale::getRoot(), status);
    }
    calendar->setSkippedWallTimeOption(UCAL_WALLTIME_NEXT_VALID);
    calendar->setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
    // Rules need plain proleptic arithmetic, never the Julian switch of 1582.
    UErrorCode changeStatus = U_ZERO_ERROR;
    calendar->setGregorianChange(-1e300, changeStatus);
    return calendar;
}

// ICU works in whole milliseconds; the sub-millisecond remainder of an instant is
// carried across additions so that an added day is exactly 86,400 s on normal days.
double subMillisecond(Instant at) {
    const double ms = at.seconds * 1000.0;
    return ms - std::floor(ms);
}

bool representable(double udate) {
    // ICU refuses dates beyond about ±5.8 million years; stay well inside.
    return std::isfinite(udate) && std::fabs(udate) < 1e17;
}

} // namespace

Calendar::Calendar()
    : calendar_(makeCalendar(icu::TimeZone::createDefault(), icu::Locale::getDefault())) {}

Calendar::Calendar(std::string_view zoneId, std::string_view locale) {
    icu::TimeZone* zone = icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(
        icu::StringPiece(zoneId.data(), static_cast<int32_t>(zoneId.size()))));
    icu::UnicodeString id;
    zone->getID(id);
    valid_ = id != icu::UnicodeString(UCAL_UNKNOWN_ZONE_ID);
    const icu::Locale loc =
        locale.empty() ? icu::Locale::getDefault() : icu::Locale(std::string(locale).c_str());
    calendar_ = makeCalendar(zone, loc);
}

Calendar::Calendar(const Calendar& other)
    : calendar_(other.calendar_->clone())
    , valid_(other.valid_) {}

Calendar& Calendar::operator=(const Calendar& other) {
    if (this != &other) {
        calendar_.reset(other.calendar_->clone());
        valid_ = other.valid_;
    }
    return *this;
}

Calendar::Calendar(Calendar&&) noexcept = default;
Calendar& Calendar::operator=(Calendar&&) noexcept = default;
Calendar::~Calendar() = default;

std::string Calendar::zoneId() const {
    icu::UnicodeString id;
    calendar_->getTimeZone().getID(id);
    std::string out;
    id.toUTF8String(out);
    return out;
}

Instant Calendar::startOfDay(Instant at) const {
    return settingTime(at, 0, 0, 0).value_or(at);
}

bool Calendar::isSameDay(Instant a, Instant b) const {
    return startOfDay(a) == startOfDay(b);
}

std::optional<Instant> Calendar::adding(Instant at, int field, long long amount) const {
    const double udate = std::floor(at.seconds * 1000.0);
    if (!representable(udate) || amount > INT32_MAX || amount < INT32_MIN) {
        return std::nullopt;
    }
    UErrorCode status = U_ZERO_ERROR;
    calendar_->setTime(udate, status);
    calendar_->add(static_cast<UCalendarDateFields>(field), static_cast<int32_t>(amount), status);
    const double result = calendar_->getTime(status);
    if (U_FAILURE(status) || !representable(result)) {
        return std::nullopt;
    }
    return Instant{(result + subMillisecond(at)) / 1000.0};
}

std::optional<Instant> Calendar::addingDays(Instant at, long long days) const {
    return adding(at, UCAL_DATE, days);
}

std::optional<Instant> Calendar::addingMonths(Instant at, long long months) const {
    return adding(at, UCAL_MONTH, months);
}

std::optional<Instant> Calendar::addingMinutes(Instant at, long long minutes) const {
    return adding(at, UCAL_MINUTE, minutes);
}

std::optional<Instant> Calendar::settingTime(Instant day, int hour, int minute, int second) const {
    const double udate = std::floor(day.seconds * 1000.0);
    if (!representable(udate)) {
        return std::nullopt;
    }
    UErrorCode status = U_ZERO_ERROR;
    calendar_->setTime(udate, status);
    const int32_t year = calendar_->get(UCAL_EXTENDED_YEAR, status);
    const int32_t month = calendar_->get(UCAL_MONTH, status);
    const int32_t date = calendar_->get(UCAL_DATE, status);
    if (U_FAILURE(status)) {
        return std::nullopt;
    }
    return wallClock(year, month, date, hour, minute, second);
}

std::optional<Instant> Calendar::date(int year, int month, int day, int hour, int minute,
                                      int second) const {
    return wallClock(year, month - 1, day, hour, minute, second);
}

std::optional<Instant> Calendar::wallClock(int year, int zeroBasedMonth, int day, int hour,
                                           int minute, int second) const {
    // Cleared first so no field of an earlier computation takes part in resolving
    // these; the skipped and repeated wall-time options survive a clear.
    UErrorCode status = U_ZERO_ERROR;
    calendar_->clear();
    calendar_->set(UCAL_EXTENDED_YEAR, year);
    calendar_->set(UCAL_MONTH, zeroBasedMonth);
    calendar_->set(UCAL_DATE, day);
    calendar_->set(UCAL_HOUR_OF_DAY, hour);
    calendar_->set(UCAL_MINUTE, minute);
    calendar_->set(UCAL_SECOND, second);
    calendar_->set(UCAL_MILLISECOND, 0);
    const double result = calendar_->getTime(status);
    if (U_FAILURE(status) || !representable(result)) {
        return std::nullopt;
    }
    return Instant{result / 1000.0};
}

DateParts Calendar::parts(Instant at) const {
    UErrorCode status = U_ZERO_ERROR;
    calendar_->setTime(std::floor(at.seconds * 1000.0), status);
    DateParts p;
    p.year = calendar_->get(UCAL_EXTENDED_YEAR, status);
    p.month = calendar_->get(UCAL_MONTH, status) + 1;
    p.day = calendar_->get(UCAL_DATE, status);
    p.hour = calendar_->get(UCAL_HOUR_OF_DAY, status);
    p.minute = calendar_->get(UCAL_MINUTE, status);
    p.second = calendar_->get(UCAL_SECOND, status);
    p.weekday = calendar_->get(UCAL_DAY_OF_WEEK, status);
    return p;
}

int Calendar::hour(Instant at) const {
    return parts(at).hour;
}

bool Calendar::isWeekend(Instant at) const {
    UErrorCode status = U_ZERO_ERROR;
    const bool weekend = calendar_->isWeekend(std::floor(at.seconds * 1000.0), status);
    return U_SUCCESS(status) && weekend;
}

std::string Calendar::shortTimeText(Instant at) const {
    const double udate = std::floor(at.seconds * 1000.0);
    if (!representable(udate)) {
        return {};
    }
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale locale = calendar_->getLocale(ULOC_VALID_LOCALE, status);
    if (U_FAILURE(status)) {
        locale = icu::Locale::getDefault();
    }
    std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createTimeInstance(icu::DateFormat::kShort, locale));
    if (!format) {
        return {};
    }
    // The formatter would otherwise show the process's zone, not this calendar's.
    format->setTimeZone(calendar_->getTimeZone());
    icu::UnicodeString text;
    format->format(udate, text);
    std::string out;
    text.toUTF8String(out);
    return out;
}

} // namespace daywyn
