#pragma once

#include <string_view>
#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "model/VoiceTaskCandidate.h"

namespace daywyn {

// Cuts a spoken list into task candidates for review. Items are separated by a
// spoken "next task" / "new item" / "another task", a semicolon or a line break;
// each item loses its day word, its "at" time and a leading "first", "then" …
struct VoiceTaskParser {
    // The candidates in spoken order, each with a fresh id and a non-empty title
    // whose first letter is upper-cased; empty when nothing usable was said.
    static std::vector<VoiceTaskCandidate> candidates(std::string_view transcript, Instant now,
                                                      const Calendar& calendar);
};

} // namespace daywyn
