#include "parsing/VoiceTaskParser.h"

#include "parsing/ParsingText.h"
#include "parsing/TaskDateParser.h"

namespace daywyn {

namespace {

const icu::RegexPattern* separatorPattern() {
    static const auto pattern =
        compileCaseInsensitive(u"\\b(?:next|new|another)[\\s,.:;-]+(?:tasks?|items?)\\b");
    return pattern.get();
}

const icu::RegexPattern* leadingOrdinalPattern() {
    static const auto pattern =
        compileCaseInsensitive(u"^(first|second|third|then|and then)[,:\\s-]+");
    return pattern.get();
}

// The transcript with every spoken separator, ";" and line break turned into "|".
icu::UnicodeString markedBoundaries(const icu::UnicodeString& transcript) {
    icu::UnicodeString marked(transcript);
    if (const icu::RegexPattern* pattern = separatorPattern()) {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::RegexMatcher> matcher(pattern->matcher(transcript, status));
        if (U_SUCCESS(status) && matcher) {
            icu::UnicodeString replaced = matcher->replaceAll(icu::UnicodeString(u"|"), status);
            if (U_SUCCESS(status)) {
                marked = replaced;
            }
        }
    }
    marked.findAndReplace(icu::UnicodeString(u";"), icu::UnicodeString(u"|"));
    marked.findAndReplace(icu::UnicodeString(u"\n"), icu::UnicodeString(u"|"));
    return marked;
}

std::vector<icu::UnicodeString> nonEmptyPieces(const icu::UnicodeString& marked) {
    std::vector<icu::UnicodeString> pieces;
    int32_t start = 0;
    while (start <= marked.length()) {
        int32_t bar = marked.indexOf(u'|', start);
        if (bar < 0) {
            bar = marked.length();
        }
        if (bar > start) {
            pieces.emplace_back(marked, start, bar - start);
        }
        start = bar + 1;
    }
    return pieces;
}

} // namespace

std::vector<VoiceTaskCandidate> VoiceTaskParser::candidates(std::string_view transcript,
                                                            Instant now, const Calendar& calendar) {
    std::vector<VoiceTaskCandidate> result;
    for (const icu::UnicodeString& piece :
         nonEmptyPieces(markedBoundaries(decodeUtf8(transcript)))) {
        icu::UnicodeString text = trimmedOfWhitespaceAndPunctuation(piece);
        if (text.isEmpty()) {
            continue;
        }
        // The day and time go first and the ordinal is looked for in what remains, so
        // "then at 9" leaves only "then " and the piece is dropped with its time.
        const TaskDateMatch date = TaskDateParser::parse(text, now, calendar);
        extractFirstMatch(leadingOrdinalPattern(), text);
        text = trimmedOfWhitespaceAndPunctuation(text);
        if (text.isEmpty()) {
            // A piece that was only a day and a time says no task.
            continue;
        }
        result.push_back(VoiceTaskCandidate{
            Uuid::random(),
            encodeUtf8(withUpperCasedFirstCharacter(collapsedWhitespace(text))),
            date.start,
            date.day,
        });
    }
    return result;
}

} // namespace daywyn
