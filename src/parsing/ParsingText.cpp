#include "parsing/ParsingText.h"

#include <climits>

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/utf16.h>

namespace daywyn {

namespace {

bool isWhitespaceOrPunctuation(UChar32 c) {
    return u_isUWhiteSpace(c) || u_ispunct(c);
}

template <typename Predicate>
icu::UnicodeString trimmed(const icu::UnicodeString& text, Predicate drop) {
    int32_t begin = 0;
    const int32_t length = text.length();
    while (begin < length) {
        const UChar32 c = text.char32At(begin);
        if (!drop(c)) {
            break;
        }
        begin += U16_LENGTH(c);
    }
    int32_t end = length;
    while (end > begin) {
        const UChar32 c = text.char32At(end - 1);
        if (!drop(c)) {
            break;
        }
        end -= U16_LENGTH(c);
    }
    return icu::UnicodeString(text, begin, end - begin);
}

} // namespace

icu::UnicodeString decodeUtf8(std::string_view text) {
    // fromUTF8 substitutes U+FFFD for invalid sequences; the length is explicit, so
    // a NUL byte is an ordinary character.
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

std::string encodeUtf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

std::unique_ptr<const icu::RegexPattern> compileCaseInsensitive(std::u16string_view source) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError{};
    const icu::UnicodeString text(source.data(), static_cast<int32_t>(source.size()));
    std::unique_ptr<const icu::RegexPattern> pattern(
        icu::RegexPattern::compile(text, UREGEX_CASE_INSENSITIVE, parseError, status));
    if (U_FAILURE(status)) {
        return nullptr;
    }
    return pattern;
}

std::optional<std::vector<icu::UnicodeString>> extractFirstMatch(const icu::RegexPattern* pattern,
                                                                 icu::UnicodeString& text) {
    if (pattern == nullptr) {
        return std::nullopt;
    }
    int32_t start = 0;
    int32_t end = 0;
    std::vector<icu::UnicodeString> captures;
    {
        // The matcher reads `text` in place (it keeps no copy), so it must be gone
        // before the match is cut out below.
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::RegexMatcher> matcher(pattern->matcher(text, status));
        if (U_FAILURE(status) || !matcher || !matcher->find(0, status) || U_FAILURE(status)) {
            return std::nullopt;
        }
        start = matcher->start(status);
        end = matcher->end(status);
        const int32_t groups = matcher->groupCount();
        captures.reserve(static_cast<std::size_t>(groups));
        for (int32_t group = 1; group <= groups; ++group) {
            // A group that took no part yields an empty string from group().
            captures.push_back(matcher->group(group, status));
        }
        if (U_FAILURE(status)) {
            return std::nullopt;
        }
    }
    text.remove(start, end - start);
    return captures;
}

std::optional<long long> parseDecimal(const icu::UnicodeString& digits) {
    // ICU's \d is any Unicode decimal digit (Arabic-Indic, Devanagari, fullwidth …),
    // so "for ٣ minutes" reaches here. A person who writes digits of their own
    // script means that number: each digit is read with its Unicode value.
    if (digits.isEmpty()) {
        return std::nullopt;
    }
    long long value = 0;
    for (int32_t i = 0; i < digits.length();) {
        const UChar32 c = digits.char32At(i);
        const int32_t digit = u_charDigitValue(c);
        if (u_charType(c) != U_DECIMAL_DIGIT_NUMBER || digit < 0 || digit > 9) {
            return std::nullopt;
        }
        if (value > (LLONG_MAX - digit) / 10) {
            return std::nullopt;
        }
        value = value * 10 + digit;
        i += U16_LENGTH(c);
    }
    return value;
}

icu::UnicodeString trimmedOfWhitespace(const icu::UnicodeString& text) {
    return trimmed(text, [](UChar32 c) { return u_isUWhiteSpace(c) != 0; });
}

icu::UnicodeString trimmedOfWhitespaceAndPunctuation(const icu::UnicodeString& text) {
    return trimmed(text, isWhitespaceOrPunctuation);
}

icu::UnicodeString collapsedWhitespace(const icu::UnicodeString& text) {
    icu::UnicodeString out;
    bool pendingSpace = false;
    for (int32_t i = 0; i < text.length();) {
        const UChar32 c = text.char32At(i);
        i += U16_LENGTH(c);
        if (u_isUWhiteSpace(c)) {
            pendingSpace = !out.isEmpty();
            continue;
        }
        if (pendingSpace) {
            out.append(u' ');
            pendingSpace = false;
        }
        out.append(c);
    }
    return out;
}

icu::UnicodeString lowerCased(const icu::UnicodeString& text) {
    icu::UnicodeString lower(text);
    lower.toLower(icu::Locale::getRoot());
    return lower;
}

icu::UnicodeString withUpperCasedFirstCharacter(const icu::UnicodeString& text) {
    if (text.isEmpty()) {
        return text;
    }
    const int32_t firstLength = U16_LENGTH(text.char32At(0));
    icu::UnicodeString first(text, 0, firstLength);
    // The root locale keeps the result the same on every machine (a Turkish locale
    // would turn "i" into "İ").
    first.toUpper(icu::Locale::getRoot());
    icu::UnicodeString out(text);
    out.replace(0, firstLength, first);
    return out;
}

} // namespace daywyn
