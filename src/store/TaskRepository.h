#pragma once

#include <optional>

#include "base/Result.h"
#include "model/PersistedState.h"

namespace daywyn {

// Where the store keeps the user's data between runs.
class TaskRepository {
public:
    virtual ~TaskRepository() = default;

    // Nothing stored yet: an empty optional. A stored state: that state. Stored but
    // unusable: an Error whose message is the sentence to show the user.
    virtual Result<std::optional<PersistedState>> load() = 0;

    // True when the last load() read a file in the current format, so that writing
    // the state back unchanged would only repeat its bytes. False after a migration
    // and by default.
    virtual bool loadedCurrentFormat() const { return false; }

    // Writes the whole state. On failure the previously saved state stays intact and
    // the Error carries the system's reason.
    virtual Status save(const PersistedStateView& state) = 0;
};

} // namespace daywyn
