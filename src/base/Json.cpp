#include "base/Json.h"

#include <cstdint>

#include <rapidjson/encodedstream.h>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include "base/JsonReader.h"

namespace daywyn {

void useTwoSpaceIndent(PrettyJsonWriter& writer) {
    writer.SetIndent(' ', 2);
}

namespace {

// Hands a reader's events to a document, turning the text of each number into its
// exact value. RapidJSON's own full-precision number reader misreads some inputs
// ("0e88", long runs of zeros) with undefined behaviour, and its fast reader can be
// one unit in the last place off, which breaks exact round trips of doubles.
class ExactNumbers {
public:
    explicit ExactNumbers(rapidjson::Document& document)
        : d_(document) {}

    bool Null() { return d_.Null(); }
    bool Bool(bool b) { return d_.Bool(b); }
    bool Int(int i) { return d_.Int(i); }
    bool Uint(unsigned i) { return d_.Uint(i); }
    bool Int64(std::int64_t i) { return d_.Int64(i); }
    bool Uint64(std::uint64_t i) { return d_.Uint64(i); }
    bool Double(double v) { return d_.Double(v); }
    bool String(const char* s, rapidjson::SizeType n, bool copy) { return d_.String(s, n, copy); }
    bool StartObject() { return d_.StartObject(); }
    bool Key(const char* s, rapidjson::SizeType n, bool copy) { return d_.Key(s, n, copy); }
    bool EndObject(rapidjson::SizeType n) { return d_.EndObject(n); }
    bool StartArray() { return d_.StartArray(); }
    bool EndArray(rapidjson::SizeType n) { return d_.EndArray(n); }

    // The reader has checked the number's syntax; only its value is left to find.
    bool RawNumber(const char* s, rapidjson::SizeType n, bool) {
        const JsonNumber number = jsonNumberValue(std::string_view(s, n));
        switch (number.kind) {
        case JsonNumber::Kind::int64:
            return d_.Int64(number.i);
        case JsonNumber::Kind::uint64:
            return d_.Uint64(number.u);
        case JsonNumber::Kind::real:
            return d_.Double(number.d);
        case JsonNumber::Kind::outOfRange:
            break;
        }
        return false;
    }

private:
    rapidjson::Document& d_;
};

template <unsigned Flags, typename Stream>
rapidjson::ParseResult parseExactly(Stream& stream, rapidjson::Document& document) {
    rapidjson::ParseResult result;
    auto generate = [&stream, &result](rapidjson::Document& target) {
        ExactNumbers handler(target);
        rapidjson::Reader reader;
        result = reader.Parse<Flags | rapidjson::kParseNumbersAsStringsFlag>(stream, handler);
        return !result.IsError();
    };
    document.Populate(generate);
    return result;
}

} // namespace

Result<rapidjson::Document> parseJson(std::string_view text) {
    rapidjson::Document document;
    rapidjson::MemoryStream memory(text.data(), text.size());
    rapidjson::EncodedInputStream<rapidjson::UTF8<>, rapidjson::MemoryStream> stream(memory);
    const rapidjson::ParseResult result =
        parseExactly<rapidjson::kParseValidateEncodingFlag>(stream, document);
    if (result.IsError()) {
        return Error{std::string("Invalid JSON at byte ") + std::to_string(result.Offset()) + ": " +
                     rapidjson::GetParseError_En(result.Code())};
    }
    return document;
}

std::optional<std::string> readString(const rapidjson::Value& v) {
    if (!v.IsString()) {
        return std::nullopt;
    }
    return std::string(v.GetString(), v.GetStringLength());
}

std::optional<Uuid> readUuid(const rapidjson::Value& v) {
    if (!v.IsString()) {
        return std::nullopt;
    }
    return Uuid::parse(std::string_view(v.GetString(), v.GetStringLength()));
}

std::optional<Instant> readDate(const rapidjson::Value& v, DateCoding coding) {
    if (coding == DateCoding::iso8601) {
        if (!v.IsString()) {
            return std::nullopt;
        }
        return parseIsoText(std::string_view(v.GetString(), v.GetStringLength()));
    }
    if (!v.IsNumber()) {
        return std::nullopt;
    }
    return Instant{v.GetDouble() + kReferenceDateOffset};
}

std::optional<long long> readInt64(const rapidjson::Value& v) {
    if (!v.IsInt64()) {
        return std::nullopt;
    }
    return v.GetInt64();
}

std::optional<double> readDouble(const rapidjson::Value& v) {
    if (!v.IsNumber()) {
        return std::nullopt;
    }
    return v.GetDouble();
}

std::optional<bool> readBool(const rapidjson::Value& v) {
    if (!v.IsBool()) {
        return std::nullopt;
    }
    return v.GetBool();
}

const rapidjson::Value* findMember(const rapidjson::Value& object, std::string_view key) {
    if (!object.IsObject()) {
        return nullptr;
    }
    const auto it = object.FindMember(rapidjson::Value(
        rapidjson::StringRef(key.data(), static_cast<rapidjson::SizeType>(key.size()))));
    return it == object.MemberEnd() ? nullptr : &it->value;
}

} // namespace daywyn
