#include "parsing/TaskDateParser.h"

#include <array>
#include <string_view>

#include "parsing/ParsingText.h"

namespace daywyn {

namespace {

const icu::RegexPattern* dayPattern() {
    static const auto pattern = compileCaseInsensitive(u"\\b(today|tomorrow)\\b");
    return pattern.get();
}

const icu::RegexPattern* timePattern() {
    static const auto pattern = compileCaseInsensitive(
        u"\\bat\\s+([01]?\\d|2[0-3]|one|two|three|four|five|six|seven|eight|nine|ten|eleven|"
        u"twelve)(?::([0-5]\\d))?\\s*(am|pm)?\\b");
    return pattern.get();
}

std::optional<int> hourNumberWord(const icu::UnicodeString& word) {
    static constexpr std::array<std::u16string_view, 12> words = {
        u"one",   u"two",   u"three", u"four", u"five",   u"six",
        u"seven", u"eight", u"nine",  u"ten",  u"eleven", u"twelve"};
    const icu::UnicodeString lower = lowerCased(word);
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (lower == icu::UnicodeString(words[i].data(), static_cast<int32_t>(words[i].size()))) {
            return static_cast<int>(i) + 1;
        }
    }
    return std::nullopt;
}

std::optional<int> hourOf(const icu::UnicodeString& capture) {
    if (const auto number = parseDecimal(capture)) {
        // The pattern allows at most 23, but a value is checked before narrowing.
        return *number <= 23 ? std::optional<int>(static_cast<int>(*number)) : std::nullopt;
    }
    return hourNumberWord(capture);
}

std::optional<Instant> dayOf(const icu::UnicodeString& word, Instant now,
                             const Calendar& calendar) {
    const Instant base = calendar.startOfDay(now);
    if (lowerCased(word) != icu::UnicodeString(u"tomorrow")) {
        return base;
    }
    const auto next = calendar.addingDays(base, 1);
    // Adding a day keeps the wall time of `base`; where a zone's midnight is skipped
    // that is not the start of the next day, so take that day's start again.
    return next ? std::optional<Instant>(calendar.startOfDay(*next)) : std::nullopt;
}

} // namespace

TaskDateMatch TaskDateParser::parse(icu::UnicodeString& title, Instant now,
                                    const Calendar& calendar) {
    TaskDateMatch match;
    if (const auto day = extractFirstMatch(dayPattern(), title); day && day->size() == 1) {
        match.day = dayOf((*day)[0], now, calendar);
    }
    const auto time = extractFirstMatch(timePattern(), title);
    if (!time || time->size() != 3) {
        return match;
    }
    auto hour = hourOf((*time)[0]);
    if (!hour) {
        return match;
    }
    const icu::UnicodeString meridiem = lowerCased((*time)[2]);
    if (meridiem == icu::UnicodeString(u"pm") && *hour < 12) {
        *hour += 12;
    } else if (meridiem == icu::UnicodeString(u"am") && *hour == 12) {
        *hour = 0;
    }
    const int minute = static_cast<int>(parseDecimal((*time)[1]).value_or(0));
    // Skipped wall times move to the next existing time and repeated ones take the
    // first: the calendar is set up that way.
    match.start = calendar.settingTime(match.day.value_or(now), *hour, minute, 0);
    return match;
}

TaskDateMatch TaskDateParser::parse(std::string& title, Instant now, const Calendar& calendar) {
    icu::UnicodeString text = decodeUtf8(title);
    const int32_t before = text.length();
    const TaskDateMatch match = parse(text, now, calendar);
    // Untouched text is handed back byte for byte, even where it is not valid UTF-8.
    if (text.length() != before) {
        title = encodeUtf8(text);
    }
    return match;
}

} // namespace daywyn
