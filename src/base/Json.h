#pragma once

#include <string_view>

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "base/Instant.h"
#include "base/Uuid.h"

namespace daywyn {

// Writing: RapidJSON's writers, whose doubles read back bit for bit. Reading is in
// base/JsonRead.h.
using JsonBuffer = rapidjson::StringBuffer;
// Two-space indented output, the form of the state file and the exports.
using PrettyJsonWriter = rapidjson::PrettyWriter<JsonBuffer>;
// One line, for the command line's --json output.
using CompactJsonWriter = rapidjson::Writer<JsonBuffer>;

// How dates are written into a JSON document, chosen by the document's owner.
enum class DateCoding {
    // "2026-03-04T08:15:00Z": UTC, whole seconds (state file, exports).
    iso8601,
    // Seconds since 2001-01-01T00:00:00Z as a number (user-defaults blobs).
    referenceSeconds,
};

// Seconds between 1970-01-01 and 2001-01-01.
inline constexpr double kReferenceDateOffset = 978307200.0;

// Two-space indentation, the state file's layout.
void useTwoSpaceIndent(PrettyJsonWriter& writer);

template <typename Writer>
void writeKey(Writer& w, std::string_view key) {
    w.Key(key.data(), static_cast<rapidjson::SizeType>(key.size()));
}

template <typename Writer>
void writeString(Writer& w, std::string_view value) {
    w.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}

template <typename Writer>
void writeUuid(Writer& w, const Uuid& id) {
    char text[36];
    id.writeText(text);
    w.String(text, 36);
}

template <typename Writer>
void writeDate(Writer& w, Instant at, DateCoding coding) {
    if (coding == DateCoding::iso8601) {
        char text[kIsoTextLength];
        writeIsoText(at, text);
        w.String(text, static_cast<rapidjson::SizeType>(kIsoTextLength));
    } else {
        w.Double(at.seconds - kReferenceDateOffset);
    }
}

} // namespace daywyn
