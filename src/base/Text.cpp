#include "base/Text.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace daywyn {

namespace {

// ICU's UTF-8 iteration macros use C casts internally.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"

// Byte offset just past the leading white space.
std::size_t leadingWhitespaceEnd(std::string_view text) {
    const auto* s = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<int32_t>(text.size());
    int32_t i = 0;
    while (i < length) {
        int32_t next = i;
        UChar32 c = 0;
        U8_NEXT(s, next, length, c);
        if (c < 0 || !u_isUWhiteSpace(c)) {
            break;
        }
        i = next;
    }
    return static_cast<std::size_t>(i);
}

// Byte offset of the end of the text without its trailing white space.
std::size_t trailingWhitespaceStart(std::string_view text, std::size_t from) {
    const auto* s = reinterpret_cast<const std::uint8_t*>(text.data());
    auto end = static_cast<int32_t>(text.size());
    const auto start = static_cast<int32_t>(from);
    while (end > start) {
        int32_t previous = end;
        UChar32 c = 0;
        U8_PREV(s, start, previous, c);
        if (c < 0 || !u_isUWhiteSpace(c)) {
            break;
        }
        end = previous;
    }
    return static_cast<std::size_t>(end);
}

#pragma GCC diagnostic pop

} // namespace

std::string trimWhitespace(std::string_view text) {
    const std::size_t begin = leadingWhitespaceEnd(text);
    const std::size_t end = trailingWhitespaceStart(text, begin);
    return std::string(text.substr(begin, end - begin));
}

bool isBlank(std::string_view text) {
    return leadingWhitespaceEnd(text) == text.size();
}

} // namespace daywyn
