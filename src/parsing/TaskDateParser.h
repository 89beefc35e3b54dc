#pragma once

#include <optional>
#include <string>

#include <unicode/uversion.h>

#include "base/Calendar.h"
#include "base/Instant.h"

U_NAMESPACE_BEGIN
class UnicodeString;
U_NAMESPACE_END

namespace daywyn {

// What the date parser took out of a title: a planned day (midnight) and a start
// time; either may be absent.
struct TaskDateMatch {
    std::optional<Instant> day;
    std::optional<Instant> start;
    bool operator==(const TaskDateMatch&) const = default;
};

// Takes the first day word ("today", "tomorrow") and then the first clock time
// ("at 10", "at 7:30pm", "at nine") out of a title. Later occurrences stay in the
// title as ordinary words. Afternoon is never guessed: "at 7" is 07:00.
struct TaskDateParser {
    // Edits `title` in place (the matched text is cut out, nothing else changes).
    // A time alone is on the day of `now`, even if it has passed; a time after a
    // day word is on that day. Absent values were not said (or cannot exist).
    static TaskDateMatch parse(std::string& title, Instant now, const Calendar& calendar);
    // The same on UTF-16 text, for the other parsers of this folder.
    static TaskDateMatch parse(icu::UnicodeString& title, Instant now, const Calendar& calendar);
};

} // namespace daywyn
