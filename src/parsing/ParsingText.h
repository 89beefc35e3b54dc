#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/regex.h>
#include <unicode/unistr.h>

namespace daywyn {

// Text steps shared by the quick, date and spoken-list parsers. They work on ICU's
// UTF-16 text; the parsers convert from and to UTF-8 only at their edges.

// UTF-8 to UTF-16. Each maximal invalid byte sequence becomes one U+FFFD, so bad
// bytes stay visible in a title instead of vanishing or stopping the parse.
icu::UnicodeString decodeUtf8(std::string_view text);
// UTF-16 to well-formed UTF-8.
std::string encodeUtf8(const icu::UnicodeString& text);

// A case-insensitive pattern, or null when the source does not compile (a parser
// then simply finds nothing). Keep the result in a function-local static so each
// pattern is compiled once per process; a compiled pattern may be shared by threads.
std::unique_ptr<const icu::RegexPattern> compileCaseInsensitive(std::u16string_view source);

// Finds the first (leftmost) match of the pattern in text, removes exactly that
// match (the text on either side is joined as it is) and returns the captures 1…n,
// with a group that took no part as an empty string. Absent, text untouched, when
// the pattern is null or nothing matches.
std::optional<std::vector<icu::UnicodeString>> extractFirstMatch(const icu::RegexPattern* pattern,
                                                                 icu::UnicodeString& text);

// The value of a run of decimal digits of any script ("42", "٤٢", "４２"); absent
// when the text is empty, holds anything else, or exceeds a 64-bit signed integer.
std::optional<long long> parseDecimal(const icu::UnicodeString& digits);

// Without white space and line breaks (Unicode White_Space) at either end.
icu::UnicodeString trimmedOfWhitespace(const icu::UnicodeString& text);
// Without white space, line breaks and punctuation (general categories P*) at
// either end.
icu::UnicodeString trimmedOfWhitespaceAndPunctuation(const icu::UnicodeString& text);
// Every run of white space replaced by one space, with none left at either end.
icu::UnicodeString collapsedWhitespace(const icu::UnicodeString& text);
// Lower-cased with the root locale, the same on every machine.
icu::UnicodeString lowerCased(const icu::UnicodeString& text);
// The first character upper-cased with full case mapping ("élan" → "Élan",
// "ßig" → "SSig"); the rest unchanged.
icu::UnicodeString withUpperCasedFirstCharacter(const icu::UnicodeString& text);

} // namespace daywyn
