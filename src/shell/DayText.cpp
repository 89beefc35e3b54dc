#include "shell/DayText.h"

#include <cstdio>

namespace daywyn {

namespace {

constexpr const char* kWeekdays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                     "Thursday", "Friday", "Saturday"};
constexpr const char* kMonths[] = {"January",   "February", "March",    "April",
                                   "May",       "June",     "July",     "August",
                                   "September", "October",  "November", "December"};

std::string dayText(const DateParts& p, bool withYear) {
    // Appended piece by piece: GCC 12 warns falsely (-Wrestrict) about a chain of
    // string concatenations here when optimising.
    std::string text = kWeekdays[(p.weekday + 6) % 7];
    text += ' ';
    text += std::to_string(p.day);
    text += ' ';
    text += kMonths[(p.month + 11) % 12];
    if (withYear) {
        text += ' ';
        text += std::to_string(p.year);
    }
    return text;
}

} // namespace

std::string longDayText(Instant day, const Calendar& calendar) {
    return dayText(calendar.parts(day), false);
}

std::string relativeDayText(Instant day, Instant now, const Calendar& calendar) {
    const Instant today = calendar.startOfDay(now);
    const Instant start = calendar.startOfDay(day);
    if (start == today) {
        return "today";
    }
    if (auto tomorrow = calendar.addingDays(today, 1); tomorrow && start == *tomorrow) {
        return "tomorrow";
    }
    if (auto yesterday = calendar.addingDays(today, -1); yesterday && start == *yesterday) {
        return "yesterday";
    }
    const DateParts p = calendar.parts(day);
    return dayText(p, p.year != calendar.parts(now).year);
}

std::string timeOfDayText(Instant at, const Calendar& calendar) {
    const DateParts p = calendar.parts(at);
    char buffer[8];
    std::snprintf(buffer, sizeof buffer, "%02d:%02d", p.hour % 100, p.minute % 100);
    return buffer;
}

} // namespace daywyn
