#include "sync/qt/SyncAccountAccess.h"

#include <QUrl>

#include "sync/qt/CalDavClient.h"

namespace daywyn::sync {

SecretServiceStore syncPasswordStore(const SyncAccount& account) {
    return SecretServiceStore("com.daywyn.task-sync", account.user + " " + account.serverUrl,
                              SecretItemTexts{"Daywyn task sync (" + account.user + ")",
                                              "Could not save the sync password in the keyring.",
                                              "Could not update the sync password in the "
                                              "keyring."});
}

std::string keyringSentence(SecretRead::Outcome outcome, const SyncAccount& account) {
    switch (outcome) {
    case SecretRead::Outcome::missing:
        return "The keyring has no password for " + account.user +
               " on the sync server; run 'daywyn sync setup " + account.serverUrl +
               " --password-stdin' again.";
    case SecretRead::Outcome::locked:
        return "The keyring is locked; unlock it and run 'daywyn sync' again.";
    default:
        return "Daywyn could not ask the keyring (Secret Service) for the sync password.";
    }
}

Result<std::unique_ptr<CalDavCollection>> openSyncCollection(const SyncAccount& account) {
    const SecretRead password = syncPasswordStore(account).read();
    if (password.outcome != SecretRead::Outcome::found) {
        return Error{keyringSentence(password.outcome, account)};
    }
    std::unique_ptr<CalDavCollection> client =
        std::make_unique<CalDavClient>(QUrl(QString::fromStdString(account.collectionUrl)),
                                       DavCredentials{QString::fromStdString(account.user),
                                                      QString::fromStdString(password.secret)});
    return client;
}

} // namespace daywyn::sync
