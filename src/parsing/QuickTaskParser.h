#pragma once

#include <string_view>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "model/TaskDraft.h"

namespace daywyn {

// Turns one typed line ("Call Ama tomorrow at 10 for 20 minutes") into a draft to
// review: the first estimate ("for 20 minutes", clamped to 1…720 minutes), then the
// first day word and clock time are cut out, and the remaining words are the title.
struct QuickTaskParser {
    // A fresh draft with the switches on for what was found. The title has single
    // spaces between words and may be empty (the draft's validation then objects).
    static TaskDraft draft(std::string_view text, Instant now, const Calendar& calendar);
};

} // namespace daywyn
