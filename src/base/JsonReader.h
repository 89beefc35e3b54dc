#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace daywyn {

// The value of a JSON number, from text that is already known to be one: integers
// that fit 64 bits stay integers, anything else is the nearest double. Numbers too
// small to represent read as zero; too large ones have no value.
struct JsonNumber {
    enum class Kind { int64, uint64, real, outOfRange };
    Kind kind = Kind::outOfRange;
    std::int64_t i = 0;
    std::uint64_t u = 0;
    double d = 0.0;
};
JsonNumber jsonNumberValue(std::string_view text);

// A member name made ready to be recognised in one step: the name and its closing
// quote, as the bytes to compare and the mask of the ones that count.
struct JsonName {
    std::string_view text;
    alignas(16) char pattern[32] = {};
    std::uint32_t significant = 0;

    constexpr JsonName() = default;
    constexpr JsonName(std::string_view name)
        : text(name) {
        if (name.size() < sizeof pattern) {
            for (std::size_t i = 0; i < name.size(); ++i) {
                pattern[i] = name[i];
            }
            pattern[name.size()] = '"';
            significant = name.size() + 1 == 32 ? ~0u : (1u << (name.size() + 1)) - 1;
        }
    }
};

// The member names of one kind of record.
template <std::size_t N>
struct JsonKeys {
    static_assert(N <= 32, "one bit per member");
    std::array<JsonName, N> names;

    constexpr JsonKeys(const std::array<std::string_view, N>& list) {
        for (std::size_t i = 0; i < N; ++i) {
            names[i] = JsonName(list[i]);
        }
    }
};

// A forward-only reader of one JSON document in memory, for decoding records straight
// from the text without building a tree first: loading the state file is the one
// thing every start of Daywyn waits for, and a tree of a 6 MB file costs more than
// the records themselves.
//
// Syntax and UTF-8 are checked as the reader goes (RFC 8259). The first syntax error sticks: every
// later read fails, and syntaxError() names the byte. A read that finds a value of another type
// fails without a syntax error and leaves the reader at that value, so a decoder that gives up on a
// record can rewind() to where it started and skipValue() instead.
class JsonReader {
public:
    explicit JsonReader(std::string_view text)
        : begin_(text.data())
        , p_(text.data())
        , end_(text.data() + text.size()) {}

    // An object: beginObject() enters it (false when the next value is not one);
    // nextKey() then gives each key and leaves the reader at that key's value, which
    // must be read or skipped before the next call. It returns false after the
    // closing brace, or on a syntax error.
    bool beginObject();
    bool nextKey(std::string_view& key);
    // nextKey() for records: the index among `names` of the next member's name, or
    // kUnknownMember, or kNoMoreMembers after the closing brace (or on a syntax error).
    // Records are written with sorted keys, so names[hint] is tried first and its
    // bytes are compared in place.
    static constexpr int kUnknownMember = -1;
    static constexpr int kNoMoreMembers = -2;
    int nextMember(const JsonName* names, std::size_t count, std::size_t hint);
    // An array: beginArray(), then nextElement() before each element.
    bool beginArray();
    bool nextElement();

    // Consumes a null; false (nothing consumed) when the next value is something else.
    bool readNull();
    std::optional<bool> readBool();
    // A string's text, valid until the next read.
    std::optional<std::string_view> readStringView();
    std::optional<std::string> readString();
    // A string of a fixed form read through parse (a date, an identifier). The text of
    // `length` bytes is tried in place first; parse must refuse any text holding a
    // quote, a backslash, a control character or a byte beyond ASCII, so that a
    // parsed text is sure to be the whole string, unescaped.
    template <typename Parse>
    auto readStringAs(std::size_t length, Parse parse) -> decltype(parse(std::string_view{}));
    // Integers must be written as integers (no fraction, no exponent) and fit 64 bits.
    std::optional<std::int64_t> readInt64();
    // Any number a double can hold (one too large to be a double has another type).
    std::optional<double> readDouble();

    // Skips one value of any type and depth, checking its syntax.
    bool skipValue();
    // True when only whitespace follows the root value.
    bool atEnd();

    bool hasSyntaxError() const { return error_ != nullptr; }
    // "Invalid JSON at byte N: reason", or empty.
    std::string syntaxError() const;

    std::size_t offset() const { return static_cast<std::size_t>(p_ - begin_); }
    // The offset of the next value, past any whitespace.
    std::size_t nextValueOffset() {
        skipWhitespace();
        return offset();
    }
    // The whole document.
    std::string_view text() const {
        return std::string_view(begin_, static_cast<std::size_t>(end_ - begin_));
    }
    // Goes back to an earlier offset; a syntax error is kept.
    void rewind(std::size_t offset) { p_ = begin_ + offset; }

private:
    void skipWhitespace();
    bool fail(const char* reason);
    // After the opening quote: the string's text, unescaped into scratch_ if needed.
    bool scanString(std::string_view& text);
    // The rest of a string whose plain run from `start` stopped at p_ on an escape, a
    // byte beyond ASCII or a control character.
    bool scanStringSlowly(const char* start, std::string_view& text);
    // The extent of a number at p_, syntax checked; integral when it has neither a
    // fraction nor an exponent.
    bool scanNumber(std::string_view& text, bool& integral);
    // A member's name and the colon after it.
    bool readMemberName(std::string_view& name);
    // Past the comma (if any) and the opening quote of the next member's name; false
    // after the closing brace, or on a syntax error.
    bool enterNextMember();
    bool openMemberName();
    bool expectColon();
    std::optional<std::int64_t> readInt64Slowly();
    // At the character after a name's opening quote: true, past the closing quote,
    // when the name is there.
    bool matchName(const JsonName& name);
    bool expectLiteral(std::string_view literal);

    const char* begin_;
    const char* p_;
    const char* end_;
    const char* error_ = nullptr;
    std::size_t errorOffset_ = 0;
    // True right after '{' or '[': the next thing may close the container at once.
    bool first_ = false;
    std::string scratch_;
};

// The hot paths are inline: a state file holds a few hundred thousand small values,
// and a call per value would cost as much as reading it.
namespace json_detail {

// The first quote, backslash, control character or byte beyond ASCII at or after p:
// where a string's plain run ends. Sixteen bytes are looked at in one step where the
// processor allows.
[[gnu::always_inline]] inline const char* findStringSpecial(const char* p, const char* end) {
#if defined(__SSE2__)
    const __m128i quote = _mm_set1_epi8('"');
    const __m128i backslash = _mm_set1_epi8('\\');
    const __m128i highestControl = _mm_set1_epi8(0x1F);
    while (end - p >= 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i special =
            _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, quote), _mm_cmpeq_epi8(v, backslash)),
                         _mm_cmpeq_epi8(_mm_min_epu8(v, highestControl), v));
        // The sign bits mark the bytes beyond ASCII.
        const int mask = _mm_movemask_epi8(special) | _mm_movemask_epi8(v);
        if (mask != 0) {
            return p + __builtin_ctz(static_cast<unsigned>(mask));
        }
        p += 16;
    }
#endif
    while (p < end) {
        const auto c = static_cast<unsigned char>(*p);
        if (c == '"' || c == '\\' || c < 0x20 || c >= 0x80) {
            break;
        }
        ++p;
    }
    return p;
}

inline bool isWhitespace(char c) {
    return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

inline bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// True when the name and its closing quote are the bytes at p.
[[gnu::always_inline]] inline bool namedAt(const JsonName& name, const char* p, const char* end) {
#if defined(__SSE2__)
    if (name.significant != 0 && end - p >= 32) {
        const auto* pattern = reinterpret_cast<const __m128i*>(name.pattern);
        const auto* text = reinterpret_cast<const __m128i*>(p);
        auto same = static_cast<std::uint32_t>(
            _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_loadu_si128(text), _mm_load_si128(pattern))));
        if (name.significant > 0xFFFFu) {
            same |= static_cast<std::uint32_t>(_mm_movemask_epi8(
                        _mm_cmpeq_epi8(_mm_loadu_si128(text + 1), _mm_load_si128(pattern + 1))))
                    << 16;
        }
        return (same & name.significant) == name.significant;
    }
#endif
    const std::size_t size = name.text.size();
    return static_cast<std::size_t>(end - p) > size && p[size] == '"' &&
           std::memcmp(p, name.text.data(), size) == 0;
}

} // namespace json_detail

[[gnu::always_inline]] inline void JsonReader::skipWhitespace() {
    // Most values follow ": " or sit after a newline and an indent.
    const char* p = p_;
    if (p<end_&& static_cast<unsigned char>(*p)> ' ') {
        return;
    }
    if (p < end_ && *p == ' ') {
        ++p;
        if (p<end_&& static_cast<unsigned char>(*p)> ' ') {
            p_ = p;
            return;
        }
    }
#if defined(__SSE2__)
    while (end_ - p >= 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i blank = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, _mm_set1_epi8(' ')),
                                                        _mm_cmpeq_epi8(v, _mm_set1_epi8('\n'))),
                                           _mm_or_si128(_mm_cmpeq_epi8(v, _mm_set1_epi8('\t')),
                                                        _mm_cmpeq_epi8(v, _mm_set1_epi8('\r'))));
        const unsigned notBlank = ~static_cast<unsigned>(_mm_movemask_epi8(blank)) & 0xFFFFu;
        if (notBlank != 0) {
            p_ = p + __builtin_ctz(notBlank);
            return;
        }
        p += 16;
    }
#endif
    while (p < end_ && json_detail::isWhitespace(*p)) {
        ++p;
    }
    p_ = p;
}

[[gnu::always_inline]] inline bool JsonReader::scanString(std::string_view& text) {
    const char* start = p_;
    p_ = json_detail::findStringSpecial(p_, end_);
    if (p_ < end_ && *p_ == '"') {
        text = std::string_view(start, static_cast<std::size_t>(p_ - start));
        ++p_;
        return true;
    }
    return scanStringSlowly(start, text);
}

[[gnu::always_inline]] inline bool JsonReader::openMemberName() {
    skipWhitespace();
    if (p_ == end_ || *p_ != '"') {
        return fail("expected a member name in quotes");
    }
    ++p_;
    return true;
}

[[gnu::always_inline]] inline bool JsonReader::expectColon() {
    if (p_ < end_ && *p_ == ':') {
        ++p_;
        return true;
    }
    skipWhitespace();
    if (p_ == end_ || *p_ != ':') {
        return fail("expected ':' after a member name");
    }
    ++p_;
    return true;
}

[[gnu::always_inline]] inline bool JsonReader::readMemberName(std::string_view& name) {
    return openMemberName() && scanString(name) && expectColon();
}

[[gnu::always_inline]] inline bool JsonReader::enterNextMember() {
    if (error_) {
        return false;
    }
    skipWhitespace();
    if (p_ == end_) {
        return fail("the text ends inside an object");
    }
    if (*p_ == '}') {
        ++p_;
        first_ = false;
        return false;
    }
    if (first_) {
        first_ = false;
    } else {
        if (*p_ != ',') {
            return fail("expected ',' or '}' after a member");
        }
        ++p_;
    }
    return openMemberName();
}

[[gnu::always_inline]] inline bool JsonReader::beginObject() {
    skipWhitespace();
    if (error_ || p_ == end_ || *p_ != '{') {
        return false;
    }
    ++p_;
    first_ = true;
    return true;
}

[[gnu::always_inline]] inline bool JsonReader::nextKey(std::string_view& key) {
    return enterNextMember() && scanString(key) && expectColon();
}

[[gnu::always_inline]] inline bool JsonReader::beginArray() {
    skipWhitespace();
    if (error_ || p_ == end_ || *p_ != '[') {
        return false;
    }
    ++p_;
    first_ = true;
    return true;
}

[[gnu::always_inline]] inline bool JsonReader::nextElement() {
    if (error_) {
        return false;
    }
    skipWhitespace();
    if (p_ == end_) {
        return fail("the text ends inside an array");
    }
    if (*p_ == ']') {
        ++p_;
        first_ = false;
        return false;
    }
    if (first_) {
        first_ = false;
        return true;
    }
    if (*p_ != ',') {
        return fail("expected ',' or ']' after an element");
    }
    ++p_;
    return true;
}

[[gnu::always_inline]] inline bool JsonReader::readNull() {
    skipWhitespace();
    return !error_ && p_ < end_ && *p_ == 'n' && expectLiteral("null");
}

[[gnu::always_inline]] inline std::optional<std::string_view> JsonReader::readStringView() {
    skipWhitespace();
    if (error_ || p_ == end_ || *p_ != '"') {
        return std::nullopt;
    }
    ++p_;
    std::string_view text;
    if (!scanString(text)) {
        return std::nullopt;
    }
    return text;
}

[[gnu::always_inline]] inline bool JsonReader::matchName(const JsonName& name) {
    if (!json_detail::namedAt(name, p_, end_)) {
        return false;
    }
    p_ += name.text.size() + 1;
    return true;
}

inline int JsonReader::nextMember(const JsonName* names, std::size_t count, std::size_t hint) {
    if (!enterNextMember()) {
        return kNoMoreMembers;
    }
    int index = kUnknownMember;
    if (hint < count && matchName(names[hint])) {
        index = static_cast<int>(hint);
    } else {
        // Usually a later name (an optional member before it was absent): compared in
        // place, each name of the same length, in order from the hint.
        const char* start = p_;
        std::string_view name;
        if (!scanString(name)) {
            return kNoMoreMembers;
        }
        const bool plain = name.data() == start;
        for (std::size_t n = 0; n < count; ++n) {
            const std::size_t i = hint + n < count ? hint + n : hint + n - count;
            if (names[i].text.size() == name.size() &&
                (plain ? json_detail::namedAt(names[i], start, end_) : names[i].text == name)) {
                index = static_cast<int>(i);
                break;
            }
        }
    }
    return expectColon() ? index : kNoMoreMembers;
}

template <typename Parse>
[[gnu::always_inline]] inline auto JsonReader::readStringAs(std::size_t length, Parse parse)
    -> decltype(parse(std::string_view{})) {
    skipWhitespace();
    if (!error_ && static_cast<std::size_t>(end_ - p_) >= length + 2 && *p_ == '"' &&
        p_[length + 1] == '"') {
        if (auto value = parse(std::string_view(p_ + 1, length))) {
            p_ += length + 2;
            return value;
        }
    }
    const auto text = readStringView();
    if (!text) {
        return decltype(parse(std::string_view{})){};
    }
    return parse(*text);
}

[[gnu::always_inline]] inline std::optional<std::int64_t> JsonReader::readInt64() {
    skipWhitespace();
    // Short plain integers, nearly all of them, directly.
    const char* p = p_;
    const bool negative = p < end_ && *p == '-';
    p += negative ? 1 : 0;
    const char* digits = p;
    std::int64_t value = 0;
    while (p < end_ && json_detail::isDigit(*p) && p - digits < 18) {
        value = value * 10 + (*p - '0');
        ++p;
    }
    const auto count = p - digits;
    if (!error_ && count > 0 && (count == 1 || *digits != '0') &&
        (p == end_ || (!json_detail::isDigit(*p) && *p != '.' && *p != 'e' && *p != 'E'))) {
        p_ = p;
        return negative ? -value : value;
    }
    return readInt64Slowly();
}

struct JsonObjectRead {
    enum class Outcome { read, notAnObject, invalidMember, syntaxError };
    Outcome outcome = Outcome::read;
    // One bit per member of the keys that was present.
    std::uint32_t present = 0;
    // The member whose value was not valid.
    int invalid = -1;

    bool ok() const { return outcome == Outcome::read; }
    // The first of the members in `required` that was not present, or -1.
    int firstMissing(std::uint32_t required) const {
        const std::uint32_t missing = required & ~present;
        return missing == 0 ? -1 : __builtin_ctz(missing);
    }
};

// Reads one object: member(index) reads the value of a known member and returns
// false when that value is not valid. When a name repeats, the first member counts
// and the later ones are skipped; unknown members are skipped.
template <std::size_t N, typename Member>
JsonObjectRead readJsonObject(JsonReader& reader, const JsonKeys<N>& keys, Member&& member) {
    JsonObjectRead result;
    if (!reader.beginObject()) {
        result.outcome = reader.hasSyntaxError() ? JsonObjectRead::Outcome::syntaxError
                                                 : JsonObjectRead::Outcome::notAnObject;
        return result;
    }
    std::size_t hint = 0;
    while (true) {
        const int index = reader.nextMember(keys.names.data(), N, hint);
        if (index == JsonReader::kNoMoreMembers) {
            break;
        }
        const std::uint32_t bit = index < 0 ? 0 : 1u << index;
        if (index < 0 || (result.present & bit) != 0) {
            if (!reader.skipValue()) {
                break;
            }
            continue;
        }
        result.present |= bit;
        hint = static_cast<std::size_t>(index) + 1;
        if (!member(index)) {
            if (!reader.hasSyntaxError()) {
                result.outcome = JsonObjectRead::Outcome::invalidMember;
                result.invalid = index;
                return result;
            }
            break;
        }
    }
    if (reader.hasSyntaxError()) {
        result.outcome = JsonObjectRead::Outcome::syntaxError;
    }
    return result;
}

} // namespace daywyn
