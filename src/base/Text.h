#pragma once

#include <string>
#include <string_view>

namespace daywyn {

// Unicode-aware helpers for UTF-8 text (ICU underneath). Invalid UTF-8 bytes are
// never treated as white space.

// Removes white space and line breaks (Unicode White_Space) from both ends.
std::string trimWhitespace(std::string_view text);

// True when the text is empty after trimWhitespace.
bool isBlank(std::string_view text);

} // namespace daywyn
