#pragma once

#include <string_view>

#include <rapidjson/document.h>

#include "base/Json.h"
#include "base/Result.h"

namespace daywyn {

// A whole document as a tree, for tests that look into the JSON the program writes or
// that edit a valid record into a broken one. The program itself reads JSON through
// base/JsonRead.h.
Result<rapidjson::Document> parseJson(std::string_view text);

} // namespace daywyn
