#pragma once

#include <optional>
#include <string>

#include "calendar/SecretStore.h"

namespace daywyn {

// The secret as one Secret Service item (libsecret) with the attributes service and
// account, in the default collection. A locked item is told apart from a missing one
// by searching without unlocking.
class SecretServiceStore : public SecretStore {
public:
    // The Google accounts item unless `texts` names another.
    SecretServiceStore(std::string service, std::string account,
                       std::optional<SecretItemTexts> texts = std::nullopt);
    SecretRead read() override;
    Status write(const std::string& secret) override;
    // Deletes the item; no item is no failure. Fails with a sentence when the store
    // could not be asked or refused.
    Status remove();

private:
    std::string service_;
    std::string account_;
    SecretItemTexts texts_;
};

} // namespace daywyn
