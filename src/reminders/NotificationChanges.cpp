#include "reminders/NotificationChanges.h"

#include <string_view>
#include <unordered_set>

namespace daywyn {

NotificationChanges reconcileNotifications(DesiredNotifications desired,
                                           const std::vector<std::string>& pendingIdentifiers) {
    std::unordered_set<std::string_view> pending;
    pending.reserve(pendingIdentifiers.size());
    pending.insert(pendingIdentifiers.begin(), pendingIdentifiers.end());
    std::unordered_set<std::string_view> wanted;
    wanted.reserve(desired.requests.size() + desired.keptIdentifiers.size() + 1);

    std::vector<std::size_t> added;
    for (std::size_t i = 0; i < desired.requests.size(); ++i) {
        const std::string& identifier = desired.requests[i].identifier;
        // A duplicate identifier is added once, with the first rule's content.
        if (wanted.insert(identifier).second && !pending.contains(identifier)) {
            added.push_back(i);
        }
    }
    wanted.insert(desired.keptIdentifiers.begin(), desired.keptIdentifiers.end());
    wanted.insert("daywyn.manual-test");

    NotificationChanges changes;
    std::unordered_set<std::string_view> removed;
    for (const auto& identifier : pendingIdentifiers) {
        if (identifier.starts_with(kNotificationPrefix) && !wanted.contains(identifier) &&
            removed.insert(identifier).second) {
            changes.toRemove.push_back(identifier);
        }
    }
    // Moved only now: the sets above look into these identifiers.
    changes.toAdd.reserve(added.size());
    for (std::size_t i : added) {
        changes.toAdd.push_back(std::move(desired.requests[i]));
    }
    return changes;
}

} // namespace daywyn
