#pragma once

// Records coded by one table of fields that drives both directions. A record type
// lists its fields once, in sorted key order (the order they are written in):
//
//     template <> struct JsonRecord<ChecklistItem> {
//         static constexpr std::string_view noun = "checklist item";
//         static constexpr auto fields = std::tuple(
//             jsonField("id", &ChecklistItem::id, FieldRule::required), ...);
//     };
//
// and encodeFields()/decodeFields() do the rest. A member's type is coded by the
// writeJson()/readJson() overloads found for it (scalars in base/JsonRead.h, records
// through their own table, lists of either).

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "base/Json.h"
#include "base/JsonRead.h"

namespace daywyn {

enum class FieldRule {
    // Present and of its type; null is refused.
    required,
    // A std::optional member: missing or null is no value, and no value is not written.
    optional,
    // Missing or null keeps the member's default; a value of another type is refused.
    lenient,
    // An older, read-only name of another field of the same member: it counts only
    // when the newer field gives no value, wherever the two stand. Never written.
    older,
};

template <typename Record, typename Member>
struct JsonField {
    std::string_view key;
    Member Record::*member;
    FieldRule rule;
};

template <typename Record, typename Member>
constexpr JsonField<Record, Member> jsonField(std::string_view key, Member Record::*member,
                                              FieldRule rule) {
    return {key, member, rule};
}

// Specialised for each record with its noun and its table of fields.
template <typename Record>
struct JsonRecord;

template <typename T, typename = void>
inline constexpr bool kIsJsonRecord = false;
template <typename T>
inline constexpr bool kIsJsonRecord<T, std::void_t<decltype(JsonRecord<T>::fields)>> = true;

template <typename T>
struct IsOptional : std::false_type {};
template <typename T>
struct IsOptional<std::optional<T>> : std::true_type {};

// ---- writing ----------------------------------------------------------------

template <typename Writer>
void writeJson(Writer& w, const std::string& value, DateCoding) {
    writeString(w, value);
}
template <typename Writer>
void writeJson(Writer& w, const Uuid& value, DateCoding) {
    writeUuid(w, value);
}
template <typename Writer>
void writeJson(Writer& w, Instant value, DateCoding dates) {
    writeDate(w, value, dates);
}
template <typename Writer>
void writeJson(Writer& w, bool value, DateCoding) {
    w.Bool(value);
}
template <typename Writer>
void writeJson(Writer& w, int value, DateCoding) {
    w.Int(value);
}
template <typename Writer>
void writeJson(Writer& w, long long value, DateCoding) {
    w.Int64(value);
}
template <typename Writer>
void writeJson(Writer& w, double value, DateCoding) {
    w.Double(value);
}

template <typename Writer, typename Record>
void encodeFields(Writer& w, const Record& record, DateCoding dates);

template <typename Writer, typename T>
void writeJson(Writer& w, const std::vector<T>& list, DateCoding dates) {
    w.StartArray();
    for (const auto& element : list) {
        if constexpr (kIsJsonRecord<T>) {
            encodeFields(w, element, dates);
        } else {
            writeJson(w, element, dates);
        }
    }
    w.EndArray();
}

template <typename Writer, typename Record, typename Member>
void writeField(Writer& w, const Record& record, const JsonField<Record, Member>& field,
                DateCoding dates) {
    const Member& value = record.*field.member;
    if (field.rule == FieldRule::older) {
        return;
    }
    if constexpr (IsOptional<Member>::value) {
        if (value) {
            writeKey(w, field.key);
            writeJson(w, *value, dates);
        }
    } else if constexpr (kIsJsonRecord<Member>) {
        writeKey(w, field.key);
        encodeFields(w, value, dates);
    } else {
        writeKey(w, field.key);
        writeJson(w, value, dates);
    }
}

template <typename Writer, typename Record>
void encodeFields(Writer& w, const Record& record, DateCoding dates) {
    w.StartObject();
    std::apply([&](const auto&... field) { (writeField(w, record, field, dates), ...); },
               JsonRecord<Record>::fields);
    w.EndObject();
}

// ---- reading ----------------------------------------------------------------

template <typename Record>
bool decodeFields(JsonDecoder& d, JsonValue& v, Record& record);

// Lists of records or of scalars. Elements are read into a reused list first and then
// moved once at their final size, so that a task's few sessions cost one allocation.
template <typename T>
bool readJson(JsonDecoder& d, JsonValue& v, std::vector<T>& out) {
    static thread_local std::vector<T> scratch;
    std::vector<T> elements = std::move(scratch);
    elements.clear();
    const bool read = readJsonArray(d, v, [&](JsonValue& element) {
        if constexpr (kIsJsonRecord<T>) {
            return decodeFields(d, element, elements.emplace_back());
        } else {
            return readJson(d, element, elements.emplace_back());
        }
    });
    if (read) {
        out.assign(std::make_move_iterator(elements.begin()),
                   std::make_move_iterator(elements.end()));
    }
    scratch = std::move(elements);
    return read;
}

template <typename T>
bool readMember(JsonDecoder& d, JsonValue& v, T& out) {
    if constexpr (kIsJsonRecord<T>) {
        return decodeFields(d, v, out);
    } else {
        return readJson(d, v, out);
    }
}

namespace json_fields {

template <typename Record>
inline constexpr auto& kFields = JsonRecord<Record>::fields;

template <typename Record>
inline constexpr std::size_t kCount = std::tuple_size_v<std::decay_t<decltype(kFields<Record>)>>;

template <typename Record>
constexpr std::array<std::string_view, kCount<Record>> keysOf() {
    return std::apply(
        [](const auto&... field) {
            return std::array<std::string_view, sizeof...(field)>{field.key...};
        },
        kFields<Record>);
}

// The index of the field a member of rule `older` stands in for.
template <typename Record, std::size_t Older>
constexpr std::size_t newerOf() {
    constexpr auto older = std::get<Older>(kFields<Record>);
    std::size_t found = kCount<Record>;
    std::size_t index = 0;
    std::apply(
        [&](const auto&... field) {
            (
                [&] {
                    if constexpr (std::is_same_v<decltype(field.member), decltype(older.member)>) {
                        if (field.member == older.member && field.rule != FieldRule::older) {
                            found = index;
                        }
                    }
                    ++index;
                }(),
                ...);
        },
        kFields<Record>);
    return found;
}

// Reads the value of field I into the record; `given` collects the fields that got a
// value.
template <typename Record, std::size_t I>
bool readField(JsonDecoder& d, JsonValue& v, Record& record, std::uint32_t& given) {
    constexpr auto field = std::get<I>(kFields<Record>);
    auto& member = record.*field.member;
    using Member = std::decay_t<decltype(member)>;
    if constexpr (field.rule == FieldRule::optional) {
        static_assert(IsOptional<Member>::value, "an optional field needs a std::optional member");
        if (readJsonNull(d, v)) {
            member.reset();
            return true;
        }
        if (!readMember(d, v, member.emplace())) {
            return false;
        }
    } else if constexpr (field.rule == FieldRule::lenient) {
        if (readJsonNull(d, v)) {
            return true;
        }
        if (!readMember(d, v, member)) {
            return false;
        }
    } else if constexpr (field.rule == FieldRule::older) {
        constexpr std::size_t newer = newerOf<Record, I>();
        static_assert(newer < kCount<Record>, "an older field needs its newer one");
        if (readJsonNull(d, v)) {
            return true;
        }
        Member value{};
        if (!readMember(d, v, value)) {
            return false;
        }
        if ((given & (1u << newer)) == 0) {
            member = std::move(value);
        }
        return true;
    } else {
        if (!readMember(d, v, member)) {
            return false;
        }
    }
    given |= 1u << I;
    return true;
}

template <typename Record>
using FieldReader = bool (*)(JsonDecoder&, JsonValue&, Record&, std::uint32_t&);

template <typename Record>
constexpr std::array<FieldReader<Record>, kCount<Record>> readersOf() {
    return []<std::size_t... I>(std::index_sequence<I...>) {
        return std::array<FieldReader<Record>, sizeof...(I)>{&readField<Record, I>...};
    }
    (std::make_index_sequence<kCount<Record>>{});
}

template <typename Record>
constexpr std::uint32_t requiredOf() {
    std::uint32_t mask = 0;
    std::uint32_t bit = 1;
    std::apply(
        [&](const auto&... field) {
            ((mask |= field.rule == FieldRule::required ? bit : 0u, bit <<= 1), ...);
        },
        kFields<Record>);
    return mask;
}

} // namespace json_fields

// Reads one record: unknown keys are walked past, of a repeated key the first counts,
// and the first problem is named in a sentence ("The task has no "id".").
template <typename Record>
bool decodeFields(JsonDecoder& d, JsonValue& v, Record& record) {
    using namespace json_fields;
    constexpr std::size_t count = kCount<Record>;
    static_assert(count <= 32, "one bit per field");
    static constexpr auto keys = keysOf<Record>();
    // A key is compared in place by reading as many bytes as the table's key has, and
    // one more: within the zeroed tail after a document, however short the document.
    static_assert(std::ranges::all_of(keys, [](std::string_view key) {
        return key.size() < simdjson::SIMDJSON_PADDING &&
               key.find_first_of("\"\\") == std::string_view::npos;
    }));
    static constexpr auto readers = readersOf<Record>();
    constexpr std::uint32_t required = requiredOf<Record>();
    const std::string_view noun = JsonRecord<Record>::noun;

    std::uint32_t seen = 0;
    std::uint32_t given = 0;
    std::size_t next = 0;
    std::size_t invalid = count;
    // The field a key names. Written in key order, so it is nearly always the next one
    // or (after optional fields left out) one of the few after it: each is compared with
    // the key's text where it stands. The table's keys hold no quote or backslash, so a
    // key written with escapes matches none of them here, and is read out and looked up.
    auto indexOf = [&](simdjson::ondemand::field& field, std::size_t& index) {
        const char* raw = field.key().raw();
        for (std::size_t tried = 0; tried < count; ++tried) {
            const std::size_t at = next + tried < count ? next + tried : next + tried - count;
            const std::string_view candidate = keys[at];
            if (raw[candidate.size()] == '"' &&
                std::memcmp(raw, candidate.data(), candidate.size()) == 0) {
                index = at;
                return true;
            }
        }
        std::string_view key;
        if (!readJsonKey(d, field, key)) {
            return false;
        }
        index = count;
        for (std::size_t at = 0; at < count; ++at) {
            if (keys[at] == key) {
                index = at;
                break;
            }
        }
        return true;
    };
    simdjson::ondemand::object object;
    bool read = d.check(v.get_object().get(object));
    if (read) {
        for (auto member : object) {
            simdjson::ondemand::field field;
            std::size_t index = count;
            if (!d.check(std::move(member).get(field)) || !indexOf(field, index)) {
                read = false;
                break;
            }
            JsonValue value = field.value();
            if (index == count || (seen & (1u << index)) != 0) {
                if (!skipJson(d, value)) {
                    read = false;
                    break;
                }
                continue;
            }
            seen |= 1u << index;
            next = index + 1 == count ? 0 : index + 1;
            if (!readers[index](d, value, record, given)) {
                invalid = index;
                read = false;
                break;
            }
        }
    }
    if (!read) {
        if (d.hasSyntaxError()) {
            return false;
        }
        if (invalid < count) {
            return d.fail("The " + std::string(noun) + "'s \"" + std::string(keys[invalid]) +
                          "\" is not valid.");
        }
        return d.fail("The " + std::string(noun) + " is not a JSON object.");
    }
    if (const std::uint32_t missing = required & ~given; missing != 0) {
        const auto first = static_cast<std::size_t>(std::countr_zero(missing));
        return d.fail("The " + std::string(noun) + " has no \"" + std::string(keys[first]) + "\".");
    }
    return true;
}

// One record as a whole document.
template <typename Record>
Result<Record> decodeJsonRecord(std::string_view text, DateCoding dates) {
    JsonInput input(text);
    JsonDecoder d(dates);
    simdjson::ondemand::document document;
    JsonValue value;
    Record record{};
    if (!input.iterate(d, document) || !d.checkSyntax(document.get_value().get(value)) ||
        !decodeFields(d, value, record)) {
        return Error{d.error()};
    }
    if (!jsonAtEnd(document)) {
        return Error{jsonSyntaxError(simdjson::TRAILING_CONTENT)};
    }
    return record;
}

} // namespace daywyn
