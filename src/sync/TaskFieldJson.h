#pragma once

// One field of a task as a JSON value, and back: the conflict log's values and the
// fields a calendar object keeps in properties of Daywyn's own. Included only by .cpp
// files (it brings in simdjson).

#include <string>
#include <string_view>

#include "model/RecordFields.h"

namespace daywyn::sync {

// The value as compact JSON with ISO dates; an absent optional value as "null".
template <typename T>
std::string fieldJson(const T& value) {
    JsonBuffer buffer;
    CompactJsonWriter writer(buffer);
    if constexpr (IsOptional<T>::value) {
        if (!value) {
            return "null";
        }
        return fieldJson(*value);
    } else if constexpr (kIsJsonRecord<T>) {
        encodeFields(writer, value, DateCoding::iso8601);
    } else {
        writeJson(writer, value, DateCoding::iso8601);
    }
    return std::string(buffer.GetString(), buffer.GetSize());
}

// Reads what fieldJson() wrote; false (and `out` untouched) for anything else.
template <typename T>
bool readFieldJson(std::string_view json, T& out) {
    // simdjson reads a document's root value only through an object or array.
    const std::string text = "[" + std::string(json) + "]";
    JsonInput input(text);
    JsonDecoder d;
    simdjson::ondemand::document document;
    JsonValue root;
    if (!input.iterate(d, document) || !d.checkSyntax(document.get_value().get(root))) {
        return false;
    }
    T value{};
    std::size_t count = 0;
    const bool read = readJsonArray(d, root, [&](JsonValue& element) {
        if (++count > 1) {
            return false;
        }
        if constexpr (IsOptional<T>::value) {
            if (readJsonNull(d, element)) {
                value.reset();
                return true;
            }
            return readMember(d, element, value.emplace());
        } else {
            return readMember(d, element, value);
        }
    });
    if (!read || count != 1 || !jsonAtEnd(document)) {
        return false;
    }
    out = std::move(value);
    return true;
}

} // namespace daywyn::sync
