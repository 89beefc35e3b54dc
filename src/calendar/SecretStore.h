#pragma once

#include <string>

#include "base/Result.h"

namespace daywyn {

// What reading the one secret gave: the secret, no item at all, an item the user must
// unlock first, or a store that could not be asked.
struct SecretRead {
    enum class Outcome { found, missing, locked, failed };
    Outcome outcome = Outcome::failed;
    std::string secret;
};

// The desktop's store for one secret (the Google accounts blob, a sync account's
// password). Reads and writes are synchronous and never log the secret.
class SecretStore {
public:
    virtual ~SecretStore() = default;
    virtual SecretRead read() = 0;
    // Replaces the secret, or adds the item when there is none. Fails with the item's
    // sentence for adding ("Could not save Google access in Keychain.") or for replacing
    // ("Could not update Google access in Keychain.").
    virtual Status write(const std::string& secret) = 0;
};

// How one kind of secret item is shown in the keyring, and the sentences for a write
// that failed.
struct SecretItemTexts {
    std::string label;
    std::string saveFailed;
    std::string updateFailed;
};

} // namespace daywyn
