#include "cli/sync/SyncCommand.h"

#include <istream>
#include <ostream>
#include <pwd.h>
#include <sstream>
#include <unistd.h>

#include <QDateTime>
#include <QUrl>

#include "base/Json.h"
#include "cli/CommandLine.h"
#include "cli/SyncStatus.h"
#include "persistence/JSONTaskRepository.h"
#include "persistence/PosixFileSystem.h"
#include "sync/SyncPass.h"
#include "sync/SyncStateFile.h"
#include "sync/ical/IcalTaskCoding.h"
#include "sync/qt/CalDavClient.h"
#include "sync/qt/CalDavDiscovery.h"
#include "sync/qt/SyncAccountAccess.h"

namespace daywyn {

namespace {

using namespace sync;

std::string loginName() {
    if (const passwd* entry = ::getpwuid(::getuid()); entry && entry->pw_name) {
        return entry->pw_name;
    }
    return {};
}

Instant wallClock() {
    return Instant{static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0};
}

struct Files {
    std::unique_ptr<JSONTaskRepository> repository;
    std::unique_ptr<SyncStateFile> state;
};

// The state file's repository holding the writer lock, and the sync state's file.
Result<Files> openFiles(Instant now) {
    auto dataPath = JSONTaskRepository::defaultFilePath();
    if (!dataPath) {
        return Error{dataPath.error()};
    }
    auto statePath = SyncStateFile::defaultPath();
    if (!statePath) {
        return Error{statePath.error()};
    }
    const auto fs = std::make_shared<PosixFileSystem>();
    Files files;
    const Clock fixed = [now] {
        return now;
    };
    files.repository = std::make_unique<JSONTaskRepository>(dataPath.value(), fs, fixed, wallClock);
    if (auto locked = files.repository->acquireWriterLock(); !locked) {
        return Error{locked.error()};
    }
    files.state = std::make_unique<SyncStateFile>(statePath.value(), fs);
    return files;
}

Result<SyncState> loadState(SyncStateFile& file, Instant now, std::ostream& err) {
    auto loaded = file.load(now);
    if (!loaded) {
        return Error{loaded.error()};
    }
    if (!loaded.value().notice.empty()) {
        err << loaded.value().notice << "\n";
    }
    return std::move(loaded.value().state);
}

// ---- setup ----

int runSetup(const VerbLine& line, Instant now, std::istream& in, std::ostream& out,
             std::ostream& err) {
    auto server = syncServerAddress(line.words[1]);
    if (!server) {
        err << server.error() << "\n";
        return 1;
    }
    SyncAccount account;
    account.serverUrl = server.value().toString().toStdString();
    account.user = line.value("--user") ? *line.value("--user") : loginName();
    std::string password;
    if (line.has("--password-stdin")) {
        std::getline(in, password);
        if (!password.empty() && password.back() == '\r') {
            password.pop_back();
        }
    } else {
        const SecretRead stored = syncPasswordStore(account).read();
        if (stored.outcome != SecretRead::Outcome::found) {
            err << "Give the password of " << account.user
                << " on standard input with --password-stdin.\n";
            return 2;
        }
        password = stored.secret;
    }
    auto files = openFiles(now);
    if (!files) {
        err << files.error() << "\n";
        return 1;
    }
    CalDavDiscovery discovery(server.value(), DavCredentials{QString::fromStdString(account.user),
                                                             QString::fromStdString(password)});
    auto found = discovery.discover();
    if (!found) {
        err << found.error() << "\n";
        return 1;
    }
    const std::string* wanted = line.value("--list");
    auto settled = settleTaskList(discovery, found.value(),
                                  wanted ? std::optional<std::string>(*wanted) : std::nullopt);
    if (!settled) {
        err << settled.error() << "\n";
        return 1;
    }
    const bool created = settled.value().created;
    account.collectionUrl = settled.value().list.url;
    account.listName = settled.value().list.name;

    auto state = loadState(*files.value().state, now, err);
    if (!state) {
        err << state.error() << "\n";
        return 1;
    }
    if (auto stored = storeSyncAccount(state.value(), account, password); !stored) {
        err << stored.error() << "\n";
        return 1;
    }
    if (auto saved = files.value().state->save(state.value()); !saved) {
        err << saved.error() << "\n";
        return 1;
    }
    if (line.has("--json")) {
        JsonBuffer buffer;
        CompactJsonWriter w(buffer);
        w.StartObject();
        for (const auto& [key, value] :
             {std::pair{"collectionUrl", &account.collectionUrl},
              std::pair{"listName", &account.listName}, std::pair{"serverUrl", &account.serverUrl},
              std::pair{"user", &account.user}}) {
            writeKey(w, key);
            writeString(w, *value);
        }
        writeKey(w, "created");
        w.Bool(created);
        w.EndObject();
        out << std::string_view(buffer.GetString(), buffer.GetSize()) << "\n";
        return 0;
    }
    out << (created ? "Made the task list \"" : "Found the task list \"") << account.listName
        << "\" at " << account.collectionUrl << ".\nTasks sync with it as " << account.user
        << "; the password is in the keyring. Run 'daywyn sync' to sync now.\n";
    return 0;
}

// ---- one pass ----

int runPass(const VerbLine& line, Instant now, const Calendar& calendar, std::ostream& out,
            std::ostream& err) {
    auto files = openFiles(now);
    if (!files) {
        err << files.error() << "\n";
        return 1;
    }
    auto state = loadState(*files.value().state, now, err);
    if (!state) {
        err << state.error() << "\n";
        return 1;
    }
    if (!state.value().account) {
        err << "Task sync is not set up. Run 'daywyn sync setup URL' to choose a CalDAV "
               "server.\n";
        return 1;
    }
    const SyncAccount account = *state.value().account;
    auto collection = openSyncCollection(account);
    if (!collection) {
        err << collection.error() << "\n";
        return 1;
    }
    JSONTaskRepository& repository = *files.value().repository;
    auto loaded = repository.load();
    if (!loaded) {
        // The unreadable file was moved aside: syncing an empty list now would only
        // fetch everything back into a file the user has not looked at yet.
        err << loaded.error() << "\n";
        return 1;
    }
    PersistedState data = loaded.value().value_or(PersistedState{});

    const IcalTaskCoding coding;
    SyncOutcome outcome = runSyncPass(*collection.value(), coding, data.tasks,
                                      std::move(state.value()), now, calendar);
    if (outcome.tasksChanged) {
        data.tasks = std::move(outcome.tasks);
        if (auto saved = repository.save(data); !saved) {
            // The state stays as it was: the next pass fetches the same changes again.
            err << "Daywyn could not save changes: " << saved.error() << "\n";
            return 1;
        }
    }
    if (auto saved = files.value().state->save(outcome.state); !saved) {
        err << saved.error() << "\n";
        return 1;
    }
    // What was done before a failure is said too: it is kept.
    if (line.has("--json")) {
        out << syncPassJson(outcome.summary, outcome.error);
    } else {
        out << outcome.summary.sentence() << "\n";
    }
    if (!outcome.error.empty()) {
        err << outcome.error << "\n";
        return 1;
    }
    return 0;
}

} // namespace

int runSyncCommand(const std::vector<std::string>& args, Instant now, const Calendar& calendar,
                   std::istream& in, std::ostream& out, std::ostream& err) {
    ParsedCommand parsed = parseCommand(args);
    if (parsed.answer) {
        out << parsed.answer->out;
        err << parsed.answer->err;
        return parsed.answer->status;
    }
    if (auto refused = prepareCommand(parsed.line, now, calendar)) {
        out << refused->out;
        err << refused->err;
        return refused->status;
    }
    const VerbLine& line = parsed.line;
    if (!line.words.empty() && line.words[0] == "setup") {
        return runSetup(line, now, in, out, err);
    }
    return runPass(line, now, calendar, out, err);
}

} // namespace daywyn
