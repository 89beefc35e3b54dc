#include "sync/TaskMerge.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "sync/TaskFieldJson.h"

namespace daywyn::sync {

namespace {

template <typename T>
struct IsVector : std::false_type {};
template <typename T>
struct IsVector<std::vector<T>> : std::true_type {};

// Lists of items with an id (sessions, checklist items), present or optional.
template <typename T>
struct IsItemList : std::false_type {};
template <typename T>
requires requires(const T& item) {
    item.id;
}
struct IsItemList<std::vector<T>> : std::true_type {};
template <typename T>
struct IsOptionalItemList : std::false_type {};
template <typename T>
struct IsOptionalItemList<std::optional<T>> : IsItemList<T> {};

template <typename T>
bool same(const T& a, const T& b);

// A field of a task that only this machine's bookkeeping uses.
template <typename Record>
constexpr bool isOwnField(std::string_view key) {
    return std::is_same_v<Record, TaskItem> && isMachineLocalField(key);
}

template <typename Record>
bool sameFields(const Record& a, const Record& b) {
    return std::apply(
        [&](const auto&... field) {
            return ((isOwnField<Record>(field.key) || same(a.*field.member, b.*field.member)) &&
                    ...);
        },
        JsonRecord<Record>::fields);
}

template <typename T>
bool same(const T& a, const T& b) {
    if constexpr (std::is_same_v<T, Instant>) {
        return std::floor(a.seconds) == std::floor(b.seconds);
    } else if constexpr (IsOptional<T>::value) {
        return a.has_value() == b.has_value() && (!a || same(*a, *b));
    } else if constexpr (IsVector<T>::value) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                          [](const auto& x, const auto& y) { return same(x, y); });
    } else if constexpr (kIsJsonRecord<T>) {
        return sameFields(a, b);
    } else {
        return a == b;
    }
}

template <typename T>
void cut(T& value) {
    if constexpr (std::is_same_v<T, Instant>) {
        value.seconds = std::floor(value.seconds);
    } else if constexpr (IsOptional<T>::value) {
        if (value) {
            cut(*value);
        }
    } else if constexpr (IsVector<T>::value) {
        for (auto& element : value) {
            cut(element);
        }
    } else if constexpr (kIsJsonRecord<T>) {
        std::apply([&](const auto&... field) { (cut(value.*field.member), ...); },
                   JsonRecord<T>::fields);
    }
}

// A value as short text for the conflict log: text and times as they are, anything
// else as its JSON, an absent value as "none".
template <typename T>
std::string describe(const T& value) {
    if constexpr (IsOptional<T>::value) {
        return value ? describe(*value) : std::string("none");
    } else if constexpr (std::is_same_v<T, std::string>) {
        return value;
    } else if constexpr (std::is_same_v<T, Instant>) {
        return isoText(value);
    } else {
        return fieldJson(value);
    }
}

struct Sides {
    bool localIsLater = false;
    std::string_view field;
    std::vector<FieldConflict>* conflicts = nullptr;

    // The later edit's value of two differing ones, the other logged.
    template <typename T>
    const T& pick(const T& local, const T& remote) const {
        const T& kept = localIsLater ? local : remote;
        const T& setAside = localIsLater ? remote : local;
        conflicts->push_back({std::string(field), describe(kept), describe(setAside),
                              localIsLater ? ConflictSide::remote : ConflictSide::local});
        return kept;
    }
};

template <typename T>
const T* findById(const std::vector<T>& list, const Uuid& id) {
    const auto found =
        std::find_if(list.begin(), list.end(), [&](const T& item) { return item.id == id; });
    return found == list.end() ? nullptr : &*found;
}

// Items of a list matched by id: each merged like a field; an item removed on one side
// and untouched on the other goes, one removed on one side and edited on the other
// stays. Local order first, then the remote's new items in their order.
template <typename T>
std::vector<T> mergeItems(const std::vector<T>& base, const std::vector<T>& local,
                          const std::vector<T>& remote, const Sides& sides) {
    std::vector<T> merged;
    merged.reserve(std::max(local.size(), remote.size()));
    for (const T& mine : local) {
        const T* before = findById(base, mine.id);
        const T* theirs = findById(remote, mine.id);
        if (theirs == nullptr) {
            if (before == nullptr || !same(*before, mine)) {
                merged.push_back(mine);
            }
        } else if (same(mine, *theirs) || (before != nullptr && same(*before, *theirs))) {
            merged.push_back(mine);
        } else if (before != nullptr && same(*before, mine)) {
            merged.push_back(*theirs);
        } else {
            merged.push_back(sides.pick(mine, *theirs));
        }
    }
    for (const T& theirs : remote) {
        if (findById(local, theirs.id) != nullptr) {
            continue;
        }
        const T* before = findById(base, theirs.id);
        if (before == nullptr || !same(*before, theirs)) {
            merged.push_back(theirs);
        }
    }
    return merged;
}

template <typename T>
T mergeBothChanged(const T* base, const T& local, const T& remote, const Sides& sides) {
    if constexpr (IsItemList<T>::value) {
        return mergeItems(base ? *base : T{}, local, remote, sides);
    } else if constexpr (IsOptionalItemList<T>::value) {
        // A list that may be absent: items merge as soon as either side has a list.
        using List = typename T::value_type;
        if (!local || !remote) {
            return sides.pick(local, remote);
        }
        const List* before = base && *base ? &**base : nullptr;
        return mergeBothChanged<List>(before, *local, *remote, sides);
    } else {
        return sides.pick(local, remote);
    }
}

// Where a merged value came from, for the time it carries.
enum class Source { base, local, remote, both };

template <typename T>
T mergeValue(const T* base, const T& local, const T& remote, const Sides& sides, Source& source) {
    const bool localChanged = base == nullptr || !same(*base, local);
    const bool remoteChanged = base == nullptr || !same(*base, remote);
    if (same(local, remote)) {
        source = localChanged ? Source::both : Source::base;
        return local;
    }
    if (!localChanged) {
        source = Source::remote;
        return remote;
    }
    if (!remoteChanged) {
        source = Source::local;
        return local;
    }
    // Items merged one by one may take from both sides; the value is then as new as
    // the later of the two edits.
    T merged = mergeBothChanged(base, local, remote, sides);
    if (same(merged, local)) {
        source = Source::local;
    } else if (same(merged, remote)) {
        source = Source::remote;
    } else {
        source = Source::both;
    }
    return merged;
}

Instant wholeSeconds(Instant at) {
    return Instant{std::floor(at.seconds)};
}

} // namespace

Instant EditTimes::of(std::string_view field) const {
    const auto found = fields.find(field);
    return found == fields.end() ? fallback : found->second;
}

MergedTask mergeTask(const TaskItem* base, const TaskItem& local, const EditTimes& localEdits,
                     const TaskItem& remote, const EditTimes& remoteEdits) {
    MergedTask result;
    Sides sides;
    sides.conflicts = &result.conflicts;
    std::apply(
        [&](const auto&... field) {
            (
                [&] {
                    if (isMachineLocalField(field.key)) {
                        result.task.*field.member = local.*field.member;
                        return;
                    }
                    const Instant localAt = wholeSeconds(localEdits.of(field.key));
                    const Instant remoteAt = wholeSeconds(remoteEdits.of(field.key));
                    sides.field = field.key;
                    sides.localIsLater = localAt > remoteAt;
                    const auto* before = base ? &(base->*field.member) : nullptr;
                    Source source = Source::base;
                    result.task.*field.member = mergeValue(before, local.*field.member,
                                                           remote.*field.member, sides, source);
                    if (source != Source::base) {
                        result.fieldTimes.insert_or_assign(std::string(field.key),
                                                           source == Source::local ? localAt
                                                           : source == Source::remote
                                                               ? remoteAt
                                                               : std::max(localAt, remoteAt));
                    }
                }(),
                ...);
        },
        JsonRecord<TaskItem>::fields);
    return result;
}

std::vector<std::string_view> differingFields(const TaskItem& a, const TaskItem& b) {
    std::vector<std::string_view> fields;
    std::apply(
        [&](const auto&... field) {
            ((isMachineLocalField(field.key) || same(a.*field.member, b.*field.member)
                  ? void()
                  : fields.push_back(field.key)),
             ...);
        },
        JsonRecord<TaskItem>::fields);
    return fields;
}

TaskItem withMachineLocalFieldsOf(TaskItem task, const TaskItem* here) {
    const TaskItem none;
    const TaskItem& source = here ? *here : none;
    std::apply(
        [&](const auto&... field) {
            ((isMachineLocalField(field.key) ? void(task.*field.member = source.*field.member)
                                             : void()),
             ...);
        },
        JsonRecord<TaskItem>::fields);
    return task;
}

bool sameAtWholeSeconds(const TaskItem& a, const TaskItem& b) {
    return same(a, b);
}

TaskItem atWholeSeconds(TaskItem task) {
    cut(task);
    return task;
}

} // namespace daywyn::sync
