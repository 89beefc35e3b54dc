#pragma once

#include <string>

#include "base/Calendar.h"
#include "base/Instant.h"

namespace daywyn {

// How Daywyn writes days and times for people, in English, in the calendar's zone.

// "Sunday 22 November".
std::string longDayText(Instant day, const Calendar& calendar);

// "today", "tomorrow", "yesterday", otherwise "Tuesday 24 November" (with the year
// when it differs from the year of `now`).
std::string relativeDayText(Instant day, Instant now, const Calendar& calendar);

// "09:05": 24-hour wall-clock time.
std::string timeOfDayText(Instant at, const Calendar& calendar);

} // namespace daywyn
