#include "support/JsonTree.h"

#include <string>

#include <rapidjson/error/en.h>

namespace daywyn {

Result<rapidjson::Document> parseJson(std::string_view text) {
    rapidjson::Document document;
    document.Parse<rapidjson::kParseFullPrecisionFlag | rapidjson::kParseValidateEncodingFlag>(
        text.data(), text.size());
    if (document.HasParseError()) {
        return Error{std::string("Invalid JSON at byte ") +
                     std::to_string(document.GetErrorOffset()) + ": " +
                     rapidjson::GetParseError_En(document.GetParseError())};
    }
    return document;
}

} // namespace daywyn
