// Any transcript: no crash, no hang, and every candidate title non-empty, well-formed
// UTF-8 and never longer than the transcript.
//
// Length rule: invalid UTF-8 is kept visible as U+FFFD (one per maximal invalid
// sequence, ICU's rule), which takes 3 bytes where the bad input may have had 1, so
// lengths are compared in code points against the decoded transcript. Full
// upper-casing of the first character may lengthen a title (ß → SS, ΐ → three code
// points; never more than three), so a title may exceed the transcript by at most
// two code points.
#include "parsing/VoiceTaskParser.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include <unicode/unistr.h>
#include <unicode/utf8.h>

namespace {

constexpr long long kLongestFirstCharacterGrowth = 2;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
// Code points of well-formed UTF-8, or -1 when it is not well-formed.
long long wellFormedCodePoints(const std::string& text) {
    const auto* s = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<int32_t>(text.size());
    long long count = 0;
    for (int32_t i = 0; i < length;) {
        UChar32 c = 0;
        U8_NEXT(s, i, length, c);
        if (c < 0) {
            return -1;
        }
        ++count;
    }
    return count;
}
#pragma GCC diagnostic pop

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const daywyn::Calendar calendar("Europe/Berlin", "de_DE");
    // Noon on the day Berlin skips 02:00-03:00, so a time can land in the gap.
    constexpr daywyn::Instant now{1774778400.0};

    const std::string_view transcript(reinterpret_cast<const char*>(data), size);
    const auto candidates = daywyn::VoiceTaskParser::candidates(transcript, now, calendar);

    const long long inputCodePoints =
        icu::UnicodeString::fromUTF8(
            icu::StringPiece(transcript.data(), static_cast<int32_t>(size)))
            .countChar32();
    for (const daywyn::VoiceTaskCandidate& candidate : candidates) {
        const long long titleCodePoints = wellFormedCodePoints(candidate.title);
        if (titleCodePoints < 1 ||
            titleCodePoints > inputCodePoints + kLongestFirstCharacterGrowth) {
            std::abort();
        }
    }
    return 0;
}
