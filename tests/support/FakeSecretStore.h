#pragma once

#include <optional>
#include <string>

#include "calendar/SecretStore.h"

namespace daywyn::test {

// A secret store in memory: what it holds, whether it is locked, and whether writing
// fails; every write is counted.
class FakeSecretStore : public SecretStore {
public:
    std::optional<std::string> secret;
    bool locked = false;
    bool failWrites = false;
    int writes = 0;

    SecretRead read() override {
        if (locked) {
            return {SecretRead::Outcome::locked, {}};
        }
        if (!secret) {
            return {SecretRead::Outcome::missing, {}};
        }
        return {SecretRead::Outcome::found, *secret};
    }

    Status write(const std::string& value) override {
        ++writes;
        if (failWrites) {
            return Status::failure(secret ? "Could not update Google access in Keychain."
                                          : "Could not save Google access in Keychain.");
        }
        secret = value;
        return {};
    }
};

} // namespace daywyn::test
