#pragma once

#include <memory>
#include <string>

#include "base/Result.h"
#include "calendar/SecretStore.h"
#include "calendar/qt/SecretServiceStore.h"
#include "sync/CalDavCollection.h"
#include "sync/SyncState.h"

namespace daywyn::sync {

// The keyring item that holds the password of one sync account.
SecretServiceStore syncPasswordStore(const SyncAccount& account);

// Why the password could not be had, as a sentence that says what to do.
std::string keyringSentence(SecretRead::Outcome outcome, const SyncAccount& account);

// The account's task list over CalDAV, with the password from the keyring. Blocks on
// the keyring and, later, on the network: call it on the thread that runs the pass.
Result<std::unique_ptr<CalDavCollection>> openSyncCollection(const SyncAccount& account);

} // namespace daywyn::sync
