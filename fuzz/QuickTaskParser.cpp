// Any bytes typed into quick add: no crash, no hang, and a title that is well-formed
// UTF-8, single-spaced and never longer than what was typed.
//
// Length rule: invalid UTF-8 is kept visible as U+FFFD (one per maximal invalid
// sequence, ICU's rule), which takes 3 bytes where the bad input may have had 1,
// so lengths are compared in code points against the decoded input, not in bytes.
#include "parsing/QuickTaskParser.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

namespace {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
// Code points of well-formed UTF-8, or -1 when it is not well-formed.
long long wellFormedCodePoints(const std::string& text, bool& singleSpaced) {
    const auto* s = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<int32_t>(text.size());
    long long count = 0;
    bool previousWasSpace = true; // a leading space counts as a double one
    singleSpaced = true;
    for (int32_t i = 0; i < length;) {
        UChar32 c = 0;
        U8_NEXT(s, i, length, c);
        if (c < 0) {
            return -1;
        }
        const bool space = u_isUWhiteSpace(c);
        if (space && (c != u' ' || previousWasSpace)) {
            singleSpaced = false;
        }
        previousWasSpace = space;
        ++count;
    }
    if (previousWasSpace && count > 0) {
        singleSpaced = false;
    }
    return count;
}
#pragma GCC diagnostic pop

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const daywyn::Calendar calendar("America/New_York", "en_US");
    // Noon on the day New York skips 02:00-03:00, so a time can land in the gap.
    constexpr daywyn::Instant now{1772985600.0};

    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const daywyn::TaskDraft draft = daywyn::QuickTaskParser::draft(text, now, calendar);

    const long long inputCodePoints =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(size)))
            .countChar32();
    bool singleSpaced = true;
    const long long titleCodePoints = wellFormedCodePoints(draft.title, singleSpaced);
    if (titleCodePoints < 0 || titleCodePoints > inputCodePoints || !singleSpaced) {
        std::abort();
    }
    if (draft.hasEstimate && (draft.estimatedMinutes < 1 || draft.estimatedMinutes > 720)) {
        std::abort();
    }
    if (draft.hasReminder || draft.hasScheduledEnd) {
        std::abort();
    }
    return 0;
}
