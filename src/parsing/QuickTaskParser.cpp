#include "parsing/QuickTaskParser.h"

#include <algorithm>

#include "parsing/ParsingText.h"
#include "parsing/TaskDateParser.h"

namespace daywyn {

namespace {

constexpr long long kShortestEstimate = 1;
constexpr long long kLongestEstimate = 720;

const icu::RegexPattern* estimatePattern() {
    static const auto pattern =
        compileCaseInsensitive(u"\\bfor\\s+(\\d+)\\s*(minutes?|mins?|hours?|hrs?)\\b");
    return pattern.get();
}

// The estimate in minutes for a count and its unit word, or absent when the count
// is not a number a 64-bit integer can hold.
std::optional<long long> estimateMinutes(const icu::UnicodeString& count,
                                         const icu::UnicodeString& unit) {
    const auto value = parseDecimal(count);
    if (!value) {
        return std::nullopt;
    }
    const bool hours = lowerCased(unit).startsWith(icu::UnicodeString(u"h"));
    // Capped before multiplying: a huge hour count becomes the longest estimate
    // instead of overflowing.
    const long long capped = std::min(*value, kLongestEstimate + 1);
    const long long minutes = hours ? capped * 60 : capped;
    return std::clamp(minutes, kShortestEstimate, kLongestEstimate);
}

} // namespace

TaskDraft QuickTaskParser::draft(std::string_view text, Instant now, const Calendar& calendar) {
    TaskDraft draft;
    icu::UnicodeString title = trimmedOfWhitespace(decodeUtf8(text));

    if (const auto estimate = extractFirstMatch(estimatePattern(), title);
        estimate && estimate->size() == 2) {
        // An unreadable count sets no estimate, but its words stay out of the title.
        if (const auto minutes = estimateMinutes((*estimate)[0], (*estimate)[1])) {
            draft.hasEstimate = true;
            draft.estimatedMinutes = *minutes;
        }
    }

    const TaskDateMatch date = TaskDateParser::parse(title, now, calendar);
    if (date.day) {
        draft.hasScheduledDay = true;
        draft.scheduledDay = *date.day;
    }
    if (date.start) {
        draft.hasScheduledStart = true;
        draft.scheduledStart = *date.start;
    }

    draft.title = encodeUtf8(collapsedWhitespace(title));
    return draft;
}

} // namespace daywyn
