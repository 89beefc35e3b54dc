#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"

namespace daywyn {

// `daywyn transcribe FILE [--tasks] [--json]`: decodes a WAV recording with the same
// recogniser as voice capture and prints its transcript, with " | " where the speaker
// paused, on one line; --tasks adds the candidates the review would show. `args`
// starts with the verb. Returns the exit status (0, 1 failure, 2 usage).
int runTranscribeCommand(const std::vector<std::string>& args, Instant now,
                         const Calendar& calendar, std::ostream& out, std::ostream& err);

} // namespace daywyn
