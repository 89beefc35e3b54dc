#pragma once

#include <optional>

#include <QDateTime>
#include <QString>

#include "base/Calendar.h"
#include "base/Instant.h"

namespace daywyn {

// Dates and times in the words the screens use, in the user's calendar: "Saturday 21
// November", "Tue 24 Nov", "14:30". The calendar decides the wall clock; the words are
// English whatever the process locale, like every other text of the app.
struct DisplayFormat {
    static QString dayTitle(Instant at, const Calendar& calendar);
    static QString shortDay(Instant at, const Calendar& calendar);
    static QString time(Instant at, const Calendar& calendar);
    // "14:30" on the same day as `today`, "Tue 24 Nov 14:30" otherwise.
    static QString dateTime(Instant at, Instant today, const Calendar& calendar);
    // The editor's editable form, "2026-11-21 14:30", and back; absent when the text is
    // not a real date and time.
    static QString editable(Instant at, const Calendar& calendar);
    static std::optional<Instant> parseEditable(const QString& text, const Calendar& calendar);
};

} // namespace daywyn
