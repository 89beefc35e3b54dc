#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariantList>

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Result.h"
#include "model/TaskItem.h"
#include "sync/CalDavCollection.h"
#include "sync/SyncPass.h"
#include "sync/SyncState.h"
#include "sync/SyncStateFile.h"
#include "sync/TaskCoding.h"
#include "sync/qt/CalDavDiscovery.h"

class QThread;

namespace daywyn::sync {

// Tells when the computer wakes from sleep. The app connects it to logind's
// PrepareForSleep(false); anything else may emit it.
class ResumeSignal : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

Q_SIGNALS:
    void resumed();
};

// How one pass ended, as `daywyn sync` reports it.
struct PassReport {
    SyncSummary summary;
    // Why the pass stopped early; empty when it finished.
    std::string error;
};

// Task sync while the app runs. Once an account is set up it runs a pass a little
// after each change of the store, every few minutes and after the computer wakes,
// never two at once (a request during a pass runs one more pass after it). The
// network work runs on a worker thread; the store is read and written on this one:
// a pass works on a copy of the task list, and its result is taken in through the
// store, so edits made meanwhile are kept. A failed pass deletes nothing, keeps what it
// did before the failure (as the state says) and leaves its sentence in the state and
// on `statusLine`. The sync state is this object's while the app runs; it is saved
// after each pass and when the object is destroyed.
//
// The settings page sets an account up through it in two steps, both on the worker
// (the same one as the passes, so neither overlaps a pass): `findTaskLists` asks the
// server for the account's task lists, `startSyncing` uses one (or makes "Daywyn"),
// keeps the password in the keyring and runs a first pass. `stopSyncing` forgets the
// account, its password and the sync state; the tasks stay as they are.
class SyncController : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isSetUp READ isSetUp NOTIFY changed)
    Q_PROPERTY(bool isSyncing READ isSyncing NOTIFY changed)
    Q_PROPERTY(QString statusLine READ statusLine NOTIFY changed)
    Q_PROPERTY(bool hasFailed READ hasFailed NOTIFY changed)
    Q_PROPERTY(QString serverUrl READ serverUrl NOTIFY changed)
    Q_PROPERTY(QString user READ user NOTIFY changed)
    Q_PROPERTY(QString listName READ listName NOTIFY changed)
    Q_PROPERTY(QString listUrl READ listUrl NOTIFY changed)
    Q_PROPERTY(QString lastPass READ lastPass NOTIFY changed)
    Q_PROPERTY(int pendingChanges READ pendingChanges NOTIFY changed)
    Q_PROPERTY(QVariantList conflicts READ conflicts NOTIFY changed)
    Q_PROPERTY(QString notice READ notice NOTIFY changed)
    // "form" (nothing under way), "finding" (asking the server), "choosing" (lists
    // found) or "starting" (keeping the account).
    Q_PROPERTY(QString setupStep READ setupStep NOTIFY changed)
    Q_PROPERTY(QString setupError READ setupError NOTIFY changed)
    // The task lists found: {name, url}.
    Q_PROPERTY(QVariantList foundLists READ foundLists NOTIFY changed)
    // The name of the list Daywyn can make for the account; empty when it has one of
    // that name or no calendar home to make it in.
    Q_PROPERTY(QString newListName READ newListName NOTIFY changed)

public:
    // Opens the account's task list; called on the worker thread of each pass. The
    // list's requests end early once `stop` is set (the app is quitting).
    using CollectionOpener = std::function<Result<std::unique_ptr<CalDavCollection>>(
        const SyncAccount& account, const StopFlag& stop)>;

    // The live task list (the app's store), read and changed on this thread only.
    struct TaskList {
        std::function<const std::vector<TaskItem>&()> tasks;
        // Replaces the list with a pass's result merged with the edits made meanwhile.
        // The sentence of a failed save, or nothing.
        std::function<std::optional<std::string>(std::vector<TaskItem> merged)> replace;
    };

    struct Timing {
        // The quiet time after a change before its pass.
        int afterChangeMilliseconds = 2'000;
        int periodMilliseconds = 5 * 60'000;
        // How often the drawer's "Synced 2 min ago" is worked out again.
        int lineRefreshMilliseconds = 60'000;
    };

    SyncController(TaskList tasks, SyncStateFile stateFile,
                   std::shared_ptr<const TaskCoding> coding, CollectionOpener openCollection,
                   Calendar calendar, Clock clock, Timing timing, QObject* parent = nullptr);
    // Ends the network work under way and waits for its thread, then saves the state
    // when it changed.
    ~SyncController() override;

    // Loads the state, starts the timers and, when sync is set up, runs a first pass.
    // `resume` (may be null) starts a pass after the computer wakes.
    void start(ResumeSignal* resume);

    // The store's task list after a change: the tasks that differ from the list last
    // seen are noted as changed here now, and a pass follows after the quiet time.
    void noteStoreChange(const std::vector<TaskItem>& tasks);

    // Asks for a pass now (after the one under way, if any).
    Q_INVOKABLE void syncNow();
    // The same, and `done` is called on this thread when that pass has ended. Without
    // an account it is called at once with the sentence saying so.
    void runPass(std::function<void(const PassReport&)> done);

    // Asks the server at `serverUrl` for the task lists of `user`; the answer comes as
    // `setupStep` "choosing", or back to "form" with `setupError`. Only without an
    // account.
    Q_INVOKABLE void findTaskLists(const QString& serverUrl, const QString& user,
                                   const QString& password);
    // Syncs with the found list at `listUrl`, or with a new list named `newListName`
    // when `listUrl` is empty: stores the account as `daywyn sync setup` does and
    // runs a first pass. A failure leaves the lists to choose from and says why.
    Q_INVOKABLE void startSyncing(const QString& password, const QString& listUrl);
    // Drops what the set-up found and the answer of a step under way.
    Q_INVOKABLE void cancelSetup();
    // Forgets the account: the sync state (conflict log included) and the password in
    // the keyring. The tasks are not touched; a pass under way is dropped.
    Q_INVOKABLE void stopSyncing();

    const SyncState& state() const { return state_; }
    bool isSetUp() const { return state_.account.has_value(); }
    bool isSyncing() const { return running_ != nullptr; }
    QString statusLine() const;
    bool hasFailed() const { return isSetUp() && !state_.lastError.empty(); }
    QString serverUrl() const;
    QString user() const;
    QString listName() const;
    QString listUrl() const;
    QString lastPass() const;
    int pendingChanges() const { return static_cast<int>(state_.localChanges.size()); }
    // Newest first: {when, title, text}.
    QVariantList conflicts() const;
    // What went wrong with the state's own file, as a sentence; empty when nothing did.
    QString notice() const { return notice_; }
    QString setupStep() const { return setupStep_; }
    QString setupError() const { return setupError_; }
    QVariantList foundLists() const;
    QString newListName() const;

    static const char* notSetUpSentence();

Q_SIGNALS:
    void changed();
    // A pass ended (well or not) and its result was taken in.
    void passFinished();

private:
    struct Pass;
    // Work for the worker thread, and what follows on this one once it is done.
    struct Job {
        std::function<void()> work;
        std::function<void()> done;
        // Still run (without `done`) when the object is destroyed before it started.
        bool beforeExit = false;
    };
    void startPass();
    void finishPass(const std::shared_ptr<Pass>& pass);
    void saveState();
    // Runs the job when the worker is free, else after those queued before it.
    void enqueue(Job job);
    void startJob(Job job);
    void setSetupStep(const QString& step, const QString& error = {});
    // Ends the find step under way, if any, at its next look at the flag.
    void abandonFind();

    TaskList tasks_;
    SyncStateFile stateFile_;
    std::shared_ptr<const TaskCoding> coding_;
    CollectionOpener openCollection_;
    Calendar calendar_;
    Clock clock_;
    SyncState state_;
    // The task list as last seen, to tell what a change changed.
    std::vector<TaskItem> lastSeen_;
    bool started_ = false;
    // The state file was read (an unreadable one is left alone: no set-up over it).
    bool stateLoaded_ = false;
    bool stateDirty_ = false;
    // The store is taking in a pass's result: not a change made here.
    bool applyingPass_ = false;
    // Another pass was asked for while one ran.
    bool passWanted_ = false;
    QThread* worker_ = nullptr;
    std::deque<Job> jobs_;
    std::shared_ptr<Pass> running_;
    std::vector<std::function<void(const PassReport&)>> waiting_;
    QString notice_;
    QString setupStep_ = QStringLiteral("form");
    QString setupError_;
    // What `findTaskLists` found, for whom.
    QUrl setupServer_;
    QString setupUser_;
    CalDavAccountInfo found_;
    // Counts set-up steps: the answer of one that was cancelled or followed is dropped.
    int setupRun_ = 0;
    // Set to end the find step under way, and (when the app quits) the start step.
    std::shared_ptr<std::atomic<bool>> findStop_;
    std::shared_ptr<std::atomic<bool>> quitting_ = std::make_shared<std::atomic<bool>>(false);
    QTimer afterChange_;
    QTimer period_;
    QTimer lineRefresh_;
};

} // namespace daywyn::sync
