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
        // Read by the app's settings page and by the command line alike.
        return "The keyring has no password for " + account.user +
               " on the sync server. Set task sync up again in Settings › Calendars › Task "
               "sync, or run 'daywyn sync setup " +
               account.serverUrl + " --password-stdin'.";
    case SecretRead::Outcome::locked:
        return "The keyring is locked; unlock it and sync again.";
    default:
        return "Daywyn could not ask the keyring (Secret Service) for the sync password.";
    }
}

Result<std::unique_ptr<CalDavCollection>> openSyncCollection(const SyncAccount& account,
                                                             const StopFlag& stop) {
    const SecretRead password = syncPasswordStore(account).read();
    if (password.outcome != SecretRead::Outcome::found) {
        return Error{keyringSentence(password.outcome, account)};
    }
    auto client =
        std::make_unique<CalDavClient>(QUrl(QString::fromStdString(account.collectionUrl)),
                                       DavCredentials{QString::fromStdString(account.user),
                                                      QString::fromStdString(password.secret)});
    client->stopWhen(stop);
    return std::unique_ptr<CalDavCollection>(std::move(client));
}

Result<QUrl> syncServerAddress(const std::string& text) {
    const QUrl server(QString::fromStdString(text).trimmed(), QUrl::StrictMode);
    if (auto problem = CalDavSession::urlProblem(server)) {
        return Error{*problem};
    }
    return server;
}

Result<SettledTaskList> settleTaskList(CalDavDiscovery& discovery, const CalDavAccountInfo& found,
                                       const std::optional<std::string>& wanted) {
    const std::vector<TaskListInfo>& lists = found.lists;
    const std::string name = wanted ? *wanted : kDefaultTaskListName;
    std::optional<TaskListInfo> chosen;
    for (const auto& list : lists) {
        if (list.name == name || list.url == name) {
            chosen = list;
        }
    }
    if (chosen) {
        return SettledTaskList{*chosen, false};
    }
    if (!wanted && lists.size() == 1) {
        return SettledTaskList{lists.front(), false};
    }
    if (!wanted && lists.size() > 1) {
        std::string names;
        for (const auto& list : lists) {
            names += (names.empty() ? "\"" : ", \"") + list.name + "\"";
        }
        return Error{"The account has several task lists (" + names +
                     "); choose one with --list NAME."};
    }
    if (found.homeUrl.empty()) {
        return Error{"The address is a calendar without tasks, and Daywyn cannot make a task "
                     "list beside it; give the account's address instead."};
    }
    auto made = discovery.createTaskList(found.homeUrl, name);
    if (!made) {
        return Error{made.error()};
    }
    return SettledTaskList{made.value(), true};
}

Status storeSyncAccount(SyncState& state, const SyncAccount& account, const std::string& password) {
    if (auto saved = syncPasswordStore(account).write(password); !saved) {
        return saved;
    }
    if (state.account != account) {
        // Another server or list: what was synced with the old one says nothing here.
        forgetServer(state);
        state.account = account;
    }
    return {};
}

Status removeSyncPassword(const SyncAccount& account) {
    return syncPasswordStore(account).remove();
}

} // namespace daywyn::sync
