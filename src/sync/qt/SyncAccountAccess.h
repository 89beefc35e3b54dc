#pragma once

#include <memory>
#include <optional>
#include <string>

#include <QUrl>

#include "base/Result.h"
#include "calendar/SecretStore.h"
#include "calendar/qt/SecretServiceStore.h"
#include "sync/CalDavCollection.h"
#include "sync/SyncState.h"
#include "sync/qt/CalDavDiscovery.h"

namespace daywyn::sync {

// The keyring item that holds the password of one sync account.
SecretServiceStore syncPasswordStore(const SyncAccount& account);

// Why the password could not be had, as a sentence that says what to do.
std::string keyringSentence(SecretRead::Outcome outcome, const SyncAccount& account);

// The account's task list over CalDAV, with the password from the keyring. Blocks on
// the keyring and, later, on the network: call it on the thread that runs the pass.
// Its requests end early once `stop` is set.
Result<std::unique_ptr<CalDavCollection>> openSyncCollection(const SyncAccount& account,
                                                             const StopFlag& stop = {});

// Setting an account up, the same way from the command line and from the settings
// window: the address is checked, `CalDavDiscovery::discover` finds the task lists,
// `settleTaskList` picks (or makes) the one to use, and `storeSyncAccount` keeps the
// password and makes the account the state's. The network and keyring steps block:
// the app runs them on its sync worker.

// The list made when the account has none (and the one preferred among several).
inline constexpr const char* kDefaultTaskListName = "Daywyn";

// The server's address as the user gave it, or the sentence saying why Daywyn may not
// use it (not an address, plain http to another computer).
Result<QUrl> syncServerAddress(const std::string& text);

struct SettledTaskList {
    TaskListInfo list;
    // Made now with MKCALENDAR.
    bool created = false;
};

// The task list to sync with among those `found`: the one named (or at the address)
// `wanted`; without a wish, the one named "Daywyn" or else the only one. A wished-for
// list that is not there, or none at all, is made in the account's calendar home.
Result<SettledTaskList> settleTaskList(CalDavDiscovery& discovery, const CalDavAccountInfo& found,
                                       const std::optional<std::string>& wanted);

// Keeps the password in the keyring, then makes `account` the state's account: another
// server or list forgets what was synced with the old one. The caller saves the state.
Status storeSyncAccount(SyncState& state, const SyncAccount& account, const std::string& password);

// Removes the account's password from the keyring.
Status removeSyncPassword(const SyncAccount& account);

} // namespace daywyn::sync
