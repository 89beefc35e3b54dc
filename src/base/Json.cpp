#include "base/Json.h"

#include <rapidjson/error/en.h>

namespace daywyn {

void useTwoSpaceIndent(PrettyJsonWriter& writer) {
    writer.SetIndent(' ', 2);
}

bool hasZeroWithExponent(std::string_view text) {
    for (std::size_t e = text.find_first_of("eE"); e != std::string_view::npos;
         e = text.find_first_of("eE", e + 1)) {
        // Walk back over the significand: digits and at most one point, all zeros.
        std::size_t i = e;
        bool sawDigit = false;
        bool allZero = true;
        while (i > 0 && ((text[i - 1] >= '0' && text[i - 1] <= '9') || text[i - 1] == '.')) {
            --i;
            if (text[i] != '.') {
                sawDigit = true;
                allZero = allZero && text[i] == '0';
            }
        }
        if (sawDigit && allZero) {
            return true;
        }
    }
    return false;
}

bool parseJsonInPlace(std::string& text, rapidjson::Document& document) {
    if (hasZeroWithExponent(text)) {
        document.ParseInsitu(text.data());
    } else {
        // Full precision: without it about one fractional double in seven comes back
        // one unit in the last place off, which breaks exact round trips.
        document.ParseInsitu<rapidjson::kParseFullPrecisionFlag>(text.data());
    }
    return !document.HasParseError();
}

Result<rapidjson::Document> parseJson(std::string_view text) {
    rapidjson::Document document;
    constexpr unsigned kFlags = rapidjson::kParseValidateEncodingFlag;
    if (hasZeroWithExponent(text)) {
        document.Parse<kFlags>(text.data(), text.size());
    } else {
        document.Parse<kFlags | rapidjson::kParseFullPrecisionFlag>(text.data(), text.size());
    }
    if (document.HasParseError()) {
        return Error{std::string("Invalid JSON at byte ") +
                     std::to_string(document.GetErrorOffset()) + ": " +
                     rapidjson::GetParseError_En(document.GetParseError())};
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
