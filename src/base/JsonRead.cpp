#include "base/JsonRead.h"

#include <climits>

namespace daywyn {

JsonInput::JsonInput(std::string_view text)
    : copy_(text.data(), text.size())
    , view_(copy_) {}

JsonInput::JsonInput(const char* data, std::size_t size, std::size_t readable, JsonParser& parser)
    : parser_(&parser.parser) {
    if (readable - size >= simdjson::SIMDJSON_PADDING) {
        view_ = simdjson::padded_string_view(data, size, readable);
    } else {
        copy_ = simdjson::padded_string(data, size);
        view_ = simdjson::padded_string_view(copy_);
    }
}

bool JsonInput::iterate(JsonDecoder& d, simdjson::ondemand::document& document) {
    return d.checkSyntax(parser_->iterate(view_).get(document));
}

std::string jsonSyntaxError(simdjson::error_code error) {
    return std::string("Invalid JSON: ") + simdjson::error_message(error);
}

namespace {

// Steps over a string value whose text was taken where it stands.
bool stepOverString(JsonDecoder& d, JsonValue& v) {
    simdjson::ondemand::raw_json_string raw;
    return d.check(v.get_raw_json_string().get(raw));
}

// The text of a string value that must be exactly `length` characters of a fixed form
// (identifiers, dates): the characters between the quotes, checked by `parse`, which
// refuses a backslash. A string written with escapes is read the slow way.
template <typename Parse>
auto readFixedText(JsonDecoder& d, JsonValue& v, std::size_t length, Parse parse)
    -> decltype(parse(std::string_view())) {
    const std::string_view token = v.raw_json_token();
    if (token.size() >= length + 2 && token.front() == '"' && token[length + 1] == '"') {
        if (auto value = parse(token.substr(1, length)); value && stepOverString(d, v)) {
            return value;
        }
    }
    std::string_view text;
    if (!readJsonText(d, v, text)) {
        return std::nullopt;
    }
    return parse(text);
}

} // namespace

bool readJsonText(JsonDecoder& d, JsonValue& v, std::string_view& out) {
    // A string without escapes (identifiers, dates, nearly every title) is its own text:
    // taken where it stands instead of being copied out. No structural character falls
    // inside a string, so the value's token starts with its opening quote.
    const std::string_view token = v.raw_json_token();
    if (!token.empty() && token.front() == '"') {
        const std::size_t end = 1 + jsonQuoteOrBackslash(token.data() + 1, token.size() - 1);
        if (end < token.size() && token[end] == '"') {
            if (!stepOverString(d, v)) {
                return false;
            }
            out = token.substr(1, end - 1);
            return true;
        }
    }
    return d.check(v.get_string().get(out));
}

bool readJson(JsonDecoder& d, JsonValue& v, std::string& out) {
    std::string_view text;
    if (!readJsonText(d, v, text)) {
        return false;
    }
    out.assign(text);
    return true;
}

bool readJson(JsonDecoder& d, JsonValue& v, Uuid& out) {
    const auto id = readFixedText(d, v, kUuidTextLength, Uuid::parse);
    if (id) {
        out = *id;
    }
    return id.has_value();
}

bool readJson(JsonDecoder& d, JsonValue& v, Instant& out) {
    if (d.dates == DateCoding::iso8601) {
        const auto at = readFixedText(d, v, kIsoTextLength, parseIsoText);
        if (at) {
            out = *at;
        }
        return at.has_value();
    }
    double seconds = 0.0;
    if (!readJson(d, v, seconds)) {
        return false;
    }
    out = Instant{seconds + kReferenceDateOffset};
    return true;
}

bool readJson(JsonDecoder& d, JsonValue& v, bool& out) {
    return d.check(v.get_bool().get(out));
}

bool readJson(JsonDecoder& d, JsonValue& v, long long& out) {
    std::int64_t value = 0;
    if (!d.check(v.get_int64().get(value))) {
        return false;
    }
    out = value;
    return true;
}

bool readJson(JsonDecoder& d, JsonValue& v, long& out) {
    std::int64_t value = 0;
    if (!d.check(v.get_int64().get(value))) {
        return false;
    }
    out = static_cast<long>(value);
    return true;
}

bool readJson(JsonDecoder& d, JsonValue& v, int& out) {
    long long value = 0;
    if (!readJson(d, v, value) || value < INT_MIN || value > INT_MAX) {
        return false;
    }
    out = static_cast<int>(value);
    return true;
}

bool readJson(JsonDecoder& d, JsonValue& v, double& out) {
    // A number too large for a double is a number of another type, not a fault.
    const auto error = v.get_double().get(out);
    if (error == simdjson::NUMBER_ERROR) {
        simdjson::ondemand::json_type type{};
        if (v.type().get(type) == simdjson::SUCCESS &&
            type == simdjson::ondemand::json_type::number) {
            return false;
        }
    }
    return d.check(error);
}

bool readJsonNull(JsonDecoder& d, JsonValue& v) {
    bool isNull = false;
    return d.check(v.is_null().get(isNull)) && isNull;
}

namespace {

// RFC 8259's number: -?(0|[1-9][0-9]*)(\.[0-9]+)?([eE][+-]?[0-9]+)?
bool isJsonNumber(std::string_view t) {
    std::size_t i = 0;
    auto digits = [&] {
        const std::size_t from = i;
        while (i < t.size() && t[i] >= '0' && t[i] <= '9') {
            ++i;
        }
        return i - from;
    };
    if (i < t.size() && t[i] == '-') {
        ++i;
    }
    if (i < t.size() && t[i] == '0') {
        ++i;
    } else if (digits() == 0) {
        return false;
    }
    if (i < t.size() && t[i] == '.') {
        ++i;
        if (digits() == 0) {
            return false;
        }
    }
    if (i < t.size() && (t[i] == 'e' || t[i] == 'E')) {
        ++i;
        if (i < t.size() && (t[i] == '+' || t[i] == '-')) {
            ++i;
        }
        if (digits() == 0) {
            return false;
        }
    }
    return i == t.size();
}

} // namespace

bool skipJson(JsonDecoder& d, JsonValue& v, int depth) {
    simdjson::ondemand::json_type type{};
    if (!d.checkSyntax(v.type().get(type))) {
        return false;
    }
    switch (type) {
    case simdjson::ondemand::json_type::array:
        if (depth >= kMaxJsonDepth) {
            return d.check(simdjson::DEPTH_ERROR);
        }
        return readJsonArray(d, v,
                             [&](JsonValue& element) { return skipJson(d, element, depth + 1); });
    case simdjson::ondemand::json_type::object:
        if (depth >= kMaxJsonDepth) {
            return d.check(simdjson::DEPTH_ERROR);
        }
        return readJsonObject(d, v, [&](std::string_view, JsonValue& member) {
            return skipJson(d, member, depth + 1);
        });
    case simdjson::ondemand::json_type::string: {
        std::string_view text;
        return d.checkSyntax(v.get_string().get(text));
    }
    case simdjson::ondemand::json_type::boolean: {
        bool value = false;
        return d.checkSyntax(v.get_bool().get(value));
    }
    case simdjson::ondemand::json_type::null: {
        bool isNull = false;
        return d.checkSyntax(v.is_null().get(isNull)) &&
               (isNull || d.check(simdjson::N_ATOM_ERROR));
    }
    case simdjson::ondemand::json_type::number: {
        // Any number of valid syntax, however large or long: its value is not needed.
        std::string_view token = v.raw_json_token();
        while (!token.empty() && (token.back() == ' ' || token.back() == '\n' ||
                                  token.back() == '\r' || token.back() == '\t')) {
            token.remove_suffix(1);
        }
        // Left unread, the token is stepped over by the array or object around it.
        return isJsonNumber(token) || d.check(simdjson::NUMBER_ERROR);
    }
    }
    return d.check(simdjson::TAPE_ERROR);
}

bool jsonAtEnd(simdjson::ondemand::document& document) {
    return document.current_location().error() == simdjson::OUT_OF_BOUNDS;
}

} // namespace daywyn
