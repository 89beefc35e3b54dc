#include "base/JsonReader.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace daywyn {

namespace {

// Whether a number out of a double's range is out of it at the small end: the power of
// ten of its first significant digit, exponent included, is negative.
bool tooSmallForADouble(std::string_view text) {
    std::size_t i = text.front() == '-' ? 1 : 0;
    const std::size_t integerStart = i;
    while (i < text.size() && json_detail::isDigit(text[i])) {
        ++i;
    }
    const std::size_t integerEnd = i;
    const std::size_t firstNonZero = text.find_first_not_of('0', integerStart);
    long long power = 0;
    if (firstNonZero < integerEnd) {
        power = static_cast<long long>(integerEnd - firstNonZero) - 1;
    }
    if (i < text.size() && text[i] == '.') {
        long long position = 0;
        for (++i; i < text.size() && json_detail::isDigit(text[i]); ++i) {
            ++position;
            if (firstNonZero >= integerEnd && power == 0 && text[i] != '0') {
                power = -position;
            }
        }
    }
    long long exponent = 0;
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        const bool negative = i + 1 < text.size() && text[i + 1] == '-';
        for (++i; i < text.size(); ++i) {
            if (json_detail::isDigit(text[i])) {
                exponent = std::min(exponent * 10 + (text[i] - '0'), 1'000'000'000LL);
            }
        }
        exponent = negative ? -exponent : exponent;
    }
    return power + exponent < 0;
}

} // namespace

JsonNumber jsonNumberValue(std::string_view text) {
    JsonNumber number;
    const char* begin = text.data();
    const char* end = begin + text.size();
    if (text.find_first_of(".eE") == std::string_view::npos) {
        if (auto r = std::from_chars(begin, end, number.i); r.ec == std::errc{} && r.ptr == end) {
            number.kind = JsonNumber::Kind::int64;
            return number;
        }
        if (auto r = std::from_chars(begin, end, number.u); r.ec == std::errc{} && r.ptr == end) {
            number.kind = JsonNumber::Kind::uint64;
            return number;
        }
        // Beyond 64 bits: a double, as every JSON reader does.
    }
    const auto r = std::from_chars(begin, end, number.d);
    if (r.ec == std::errc::result_out_of_range) {
        // Too small to represent reads as zero; too large has no value.
        if (!tooSmallForADouble(text)) {
            return number;
        }
        number.d = text.front() == '-' ? -0.0 : 0.0;
    } else if (r.ec != std::errc{} || r.ptr != end) {
        return number;
    }
    number.kind = JsonNumber::Kind::real;
    return number;
}

namespace {

int hexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

void appendUtf8(std::string& out, unsigned codePoint) {
    if (codePoint < 0x80) {
        out.push_back(static_cast<char>(codePoint));
    } else if (codePoint < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (codePoint >> 6)));
        out.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
    } else if (codePoint < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (codePoint >> 12)));
        out.push_back(static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (codePoint >> 18)));
        out.push_back(static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
    }
}

} // namespace

bool JsonReader::fail(const char* reason) {
    if (!error_) {
        error_ = reason;
        errorOffset_ = offset();
    }
    return false;
}

std::string JsonReader::syntaxError() const {
    if (!error_) {
        return {};
    }
    return "Invalid JSON at byte " + std::to_string(errorOffset_) + ": " + error_ + ".";
}

bool JsonReader::expectLiteral(std::string_view literal) {
    if (static_cast<std::size_t>(end_ - p_) < literal.size() ||
        std::memcmp(p_, literal.data(), literal.size()) != 0) {
        return fail("invalid literal");
    }
    p_ += literal.size();
    return true;
}

std::optional<bool> JsonReader::readBool() {
    skipWhitespace();
    if (error_ || p_ == end_) {
        return std::nullopt;
    }
    if (*p_ == 't') {
        return expectLiteral("true") ? std::optional<bool>(true) : std::nullopt;
    }
    if (*p_ == 'f') {
        return expectLiteral("false") ? std::optional<bool>(false) : std::nullopt;
    }
    return std::nullopt;
}

namespace {

// Length of the UTF-8 sequence at p when it is well formed (no overlong forms,
// surrogates or code points above U+10FFFF), else 0.
int utf8SequenceLength(const unsigned char* p, const unsigned char* end) {
    const unsigned char c = *p;
    int length;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (c >= 0xC2 && c <= 0xDF) {
        length = 2;
    } else if (c >= 0xE0 && c <= 0xEF) {
        length = 3;
        low = c == 0xE0 ? 0xA0 : 0x80;
        high = c == 0xED ? 0x9F : 0xBF;
    } else if (c >= 0xF0 && c <= 0xF4) {
        length = 4;
        low = c == 0xF0 ? 0x90 : 0x80;
        high = c == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (end - p < length || p[1] < low || p[1] > high) {
        return 0;
    }
    for (int i = 2; i < length; ++i) {
        if ((p[i] & 0xC0) != 0x80) {
            return 0;
        }
    }
    return length;
}

} // namespace

bool JsonReader::scanStringSlowly(const char* start, std::string_view& text) {
    // Plain text is taken as it stands until the first escape; from there on the
    // string is built in scratch_. `run` is where the text not yet copied begins.
    bool unescaping = false;
    const char* run = start;
    while (true) {
        if (p_ == end_) {
            return fail("the text ends inside a string");
        }
        const auto c = static_cast<unsigned char>(*p_);
        if (c == '"') {
            if (unescaping) {
                scratch_.append(run, p_);
                text = scratch_;
            } else {
                text = std::string_view(start, static_cast<std::size_t>(p_ - start));
            }
            ++p_;
            return true;
        }
        if (c >= 0x80) {
            const int length = utf8SequenceLength(reinterpret_cast<const unsigned char*>(p_),
                                                  reinterpret_cast<const unsigned char*>(end_));
            if (length == 0) {
                return fail("a string is not valid UTF-8");
            }
            p_ += length;
            p_ = json_detail::findStringSpecial(p_, end_);
            continue;
        }
        if (c != '\\') {
            return fail("a control character must be escaped inside a string");
        }
        if (unescaping) {
            scratch_.append(run, p_);
        } else {
            scratch_.assign(start, p_);
            unescaping = true;
        }
        if (end_ - p_ < 2) {
            return fail("the text ends inside a string");
        }
        const char escape = p_[1];
        p_ += 2;
        switch (escape) {
        case '"':
        case '\\':
        case '/':
            scratch_.push_back(escape);
            break;
        case 'b':
            scratch_.push_back('\b');
            break;
        case 'f':
            scratch_.push_back('\f');
            break;
        case 'n':
            scratch_.push_back('\n');
            break;
        case 'r':
            scratch_.push_back('\r');
            break;
        case 't':
            scratch_.push_back('\t');
            break;
        case 'u': {
            auto hex4 = [this](unsigned& value) {
                if (end_ - p_ < 4) {
                    return false;
                }
                value = 0;
                for (int i = 0; i < 4; ++i) {
                    const int digit = hexValue(p_[i]);
                    if (digit < 0) {
                        return false;
                    }
                    value = value * 16 + static_cast<unsigned>(digit);
                }
                p_ += 4;
                return true;
            };
            unsigned codePoint = 0;
            if (!hex4(codePoint)) {
                return fail("\\u must be followed by four hexadecimal digits");
            }
            if (codePoint >= 0xD800 && codePoint <= 0xDBFF) {
                unsigned low = 0;
                if (end_ - p_ < 2 || p_[0] != '\\' || p_[1] != 'u') {
                    return fail("a high surrogate must be followed by a low one");
                }
                p_ += 2;
                if (!hex4(low) || low < 0xDC00 || low > 0xDFFF) {
                    return fail("a high surrogate must be followed by a low one");
                }
                codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (low - 0xDC00);
            } else if (codePoint >= 0xDC00 && codePoint <= 0xDFFF) {
                return fail("a low surrogate must follow a high one");
            }
            appendUtf8(scratch_, codePoint);
            break;
        }
        default:
            return fail("invalid escape in a string");
        }
        run = p_;
        p_ = json_detail::findStringSpecial(p_, end_);
    }
}

std::optional<std::string> JsonReader::readString() {
    auto text = readStringView();
    if (!text) {
        return std::nullopt;
    }
    return std::string(*text);
}

bool JsonReader::scanNumber(std::string_view& text, bool& integral) {
    const char* start = p_;
    integral = true;
    const char* p = p_;
    if (p < end_ && *p == '-') {
        ++p;
    }
    if (p == end_ || !json_detail::isDigit(*p)) {
        return fail("a number needs a digit");
    }
    if (*p == '0') {
        ++p;
    } else {
        while (p < end_ && json_detail::isDigit(*p)) {
            ++p;
        }
    }
    if (p < end_ && *p == '.') {
        integral = false;
        ++p;
        if (p == end_ || !json_detail::isDigit(*p)) {
            return fail("a decimal point must be followed by a digit");
        }
        while (p < end_ && json_detail::isDigit(*p)) {
            ++p;
        }
    }
    if (p < end_ && (*p == 'e' || *p == 'E')) {
        integral = false;
        ++p;
        if (p < end_ && (*p == '+' || *p == '-')) {
            ++p;
        }
        if (p == end_ || !json_detail::isDigit(*p)) {
            return fail("an exponent needs a digit");
        }
        while (p < end_ && json_detail::isDigit(*p)) {
            ++p;
        }
    }
    text = std::string_view(start, static_cast<std::size_t>(p - start));
    p_ = p;
    return true;
}

std::optional<std::int64_t> JsonReader::readInt64Slowly() {
    if (error_ || p_ == end_ || (*p_ != '-' && !json_detail::isDigit(*p_))) {
        return std::nullopt;
    }
    const char* start = p_;
    std::string_view text;
    if (bool integral = false; !scanNumber(text, integral)) {
        return std::nullopt;
    }
    const JsonNumber number = jsonNumberValue(text);
    if (number.kind != JsonNumber::Kind::int64) {
        p_ = start;
        return std::nullopt;
    }
    return number.i;
}

std::optional<double> JsonReader::readDouble() {
    skipWhitespace();
    if (error_ || p_ == end_ || (*p_ != '-' && !json_detail::isDigit(*p_))) {
        return std::nullopt;
    }
    const char* start = p_;
    std::string_view text;
    if (bool integral = false; !scanNumber(text, integral)) {
        return std::nullopt;
    }
    const JsonNumber number = jsonNumberValue(text);
    switch (number.kind) {
    case JsonNumber::Kind::int64:
        return static_cast<double>(number.i);
    case JsonNumber::Kind::uint64:
        return static_cast<double>(number.u);
    case JsonNumber::Kind::real:
        return number.d;
    case JsonNumber::Kind::outOfRange:
        break;
    }
    p_ = start;
    return std::nullopt;
}

bool JsonReader::skipValue() {
    // Iterative, so that no nesting depth can exhaust the stack: one byte per open
    // container says which closing bracket it needs.
    std::string open;
    std::string_view ignored;
    while (true) {
        skipWhitespace();
        if (error_) {
            return false;
        }
        if (p_ == end_) {
            return fail("a value is missing");
        }
        // One value, or the opening of a container.
        switch (*p_) {
        case '{':
            ++p_;
            skipWhitespace();
            if (p_ < end_ && *p_ == '}') {
                ++p_;
                break;
            }
            open.push_back('}');
            if (!readMemberName(ignored)) {
                return false;
            }
            continue;
        case '[':
            ++p_;
            skipWhitespace();
            if (p_ < end_ && *p_ == ']') {
                ++p_;
                break;
            }
            open.push_back(']');
            continue;
        case '"':
            ++p_;
            if (!scanString(ignored)) {
                return false;
            }
            break;
        case 't':
            if (!expectLiteral("true")) {
                return false;
            }
            break;
        case 'f':
            if (!expectLiteral("false")) {
                return false;
            }
            break;
        case 'n':
            if (!expectLiteral("null")) {
                return false;
            }
            break;
        default:
            if (*p_ != '-' && !json_detail::isDigit(*p_)) {
                return fail("unexpected character where a value should be");
            }
            if (bool integral = false; !scanNumber(ignored, integral)) {
                return false;
            }
            break;
        }
        // A value is complete: close every container it completes.
        while (true) {
            if (open.empty()) {
                first_ = false;
                return true;
            }
            skipWhitespace();
            if (p_ == end_) {
                return fail("the text ends inside a container");
            }
            if (*p_ == open.back()) {
                ++p_;
                open.pop_back();
                continue;
            }
            if (*p_ != ',') {
                return fail(open.back() == '}' ? "expected ',' or '}' after a member"
                                               : "expected ',' or ']' after an element");
            }
            ++p_;
            if (open.back() == '}' && !readMemberName(ignored)) {
                return false;
            }
            break;
        }
    }
}

bool JsonReader::atEnd() {
    skipWhitespace();
    if (error_) {
        return false;
    }
    return p_ == end_ || fail("unexpected text after the document");
}

} // namespace daywyn
