#pragma once

// Reading JSON documents with simdjson's On-Demand API: values are decoded straight
// from the text as they are met, without building a tree first. Included only by the
// .cpp files that decode documents, since simdjson.h is large.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <optional>
#include <simdjson.h>
#include <string>
#include <string_view>
#include <vector>

#include "base/Json.h"
#include "base/Result.h"

namespace daywyn {

using JsonValue = simdjson::ondemand::value;

class JsonDecoder;

// The parser that walks a document. simdjson indexes the whole text before reading it
// (about four bytes per byte of text) in memory the parser holds until it goes; one
// parser may read several documents in turn and reuses that memory.
struct JsonParser {
    simdjson::ondemand::parser parser;
};

// The text of one document with the zeroed tail simdjson reads past the end, and the
// parser walking it. Texts whose buffer already has room for the tail are not copied.
class JsonInput {
public:
    explicit JsonInput(std::string_view text);
    // Text already followed by the tail: `readable` bytes from `data` may be read; read
    // with the given parser.
    JsonInput(const char* data, std::size_t size, std::size_t readable, JsonParser& parser);

    JsonInput(const JsonInput&) = delete;
    JsonInput& operator=(const JsonInput&) = delete;

    // The document's length in bytes.
    std::size_t size() const { return view_.length(); }

    // Starts reading the document (again from its start when called again); false,
    // with the syntax error in the decoder, when the text cannot be read at all.
    bool iterate(JsonDecoder& d, simdjson::ondemand::document& document);

private:
    simdjson::padded_string copy_;
    simdjson::padded_string_view view_;
    JsonParser own_;
    simdjson::ondemand::parser* parser_ = &own_.parser;
};

// "Invalid JSON: <reason>".
std::string jsonSyntaxError(simdjson::error_code error);

// One decoding run: the first problem found, as a sentence. A problem of the text
// itself (a syntax error) is kept apart from a value of the wrong type or form, so
// that a caller can tell a broken file from one in another format.
class JsonDecoder {
public:
    explicit JsonDecoder(DateCoding coding = DateCoding::iso8601)
        : dates(coding) {}

    const DateCoding dates;

    // Notes the outcome of a read: true on success; a syntax error is remembered.
    // As check(), but any failure is a fault of the text.
    bool checkSyntax(simdjson::error_code error) {
        return check(error == simdjson::INCORRECT_TYPE ? simdjson::TAPE_ERROR : error);
    }
    bool check(simdjson::error_code error) {
        if (error == simdjson::SUCCESS) {
            return true;
        }
        if (error != simdjson::INCORRECT_TYPE && syntax_.empty()) {
            syntax_ = jsonSyntaxError(error);
        }
        return false;
    }
    bool fail(std::string message) {
        if (problem_.empty()) {
            problem_ = std::move(message);
        }
        return false;
    }
    // Puts a lead before the error ("Task 3: "), to say where it was found.
    void prefixError(const std::string& lead) {
        (syntax_.empty() ? problem_ : syntax_).insert(0, lead);
    }
    bool hasSyntaxError() const { return !syntax_.empty(); }
    // The syntax error when there is one, else the first problem.
    const std::string& error() const { return syntax_.empty() ? problem_ : syntax_; }
    const std::string& problem() const { return problem_; }

private:
    std::string syntax_;
    std::string problem_;
};

// Typed readers of one value: false when it has another type or form (the value is
// left unread) or on a syntax error. Integers must be written as integers (25.5 and
// 25.0 are not); a double is any number a double can hold.
bool readJson(JsonDecoder& d, JsonValue& v, std::string& out);
bool readJson(JsonDecoder& d, JsonValue& v, Uuid& out);
bool readJson(JsonDecoder& d, JsonValue& v, Instant& out);
bool readJson(JsonDecoder& d, JsonValue& v, bool& out);
bool readJson(JsonDecoder& d, JsonValue& v, long long& out);
bool readJson(JsonDecoder& d, JsonValue& v, long& out);
bool readJson(JsonDecoder& d, JsonValue& v, int& out);
bool readJson(JsonDecoder& d, JsonValue& v, double& out);
// A text read through its own parser; the view is valid until the next read.
bool readJsonText(JsonDecoder& d, JsonValue& v, std::string_view& out);
// True (and the null consumed) when the value is null.
bool readJsonNull(JsonDecoder& d, JsonValue& v);

// Walks a value of any type, checking the syntax of everything in it (a value read
// past without a look could hide a fault). Deeper than kMaxJsonDepth is refused: well
// within the parser's own limit of 1024 levels, counted from the document's root.
inline constexpr int kMaxJsonDepth = 512;
bool skipJson(JsonDecoder& d, JsonValue& v, int depth = 0);

// True when nothing but whitespace follows the document's root value.
bool jsonAtEnd(simdjson::ondemand::document& document);

// Arrays: each element handed to readElement(JsonValue&); false on the first element
// it refuses or on a syntax error.
template <typename ReadElement>
bool readJsonElements(JsonDecoder& d, simdjson::ondemand::array& array, ReadElement&& readElement) {
    for (auto element : array) {
        JsonValue value;
        if (!d.check(std::move(element).get(value)) || !readElement(value)) {
            return false;
        }
    }
    return true;
}

template <typename ReadElement>
bool readJsonArray(JsonDecoder& d, JsonValue& v, ReadElement&& readElement) {
    simdjson::ondemand::array array;
    return d.check(v.get_array().get(array)) &&
           readJsonElements(d, array, std::forward<ReadElement>(readElement));
}

// The offset of the first '"' or '\\' in the `size` bytes at `p` (`size` when there
// is none), eight bytes at a time. The text of a document that was read (iterate())
// is followed by a zeroed tail of at least SIMDJSON_PADDING bytes, and every string in
// it is closed, so the reads of the last word past a string's end stay within it.
inline std::size_t jsonQuoteOrBackslash(const char* p, std::size_t size) {
    constexpr std::uint64_t ones = 0x0101010101010101u;
    constexpr std::uint64_t highs = 0x8080808080808080u;
    for (std::size_t at = 0; at < size; at += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, p + at, sizeof word);
        const std::uint64_t quote = word ^ (ones * '"');
        const std::uint64_t backslash = word ^ (ones * '\\');
        // A byte of zero in either marks a match; bytes above the first match may be
        // marked falsely, so only the lowest mark counts.
        const std::uint64_t found =
            ((quote - ones) & ~quote & highs) | ((backslash - ones) & ~backslash & highs);
        if (found != 0) {
            return std::min(at + static_cast<std::size_t>(std::countr_zero(found)) / 8, size);
        }
    }
    return size;
}

// A member's name. Names without escapes (nearly all) are taken from the text in place
// rather than copied out.
inline bool readJsonKey(JsonDecoder& d, simdjson::ondemand::field& field, std::string_view& key) {
    // The name is a closed string, so its quote is found before the end of the text.
    const char* start = field.key().raw();
    const std::size_t length = jsonQuoteOrBackslash(start, SIZE_MAX);
    if (start[length] == '"') {
        key = std::string_view(start, length);
        return true;
    }
    return d.check(field.unescaped_key().get(key));
}

// Objects: each member handed to readMember(key, JsonValue&) in the order written.
template <typename ReadMember>
bool readJsonObject(JsonDecoder& d, JsonValue& v, ReadMember&& readMember) {
    simdjson::ondemand::object object;
    if (!d.check(v.get_object().get(object))) {
        return false;
    }
    for (auto member : object) {
        simdjson::ondemand::field field;
        std::string_view key;
        if (!d.check(std::move(member).get(field)) || !readJsonKey(d, field, key)) {
            return false;
        }
        JsonValue value = field.value();
        if (!readMember(key, value)) {
            return false;
        }
    }
    return true;
}

} // namespace daywyn
