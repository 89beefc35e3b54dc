#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <unicode/uversion.h>

#include "base/Instant.h"

U_NAMESPACE_BEGIN
class GregorianCalendar;
U_NAMESPACE_END

namespace daywyn {

// Wall-clock fields of an instant in a calendar. weekday: 1 = Sunday … 7 = Saturday.
struct DateParts {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int weekday = 0;
    bool operator==(const DateParts&) const = default;
};

// The Gregorian calendar of one time zone and locale: every day boundary, day
// addition and wall-clock time in Daywyn goes through one of these, so rules can
// be exercised in any zone. Where a wall-clock time is skipped by a daylight-saving
// change the next existing time is taken; where it occurs twice, the first.
// A Calendar value is used by one thread at a time (copies are independent).
class Calendar {
public:
    // The process's time zone and locale.
    Calendar();
    // A named IANA zone ("Europe/Berlin"); an empty locale means the process's.
    explicit Calendar(std::string_view zoneId, std::string_view locale = {});
    Calendar(const Calendar& other);
    Calendar& operator=(const Calendar& other);
    Calendar(Calendar&&) noexcept;
    Calendar& operator=(Calendar&&) noexcept;
    ~Calendar();

    // False when the zone id was not recognised (the calendar then runs on GMT).
    bool isValid() const { return valid_; }
    std::string zoneId() const;

    // The first instant of the day that contains at.
    Instant startOfDay(Instant at) const;
    bool isSameDay(Instant a, Instant b) const;

    // Calendar component additions without wrapping: the time of day is kept across
    // daylight-saving changes, and a day that does not exist in the target month is
    // clamped (31 January + 1 month = the last day of February). Absent when the
    // calendar cannot produce a date.
    std::optional<Instant> addingDays(Instant at, long long days) const;
    std::optional<Instant> addingMonths(Instant at, long long months) const;
    std::optional<Instant> addingMinutes(Instant at, long long minutes) const;

    // The instant on the day that contains `day` with the given wall-clock time.
    std::optional<Instant> settingTime(Instant day, int hour, int minute, int second) const;
    // The instant of a wall-clock date and time in this calendar.
    std::optional<Instant> date(int year, int month, int day, int hour = 0, int minute = 0,
                                int second = 0) const;

    int hour(Instant at) const;
    DateParts parts(Instant at) const;
    // Whether the day of `at` is a weekend day for this calendar's locale.
    bool isWeekend(Instant at) const;
    // The wall-clock time of `at` in the short time style of the calendar's locale,
    // without a date ("9:05 AM" in en_US, "09:05" in de_DE). Empty if ICU fails.
    std::string shortTimeText(Instant at) const;

private:
    std::optional<Instant> adding(Instant at, int field, long long amount) const;
    std::optional<Instant> wallClock(int year, int zeroBasedMonth, int day, int hour, int minute,
                                     int second) const;

    std::unique_ptr<icu::GregorianCalendar> calendar_;
    bool valid_ = true;
};

} // namespace daywyn
