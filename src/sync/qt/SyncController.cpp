#include "sync/qt/SyncController.h"

#include <QThread>

#include "sync/SyncStatusText.h"
#include "sync/qt/SyncAccountAccess.h"

namespace daywyn::sync {

// One pass: what it was given on this thread, and what the worker made of it.
struct SyncController::Pass {
    SyncAccount account;
    std::vector<TaskItem> snapshot;
    SyncState state;
    Instant startedAt;
    Calendar calendar;
    std::shared_ptr<const TaskCoding> coding;
    CollectionOpener openCollection;
    // Set when the pass's result is no longer wanted: sync stopped, the app quits.
    std::shared_ptr<std::atomic<bool>> stop;
    std::vector<std::function<void(const PassReport&)>> done;
    // Written by the worker, read here once it has finished.
    SyncOutcome outcome;

    void run() {
        auto collection = openCollection(account, stop);
        if (!collection) {
            outcome.tasks = snapshot;
            outcome.state = state;
            outcome.error = collection.error();
            outcome.state.lastError = outcome.error;
            return;
        }
        outcome = runSyncPass(*collection.value(), *coding, snapshot, state, startedAt, calendar);
    }
};

SyncController::SyncController(TaskList tasks, SyncStateFile stateFile,
                               std::shared_ptr<const TaskCoding> coding,
                               CollectionOpener openCollection, Calendar calendar, Clock clock,
                               Timing timing, QObject* parent)
    : QObject(parent)
    , tasks_(std::move(tasks))
    , stateFile_(std::move(stateFile))
    , coding_(std::move(coding))
    , openCollection_(std::move(openCollection))
    , calendar_(std::move(calendar))
    , clock_(std::move(clock)) {
    afterChange_.setSingleShot(true);
    afterChange_.setInterval(timing.afterChangeMilliseconds);
    connect(&afterChange_, &QTimer::timeout, this, &SyncController::startPass);
    period_.setInterval(timing.periodMilliseconds);
    // A pass a little late costs nothing; the system may batch the wake-ups.
    period_.setTimerType(Qt::VeryCoarseTimer);
    // A tick during a pass is dropped: that pass already covers it.
    connect(&period_, &QTimer::timeout, this, [this] {
        if (!worker_) {
            startPass();
        }
    });
    lineRefresh_.setInterval(timing.lineRefreshMilliseconds);
    lineRefresh_.setTimerType(Qt::VeryCoarseTimer);
    connect(&lineRefresh_, &QTimer::timeout, this, &SyncController::changed);
}

SyncController::~SyncController() {
    if (worker_) {
        // The pass's result is dropped: the server keeps what it got, and the next run's
        // first pass finds it there again. A server that does not answer does not hold
        // up quitting.
        quitting_->store(true);
        abandonFind();
        if (running_) {
            running_->stop->store(true);
        }
        worker_->wait();
        delete worker_;
    }
    // A forgotten account's password does not stay in the keyring because the app quit.
    for (const Job& job : jobs_) {
        if (job.beforeExit) {
            job.work();
        }
    }
    if (stateDirty_) {
        saveState();
    }
}

const char* SyncController::notSetUpSentence() {
    return "Task sync is not set up. Choose a CalDAV server in Settings › Calendars › Task sync.";
}

void SyncController::start(ResumeSignal* resume) {
    if (started_) {
        return;
    }
    started_ = true;
    auto loaded = stateFile_.load(clock_());
    if (!loaded) {
        // Unreadable, and left as it is: nothing syncs rather than start afresh over it.
        notice_ = QString::fromStdString(loaded.error());
        Q_EMIT changed();
        return;
    }
    state_ = std::move(loaded.value().state);
    stateLoaded_ = true;
    if (isSetUp()) {
        lastSeen_ = tasks_.tasks();
    }
    notice_ = QString::fromStdString(loaded.value().notice);
    if (resume) {
        // After a wake the network may take a moment: the same quiet time as a change.
        connect(resume, &ResumeSignal::resumed, this, [this] {
            if (isSetUp()) {
                afterChange_.start();
            }
        });
    }
    period_.start();
    lineRefresh_.start();
    if (isSetUp()) {
        startPass();
    }
    Q_EMIT changed();
}

void SyncController::noteStoreChange(const std::vector<TaskItem>& tasks) {
    // Without an account nothing is noted, and the list is not copied for nothing.
    if (applyingPass_ || !started_ || !isSetUp()) {
        return;
    }
    const std::size_t before = state_.localChanges.size();
    // A change to this machine's reminder bookkeeping alone asks for no pass.
    if (noteLocalChanges(state_, lastSeen_, tasks, clock_())) {
        stateDirty_ = true;
        afterChange_.start();
    }
    if (state_.localChanges.size() != before) {
        Q_EMIT changed();
    }
    lastSeen_ = tasks;
}

void SyncController::syncNow() {
    if (!isSetUp()) {
        return;
    }
    afterChange_.stop();
    startPass();
}

void SyncController::runPass(std::function<void(const PassReport&)> done) {
    if (!isSetUp()) {
        done(PassReport{{}, notSetUpSentence()});
        return;
    }
    waiting_.push_back(std::move(done));
    syncNow();
}

void SyncController::startPass() {
    if (!isSetUp()) {
        return;
    }
    if (worker_) {
        passWanted_ = true;
        return;
    }
    passWanted_ = false;
    afterChange_.stop();
    auto pass = std::make_shared<Pass>(Pass{*state_.account,
                                            tasks_.tasks(),
                                            state_,
                                            clock_(),
                                            calendar_,
                                            coding_,
                                            openCollection_,
                                            std::make_shared<std::atomic<bool>>(false),
                                            std::exchange(waiting_, {}),
                                            {}});
    running_ = pass;
    startJob(Job{[pass] { pass->run(); },
                 [this, pass] {
                     finishPass(pass);
                 }});
    Q_EMIT changed();
}

void SyncController::enqueue(Job job) {
    if (worker_) {
        jobs_.push_back(std::move(job));
    } else {
        startJob(std::move(job));
    }
}

void SyncController::startJob(Job job) {
    worker_ = QThread::create(std::move(job.work));
    connect(worker_, &QThread::finished, this, [this, done = std::move(job.done)] {
        worker_->wait();
        delete worker_;
        worker_ = nullptr;
        done();
        if (worker_) {
            return;
        }
        if (!jobs_.empty()) {
            Job next = std::move(jobs_.front());
            jobs_.pop_front();
            startJob(std::move(next));
        } else if (passWanted_) {
            startPass();
        }
    });
    worker_->start();
}

void SyncController::finishPass(const std::shared_ptr<Pass>& pass) {
    running_.reset();
    SyncOutcome& outcome = pass->outcome;
    const Instant now = clock_();
    if (state_.account != pass->account) {
        // Sync was stopped while the pass ran: what it fetched is not taken in.
        const PassReport dropped{{}, notSetUpSentence()};
        for (const auto& done : pass->done) {
            done(dropped);
        }
        Q_EMIT changed();
        Q_EMIT passFinished();
        return;
    }

    bool taken = true;
    if (outcome.tasksChanged) {
        applyingPass_ = true;
        // Done here, on the thread that edits the list, so nothing comes in between.
        const auto failed =
            tasks_.replace(applySyncResult(tasks_.tasks(), pass->snapshot, outcome.tasks));
        applyingPass_ = false;
        if (failed) {
            // The tasks could not be saved: the state stays as it was, so the next pass
            // fetches the same changes again.
            taken = false;
            outcome.error = *failed;
        }
    }
    if (taken) {
        // Edits made here while the pass ran (and any rank the store repaired) are sent
        // by the next pass; an edit keeps the time it was noted at.
        const auto& current = tasks_.tasks();
        SyncState next = std::move(outcome.state);
        noteLocalChanges(next, outcome.tasks, current, now);
        for (auto& [id, change] : next.localChanges) {
            const auto noted = state_.localChanges.find(id);
            if (noted == state_.localChanges.end()) {
                continue;
            }
            const auto during = [&](Instant at) {
                return at.seconds >= pass->startedAt.seconds;
            };
            if (during(noted->second.changedAt)) {
                change.changedAt = noted->second.changedAt;
            }
            for (auto& [field, at] : change.fields) {
                if (const auto t = noted->second.fields.find(field);
                    t != noted->second.fields.end() && during(t->second)) {
                    at = t->second;
                }
            }
        }
        state_ = std::move(next);
        lastSeen_ = current;
    } else {
        state_.lastError = outcome.error;
    }
    saveState();

    const PassReport report{outcome.summary, outcome.error};
    for (const auto& done : pass->done) {
        done(report);
    }
    Q_EMIT changed();
    Q_EMIT passFinished();
}

void SyncController::saveState() {
    if (auto saved = stateFile_.save(state_); !saved) {
        notice_ = QString::fromStdString(saved.error());
        stateDirty_ = true;
        return;
    }
    stateDirty_ = false;
}

QString SyncController::statusLine() const {
    return QString::fromStdString(
        SyncStatusText::drawerLine(state_, isSyncing(), clock_(), calendar_));
}

QString SyncController::serverUrl() const {
    return state_.account ? QString::fromStdString(state_.account->serverUrl) : QString();
}

QString SyncController::user() const {
    return state_.account ? QString::fromStdString(state_.account->user) : QString();
}

QString SyncController::listName() const {
    return state_.account ? QString::fromStdString(state_.account->listName) : QString();
}

QString SyncController::listUrl() const {
    return state_.account ? QString::fromStdString(state_.account->collectionUrl) : QString();
}

QString SyncController::lastPass() const {
    return isSetUp() ? QString::fromStdString(SyncStatusText::lastPass(state_, clock_(), calendar_))
                     : QString();
}

QVariantList SyncController::conflicts() const {
    QVariantList rows;
    const Instant now = clock_();
    for (auto c = state_.conflicts.rbegin(); c != state_.conflicts.rend(); ++c) {
        rows.append(QVariantMap{
            {QStringLiteral("when"),
             QString::fromStdString(SyncStatusText::when(c->at, now, calendar_))},
            {QStringLiteral("title"), QString::fromStdString(c->title)},
            {QStringLiteral("text"), QString::fromStdString(SyncStatusText::conflict(*c))}});
    }
    return rows;
}

void SyncController::setSetupStep(const QString& step, const QString& error) {
    setupStep_ = step;
    setupError_ = error;
    Q_EMIT changed();
}

void SyncController::findTaskLists(const QString& serverUrl, const QString& user,
                                   const QString& password) {
    if (isSetUp() || setupStep_ == QLatin1String("starting")) {
        return;
    }
    ++setupRun_;
    found_ = {};
    if (!stateLoaded_) {
        // The unreadable state file stays as it is, and so nothing may be set up over it.
        setSetupStep(QStringLiteral("form"),
                     notice_.isEmpty() ? QStringLiteral("The sync state could not be read.")
                                       : notice_);
        return;
    }
    auto server = syncServerAddress(serverUrl.toStdString());
    if (serverUrl.trimmed().isEmpty()) {
        server = Error{"Give the address of your CalDAV server."};
    } else if (user.trimmed().isEmpty()) {
        server = Error{"Give your user name on the server."};
    }
    if (!server) {
        setSetupStep(QStringLiteral("form"), QString::fromStdString(server.error()));
        return;
    }
    setupServer_ = server.value();
    setupUser_ = user.trimmed();
    auto answer = std::make_shared<Result<CalDavAccountInfo>>(CalDavAccountInfo{});
    const DavCredentials credentials{setupUser_, password};
    const QUrl address = setupServer_;
    const int run = setupRun_;
    // A find that was cancelled a moment ago gives up its request, so this one need not
    // wait for it.
    abandonFind();
    findStop_ = std::make_shared<std::atomic<bool>>(false);
    enqueue(Job{[answer, address, credentials, stop = findStop_] {
                    CalDavDiscovery discovery(address, credentials);
                    discovery.stopWhen(stop);
                    *answer = discovery.discover();
                },
                [this, answer, run] {
                    if (run != setupRun_) {
                        return;
                    }
                    if (!*answer) {
                        setSetupStep(QStringLiteral("form"),
                                     QString::fromStdString(answer->error()));
                        return;
                    }
                    found_ = std::move(answer->value());
                    setSetupStep(QStringLiteral("choosing"));
                }});
    setSetupStep(QStringLiteral("finding"));
}

void SyncController::startSyncing(const QString& password, const QString& listUrl) {
    if (isSetUp() || setupStep_ != QLatin1String("choosing")) {
        return;
    }
    const int run = ++setupRun_;
    struct Answer {
        SyncState state;
        SyncAccount account;
        std::string error;
    };
    auto answer = std::make_shared<Answer>();
    answer->state = state_;
    answer->account.serverUrl = setupServer_.toString().toStdString();
    answer->account.user = setupUser_.toStdString();
    const std::optional<std::string> wanted =
        listUrl.isEmpty() ? std::string(kDefaultTaskListName) : listUrl.toStdString();
    enqueue(Job{
        [answer, found = found_, address = setupServer_,
         credentials = DavCredentials{setupUser_, password}, wanted, stop = StopFlag(quitting_)] {
            CalDavDiscovery discovery(address, credentials);
            discovery.stopWhen(stop);
            auto settled = settleTaskList(discovery, found, wanted);
            if (!settled) {
                answer->error = settled.error();
                return;
            }
            answer->account.collectionUrl = settled.value().list.url;
            answer->account.listName = settled.value().list.name;
            if (auto stored = storeSyncAccount(answer->state, answer->account,
                                               credentials.password.toStdString());
                !stored) {
                answer->error = stored.error();
            }
        },
        [this, answer, run] {
            if (run != setupRun_) {
                return;
            }
            if (!answer->error.empty()) {
                setSetupStep(QStringLiteral("choosing"), QString::fromStdString(answer->error));
                return;
            }
            state_ = std::move(answer->state);
            lastSeen_ = tasks_.tasks();
            found_ = {};
            saveState();
            setSetupStep(QStringLiteral("form"));
            startPass();
        }});
    setSetupStep(QStringLiteral("starting"));
}

void SyncController::abandonFind() {
    if (findStop_) {
        findStop_->store(true);
    }
}

void SyncController::cancelSetup() {
    if (setupStep_ == QLatin1String("starting")) {
        // The account may already be in the keyring: the step ends as it ends.
        return;
    }
    ++setupRun_;
    found_ = {};
    abandonFind();
    setSetupStep(QStringLiteral("form"));
}

void SyncController::stopSyncing() {
    if (!isSetUp()) {
        return;
    }
    const SyncAccount account = *state_.account;
    state_ = SyncState{};
    lastSeen_.clear();
    afterChange_.stop();
    passWanted_ = false;
    // The pass under way ends at its next request; the password goes after it.
    if (running_) {
        running_->stop->store(true);
    }
    saveState();
    auto removed = std::make_shared<Status>();
    enqueue(Job{[account, removed] { *removed = removeSyncPassword(account); },
                [this, removed] {
                    if (!*removed && !isSetUp()) {
                        setSetupStep(setupStep_, QString::fromStdString(removed->error()));
                    }
                },
                true});
    setSetupStep(QStringLiteral("form"));
}

QVariantList SyncController::foundLists() const {
    QVariantList rows;
    for (const auto& list : found_.lists) {
        rows.append(QVariantMap{{QStringLiteral("name"), QString::fromStdString(list.name)},
                                {QStringLiteral("url"), QString::fromStdString(list.url)}});
    }
    return rows;
}

QString SyncController::newListName() const {
    if (found_.homeUrl.empty()) {
        return {};
    }
    for (const auto& list : found_.lists) {
        if (list.name == kDefaultTaskListName) {
            return {};
        }
    }
    return QString::fromLatin1(kDefaultTaskListName);
}

} // namespace daywyn::sync
