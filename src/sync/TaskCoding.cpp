#include "sync/TaskCoding.h"

#include <cmath>
#include <cstdint>
#include <set>
#include <utility>
#include <vector>

#include "base/Sha.h"
#include "sync/TaskFieldJson.h"
#include "sync/TaskMerge.h"

namespace daywyn::sync {

namespace {

// FNV-1a: fingerprints that tell whether another program edited a field since its time
// was written, not a defence against anyone forging them.
constexpr std::uint32_t kFingerprintStart = 2166136261U;

std::uint32_t fingerprint(std::uint32_t hash, std::string_view text) {
    for (const unsigned char c : text) {
        hash ^= c;
        hash *= 16777619U;
    }
    return hash;
}

std::uint32_t addField(std::uint32_t hash, std::string_view name, std::string_view json) {
    return fingerprint(fingerprint(fingerprint(hash, name), "="), json);
}

std::string hexText(std::uint32_t value) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text(8, '0');
    for (int i = 7; i >= 0; --i) {
        text[static_cast<std::size_t>(i)] = kDigits[value & 0xF];
        value >>= 4;
    }
    return text;
}

// Every synced field's value as JSON at whole seconds, in the record's order.
std::vector<std::pair<std::string_view, std::string>> fieldValues(const TaskItem& task) {
    const TaskItem cut = atWholeSeconds(task);
    std::vector<std::pair<std::string_view, std::string>> values;
    std::apply(
        [&](const auto&... field) {
            ((isMachineLocalField(field.key)
                  ? void()
                  : void(values.emplace_back(field.key, fieldJson(cut.*field.member)))),
             ...);
        },
        JsonRecord<TaskItem>::fields);
    return values;
}

Instant wholeSeconds(Instant at) {
    return Instant{std::floor(at.seconds)};
}

// "2026-03-09T14:00:00Z#1f0c22d9" -> the time and the fingerprint's text.
std::optional<std::pair<Instant, std::string_view>> timeAndFingerprint(std::string_view text) {
    const auto hash = text.find('#');
    if (hash == std::string_view::npos || text.size() - hash - 1 != 8) {
        return std::nullopt;
    }
    const auto at = parseIsoText(text.substr(0, hash));
    if (!at) {
        return std::nullopt;
    }
    return std::pair{*at, text.substr(hash + 1)};
}

} // namespace

std::string fieldTimesText(const TaskItem& task, const FieldTimes& times) {
    if (times.empty()) {
        return {};
    }
    // The time most fields share (the later of equally common ones) is written once.
    std::map<Instant, int> counts;
    for (const auto& [field, at] : times) {
        ++counts[wholeSeconds(at)];
    }
    Instant shared;
    int most = 0;
    for (const auto& [at, count] : counts) {
        if (count >= most) {
            shared = at;
            most = count;
        }
    }
    std::uint32_t rest = kFingerprintStart;
    std::string listed;
    for (const auto& [name, json] : fieldValues(task)) {
        const auto found = times.find(name);
        const Instant at = found == times.end() ? shared : wholeSeconds(found->second);
        if (at == shared) {
            rest = addField(rest, name, json);
            continue;
        }
        listed += ' ';
        listed += name;
        listed += '@';
        listed += isoText(at);
        listed += '#';
        listed += hexText(addField(kFingerprintStart, name, json));
    }
    return isoText(shared) + "#" + hexText(rest) + listed;
}

FieldTimes readFieldTimes(std::string_view text, const TaskItem& task) {
    std::vector<std::string_view> words;
    for (std::size_t from = 0; from < text.size();) {
        const std::size_t space = std::min(text.find(' ', from), text.size());
        if (space > from) {
            words.push_back(text.substr(from, space - from));
        }
        from = space + 1;
    }
    FieldTimes times;
    if (words.empty()) {
        return times;
    }
    const auto values = fieldValues(task);
    std::set<std::string_view> listed;
    for (std::size_t i = 1; i < words.size(); ++i) {
        const auto atSign = words[i].find('@');
        if (atSign == std::string_view::npos) {
            continue;
        }
        const std::string_view name = words[i].substr(0, atSign);
        listed.insert(name);
        const auto entry = timeAndFingerprint(words[i].substr(atSign + 1));
        const auto value = std::find_if(values.begin(), values.end(),
                                        [&](const auto& v) { return v.first == name; });
        if (entry && value != values.end() &&
            hexText(addField(kFingerprintStart, name, value->second)) == entry->second) {
            times.insert_or_assign(std::string(name), entry->first);
        }
    }
    const auto shared = timeAndFingerprint(words.front());
    if (!shared) {
        return times;
    }
    std::uint32_t rest = kFingerprintStart;
    for (const auto& [name, json] : values) {
        if (!listed.contains(name)) {
            rest = addField(rest, name, json);
        }
    }
    if (hexText(rest) == shared->second) {
        for (const auto& [name, json] : values) {
            if (!listed.contains(name)) {
                times.insert_or_assign(std::string(name), shared->first);
            }
        }
    }
    return times;
}

Uuid taskIdForUid(std::string_view uid) {
    if (const auto id = Uuid::parse(uid)) {
        return *id;
    }
    // A name-based identifier (version 5 layout, SHA-1 of the text), so that every
    // machine derives the same task id from the same UID.
    const auto digest = sha1(uid);
    Uuid id;
    for (std::size_t i = 0; i < id.bytes.size(); ++i) {
        id.bytes[i] = digest[i];
    }
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0F) | 0x50);
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3F) | 0x80);
    return id;
}

} // namespace daywyn::sync
