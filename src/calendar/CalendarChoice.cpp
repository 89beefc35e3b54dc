#include "calendar/CalendarChoice.h"

#include <algorithm>
#include <memory>
#include <string>

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

namespace daywyn {

void CalendarChoice::sort(std::vector<CalendarChoice>& choices, std::string_view locale) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Locale where =
        locale.empty() ? icu::Locale::getDefault() : icu::Locale(std::string(locale).c_str());
    std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(where, status));
    if (U_FAILURE(status) || !collator) {
        // Without a collator the byte order is still a stable, predictable order.
        std::stable_sort(choices.begin(), choices.end(), [](const auto& a, const auto& b) {
            return a.sourceTitle != b.sourceTitle ? a.sourceTitle < b.sourceTitle
                                                  : a.title < b.title;
        });
        return;
    }
    // Secondary strength: accents count, case does not.
    collator->setStrength(icu::Collator::SECONDARY);
    const auto compare = [&](const std::string& a, const std::string& b) {
        UErrorCode error = U_ZERO_ERROR;
        return collator->compareUTF8(a, b, error);
    };
    std::stable_sort(choices.begin(), choices.end(),
                     [&](const CalendarChoice& a, const CalendarChoice& b) {
                         const auto bySource = compare(a.sourceTitle, b.sourceTitle);
                         if (bySource != UCOL_EQUAL) {
                             return bySource == UCOL_LESS;
                         }
                         return compare(a.title, b.title) == UCOL_LESS;
                     });
}

} // namespace daywyn
