#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "base/Result.h"
#include "model/PersistedState.h"
#include "persistence/FileBytes.h"
#include "persistence/LegacyPersistedState.h"

namespace daywyn {

struct JsonParser;

// What a state file holds: the current format, or the earlier one still to be migrated.
using DecodedStateFile = std::variant<PersistedState, LegacyPersistedState>;

// Decodes the bytes of a state file of either format, chosen by its "version" (2 and
// later: the current format, whose later versions load when their four members
// decode; below 2: the earlier one). The bytes must be UTF-8 and one JSON object.
Result<DecodedStateFile> decodeStateFile(std::string_view bytes);
// The same, reading a file's bytes where they stand with a parser kept between loads.
Result<DecodedStateFile> decodeStateFile(const FileBytes& bytes, JsonParser& parser);

} // namespace daywyn
