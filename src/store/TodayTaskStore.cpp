#include "store/TodayTaskStore.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"
#include "store/DailyReportBuilder.h"
#include "store/FirstRunTasks.h"
#include "store/Recurrence.h"
#include "store/TaskTimer.h"

namespace daywyn {

namespace {

constexpr const char* kSaveFailed = "Daywyn could not save changes: ";
constexpr const char* kVoiceSaveFailed =
    "Daywyn could not save your voice tasks. Please try again: ";

// Keeps the first open holder of each rank 1-3; every other rank is cleared.
// Both repairs say whether they changed anything.
bool repairPriorities(std::vector<TaskItem>& tasks) {
    bool taken[4] = {false, false, false, false};
    bool changed = false;
    for (auto& task : tasks) {
        if (!task.priorityRank) {
            continue;
        }
        const long long rank = *task.priorityRank;
        if (task.isComplete || rank < 1 || rank > 3 || taken[rank]) {
            task.priorityRank.reset();
            changed = true;
        } else {
            taken[rank] = true;
        }
    }
    return changed;
}

// One timer at a time: the first open running task keeps running; every other live
// start (completed tasks included) is closed at the load time.
bool repairTimers(std::vector<TaskItem>& tasks, Instant now, int budgetWarningLeadMinutes) {
    bool keptOne = false;
    bool changed = false;
    for (auto& task : tasks) {
        if (!task.liveSessionStartedAt) {
            continue;
        }
        if (!task.isComplete && !keptOne) {
            keptOne = true;
            continue;
        }
        stopLiveSession(task, now, budgetWarningLeadMinutes);
        changed = true;
    }
    return changed;
}

long long civilDay(const Calendar& calendar, Instant at) {
    const DateParts p = calendar.parts(at);
    return daysFromCivil(p.year, static_cast<unsigned>(p.month), static_cast<unsigned>(p.day));
}

std::optional<Instant> shiftedByDays(const std::optional<Instant>& date, long long days,
                                     const Calendar& calendar) {
    if (!date || days == 0) {
        return date;
    }
    return calendar.addingDays(*date, days).value_or(*date);
}

// Plans the task for `day` (a day start). A start keeps its wall-clock time, given
// by the caller, and drags its end and reminder along by the same difference. A task
// without a start is planned for the whole day, and its reminder and end move by the
// same number of calendar days. Either way the notification bookkeeping is reset so
// the moved dates are scheduled again.
void moveToDay(TaskItem& task, Instant day, int hour, int minute, int second,
               const Calendar& calendar) {
    if (task.scheduledStart) {
        const auto newStart = calendar.settingTime(day, hour, minute, second);
        if (!newStart) {
            return;
        }
        const double shift = *newStart - *task.scheduledStart;
        task.scheduledStart = *newStart;
        if (task.scheduledEnd) {
            *task.scheduledEnd += shift;
        }
        if (task.reminderDate) {
            *task.reminderDate += shift;
        }
    } else {
        const Instant oldDay = task.scheduledDay.value_or(task.createdAt);
        const long long days = civilDay(calendar, day) - civilDay(calendar, oldDay);
        task.scheduledDay = day;
        task.reminderDate = shiftedByDays(task.reminderDate, days, calendar);
        task.scheduledEnd = shiftedByDays(task.scheduledEnd, days, calendar);
    }
    task.scheduledReminderDate.reset();
    task.notifiedOverdueEnd.reset();
}

} // namespace

// Private helpers with access to the store's fields.
struct TodayTaskStore::Impl {
    static std::optional<std::size_t> indexOf(const TodayTaskStore& store, const Uuid& id) {
        const auto& tasks = store.tasks_;
        for (std::size_t i = 0; i < tasks.size(); ++i) {
            if (tasks[i].id == id) {
                return i;
            }
        }
        return std::nullopt;
    }

    static void notifyObservers(TodayTaskStore& store) {
        if (store.notificationHolds_ > 0) {
            store.heldObservation_ = true;
            return;
        }
        // A copy, so an observer may add or remove observers while being called.
        const auto observers = store.observers_;
        for (const auto& [id, observer] : observers) {
            if (observer) {
                observer();
            }
        }
    }

    // Writes the current state; the reason of a failure, or nothing.
    static std::optional<std::string> write(TodayTaskStore& store) {
        if (!store.repository_) {
            return std::nullopt;
        }
        const Status status = store.repository_->save(
            PersistedStateView(store.tasks_, store.preferences_, store.reports_));
        if (!status) {
            return status.error();
        }
        return std::nullopt;
    }

    static void persist(TodayTaskStore& store) {
        if (const auto reason = write(store)) {
            store.persistenceError_ = kSaveFailed + *reason;
        } else if (store.repository_) {
            store.persistenceError_.reset();
        }
    }

    // The change stays in memory whether or not it reached the disk.
    static void commitChange(TodayTaskStore& store) {
        persist(store);
        tellMeaningfulChange(store);
    }

    // The change listener, then the observers (both later, while notifications are held).
    static void tellMeaningfulChange(TodayTaskStore& store) {
        if (store.notificationHolds_ > 0) {
            store.heldMeaningfulChange_ = true;
        } else if (store.onMeaningfulChange_) {
            store.onMeaningfulChange_(store.tasks_, store.preferences_);
        }
        notifyObservers(store);
    }

    // The change has already been applied to the task list in place (so 20,000 tasks
    // are never copied); if the write fails, `revert` undoes it and the sentence
    // beginning with `failurePrefix` is returned. `onSuccess` runs before anyone is told.
    template <typename Revert, typename OnSuccess>
    static std::optional<std::string> saveTasks(TodayTaskStore& store, Revert&& revert,
                                                OnSuccess&& onSuccess,
                                                const char* failurePrefix = kSaveFailed) {
        if (const auto reason = write(store)) {
            revert();
            return failurePrefix + *reason;
        }
        onSuccess();
        if (store.repository_) {
            store.persistenceError_.reset();
        }
        tellMeaningfulChange(store);
        return std::nullopt;
    }

    template <typename Revert>
    static std::optional<std::string> saveTasks(TodayTaskStore& store, Revert&& revert) {
        return saveTasks(store, std::forward<Revert>(revert), [] {});
    }

    static void stop(TodayTaskStore& store, std::size_t index, Instant at) {
        stopLiveSession(store.tasks_[index], at, store.preferences_.budgetWarningLeadMinutes);
    }

    static void complete(TodayTaskStore& store, std::size_t index, Instant at,
                         const Calendar& calendar) {
        TaskItem& task = store.tasks_[index];
        task.isComplete = true;
        task.priorityRank.reset();
        task.completedAt = at;
        auto next = makeNextOccurrence(task, at, calendar);
        if (next) {
            task.nextOccurrenceCreated = true;
            store.tasks_.push_back(std::move(*next)); // `task` is invalid from here on
        }
    }
};

TodayTaskStore::TodayTaskStore(std::unique_ptr<TaskRepository> repository, Instant now,
                               const Calendar& calendar)
    : repository_(std::move(repository)) {
    if (!repository_) {
        return;
    }
    auto loaded = repository_->load();
    if (!loaded) {
        // The file that failed must survive: nothing is written until the first change.
        persistenceError_ = loaded.error();
        return;
    }
    if (!loaded.value()) {
        tasks_ = makeFirstRunTasks(now, calendar);
    } else {
        PersistedState& state = *loaded.value();
        tasks_ = std::move(state.tasks);
        reports_ = std::move(state.reports);
        preferences_ = std::move(state.preferences);
        const bool repairedPriorities = repairPriorities(tasks_);
        const bool repairedTimers =
            repairTimers(tasks_, now, preferences_.budgetWarningLeadMinutes);
        // A file in the current format that needed no repair is already what a save
        // would write: rewriting it would cost a durable write of the whole file and
        // change its modification time for nothing.
        if (repository_->loadedCurrentFormat() && !repairedPriorities && !repairedTimers) {
            return;
        }
    }
    // A first-run or normalised (perhaps migrated) state is on disk before any use.
    Impl::persist(*this);
}

TodayTaskStore::~TodayTaskStore() = default;

void TodayTaskStore::setFocusedTaskID(std::optional<Uuid> id) {
    if (focusedTaskID_ == id) {
        return;
    }
    focusedTaskID_ = id;
    Impl::notifyObservers(*this);
}

TodayTaskStore::NotificationHold::NotificationHold(TodayTaskStore* store)
    : store_(store) {
    ++store_->notificationHolds_;
}

TodayTaskStore::NotificationHold::NotificationHold(NotificationHold&& other) noexcept
    : store_(std::exchange(other.store_, nullptr)) {}

TodayTaskStore::NotificationHold::~NotificationHold() {
    if (store_ == nullptr || --store_->notificationHolds_ > 0) {
        return;
    }
    TodayTaskStore& store = *store_;
    const bool meaningful = std::exchange(store.heldMeaningfulChange_, false);
    const bool observed = std::exchange(store.heldObservation_, false);
    if (meaningful && store.onMeaningfulChange_) {
        store.onMeaningfulChange_(store.tasks_, store.preferences_);
    }
    if (observed) {
        Impl::notifyObservers(store);
    }
}

TodayTaskStore::NotificationHold TodayTaskStore::holdNotifications() {
    return NotificationHold(this);
}

void TodayTaskStore::setOnMeaningfulChange(ChangeListener listener) {
    onMeaningfulChange_ = std::move(listener);
}

TodayTaskStore::ObserverId TodayTaskStore::addObserver(Observer observer) {
    const ObserverId id = nextObserverId_++;
    observers_.emplace_back(id, std::move(observer));
    return id;
}

void TodayTaskStore::removeObserver(ObserverId id) {
    std::erase_if(observers_, [id](const auto& entry) { return entry.first == id; });
}

// ---- tasks ----

std::optional<std::string> TodayTaskStore::addTaskReliably(const TaskDraft& draft, Instant at,
                                                           const Calendar& calendar) {
    if (auto message = draft.validationMessage()) {
        return message;
    }
    TaskItem task;
    task.id = Uuid::random();
    task.createdAt = at;
    draft.applyTo(task, calendar);
    tasks_.push_back(std::move(task));
    return Impl::saveTasks(*this, [this] { tasks_.pop_back(); });
}

std::optional<std::string>
TodayTaskStore::addVoiceTasks(const std::vector<VoiceTaskCandidate>& candidates, Instant at,
                              const Calendar& calendar) {
    const std::size_t oldCount = tasks_.size();
    for (const auto& candidate : candidates) {
        if (isBlank(candidate.title)) {
            continue;
        }
        TaskItem task;
        task.id = Uuid::random();
        task.title = trimWhitespace(candidate.title);
        task.scheduledStart = candidate.scheduledStart;
        if (!candidate.scheduledStart && candidate.scheduledDay) {
            task.scheduledDay = calendar.startOfDay(*candidate.scheduledDay);
        }
        task.createdAt = at;
        task.checklist.emplace();
        tasks_.push_back(std::move(task));
    }
    if (tasks_.size() == oldCount) {
        return "Add at least one task title before saving.";
    }
    return Impl::saveTasks(
        *this, [this, oldCount] { tasks_.resize(oldCount); }, [] {}, kVoiceSaveFailed);
}

void TodayTaskStore::updateTask(const Uuid& id, const TaskDraft& draft, const Calendar& calendar) {
    if (draft.validationMessage()) {
        return;
    }
    const auto index = Impl::indexOf(*this, id);
    if (!index) {
        return;
    }
    TaskItem& task = tasks_[*index];
    const auto oldReminder = task.reminderDate;
    const auto oldStart = task.scheduledStart;
    const auto oldEnd = task.scheduledEnd;
    const auto oldEstimate = task.estimatedMinutes;
    draft.applyTo(task, calendar);
    // A changed date must be scheduled again; the reminder also fires at the start.
    if (task.reminderDate != oldReminder || task.scheduledStart != oldStart) {
        task.scheduledReminderDate.reset();
    }
    if (task.scheduledEnd != oldEnd) {
        task.notifiedOverdueEnd.reset();
    }
    if (task.estimatedMinutes != oldEstimate) {
        task.scheduledBudgetAlerts.clear();
    }
    Impl::commitChange(*this);
}

void TodayTaskStore::toggleChecklistItem(const Uuid& taskID, const Uuid& itemID) {
    const auto index = Impl::indexOf(*this, taskID);
    if (!index || !tasks_[*index].checklist) {
        return;
    }
    for (auto& item : *tasks_[*index].checklist) {
        if (item.id == itemID) {
            item.isComplete = !item.isComplete;
            Impl::commitChange(*this);
            return;
        }
    }
}

void TodayTaskStore::completeTask(const Uuid& id, Instant at, const Calendar& calendar) {
    const auto index = Impl::indexOf(*this, id);
    if (!index || tasks_[*index].isComplete) {
        return;
    }
    Impl::stop(*this, *index, at);
    Impl::complete(*this, *index, at, calendar);
    Impl::commitChange(*this);
}

void TodayTaskStore::toggleComplete(const Uuid& id, Instant at, const Calendar& calendar) {
    const auto index = Impl::indexOf(*this, id);
    if (!index) {
        return;
    }
    Impl::stop(*this, *index, at);
    if (tasks_[*index].isComplete) {
        // The rank stays cleared and an existing next occurrence stays.
        tasks_[*index].isComplete = false;
        tasks_[*index].completedAt.reset();
    } else {
        Impl::complete(*this, *index, at, calendar);
    }
    Impl::commitChange(*this);
}

std::optional<std::string> TodayTaskStore::togglePriority(const Uuid& id) {
    const auto found = std::find_if(tasks_.begin(), tasks_.end(), [&id](const TaskItem& task) {
        return task.id == id && !task.isComplete;
    });
    if (found == tasks_.end()) {
        return "Task is no longer available.";
    }
    TaskItem& task = *found;
    const auto oldRank = task.priorityRank;
    if (oldRank) {
        // No renumbering: the other pinned tasks keep their ranks.
        task.priorityRank.reset();
    } else {
        bool taken[4] = {false, false, false, false};
        for (const auto& other : tasks_) {
            if (!other.isComplete && other.priorityRank && *other.priorityRank >= 1 &&
                *other.priorityRank <= 3) {
                taken[*other.priorityRank] = true;
            }
        }
        long long freeRank = 1;
        while (freeRank <= 3 && taken[freeRank]) {
            ++freeRank;
        }
        if (freeRank > 3) {
            return "You can pin up to three priorities. Unpin one first.";
        }
        task.priorityRank = freeRank;
    }
    const auto position = static_cast<std::size_t>(found - tasks_.begin());
    return Impl::saveTasks(*this,
                           [this, position, oldRank] { tasks_[position].priorityRank = oldRank; });
}

std::optional<std::string> TodayTaskStore::deleteTask(const Uuid& id, Instant at) {
    const auto index = Impl::indexOf(*this, id);
    if (!index) {
        return std::nullopt;
    }
    const auto position = tasks_.begin() + static_cast<std::ptrdiff_t>(*index);
    // The undo copy comes back stopped, with the running span kept as a session.
    TaskItem copy = *position;
    stopLiveSession(copy, at, preferences_.budgetWarningLeadMinutes);

    TaskItem removed = std::move(*position);
    tasks_.erase(position);
    return Impl::saveTasks(
        *this,
        [this, &removed, index] {
            tasks_.insert(tasks_.begin() + static_cast<std::ptrdiff_t>(*index), std::move(removed));
        },
        [this, &copy, index] {
            undoDescription_ = "Delete " + copy.title;
            if (focusedTaskID_ == copy.id) {
                focusedTaskID_.reset();
            }
            lastDeletion_ = TaskDeletion{std::move(copy), *index};
        });
}

std::optional<std::string> TodayTaskStore::undoLastDeletion() {
    if (!lastDeletion_) {
        return "There is nothing to undo.";
    }
    const auto forget = [this] {
        lastDeletion_.reset();
        undoDescription_.reset();
    };
    // On failure the deletion is kept so the user can try again.
    if (auto* deleted = std::get_if<TaskDeletion>(&*lastDeletion_)) {
        if (Impl::indexOf(*this, deleted->task.id)) {
            return "That task is already restored.";
        }
        const std::size_t at = std::min(deleted->index, tasks_.size());
        tasks_.insert(tasks_.begin() + static_cast<std::ptrdiff_t>(at), deleted->task);
        return Impl::saveTasks(
            *this, [this, at] { tasks_.erase(tasks_.begin() + static_cast<std::ptrdiff_t>(at)); },
            forget);
    }
    auto& session = std::get<SessionDeletion>(*lastDeletion_);
    const auto index = Impl::indexOf(*this, session.taskID);
    if (!index) {
        return "The original task no longer exists.";
    }
    auto& sessions = tasks_[*index].sessions;
    if (std::any_of(sessions.begin(), sessions.end(),
                    [&session](const WorkSession& s) { return s.id == session.session.id; })) {
        return "That session is already restored.";
    }
    const std::size_t at = std::min(session.index, sessions.size());
    sessions.insert(sessions.begin() + static_cast<std::ptrdiff_t>(at), session.session);
    return Impl::saveTasks(
        *this,
        [&sessions, at] { sessions.erase(sessions.begin() + static_cast<std::ptrdiff_t>(at)); },
        forget);
}

void TodayTaskStore::doToday(const Uuid& id, Instant displayedDay, const Calendar& calendar) {
    const auto index = Impl::indexOf(*this, id);
    if (!index) {
        return;
    }
    TaskItem& task = tasks_[*index];
    const Instant day = calendar.startOfDay(displayedDay);
    DateParts time;
    if (task.scheduledStart) {
        time = calendar.parts(*task.scheduledStart);
    }
    moveToDay(task, day, time.hour, time.minute, time.second, calendar);
    Impl::commitChange(*this);
}

void TodayTaskStore::carryForward(const Uuid& id, Instant now, const Calendar& calendar) {
    const auto index = Impl::indexOf(*this, id);
    if (!index) {
        return;
    }
    const auto tomorrow = calendar.addingDays(calendar.startOfDay(now), 1);
    if (!tomorrow) {
        return;
    }
    TaskItem& task = tasks_[*index];
    DateParts time;
    if (task.scheduledStart) {
        time = calendar.parts(*task.scheduledStart);
    }
    moveToDay(task, calendar.startOfDay(*tomorrow), time.hour, time.minute, 0, calendar);
    Impl::commitChange(*this);
}

void TodayTaskStore::updatePreferences(const std::function<void(AppPreferences&)>& change) {
    AppPreferences changed = preferences_;
    if (change) {
        change(changed);
    }
    preferences_ = std::move(changed);
    Impl::commitChange(*this);
}

// ---- timer and sessions ----

void TodayTaskStore::toggleTimer(const Uuid& id, Instant at) {
    const auto index = Impl::indexOf(*this, id);
    if (!index) {
        return;
    }
    const bool wasRunning = tasks_[*index].isRunning();
    // Starting one task silently stops every other: one timer at a time.
    for (std::size_t i = 0; i < tasks_.size(); ++i) {
        Impl::stop(*this, i, at);
    }
    if (!wasRunning && !tasks_[*index].isComplete) {
        tasks_[*index].liveSessionStartedAt = at;
    }
    Impl::commitChange(*this);
}

void TodayTaskStore::extendScheduledEnd(const Uuid& id, long long minutes, Instant now,
                                        const Calendar& calendar) {
    if (minutes < 1) {
        return;
    }
    const auto index = Impl::indexOf(*this, id);
    if (!index) {
        return;
    }
    TaskItem& task = tasks_[*index];
    // An end already in the past is extended from the present, not from the old end.
    const Instant base = std::max(task.scheduledEnd.value_or(now), now);
    const auto newEnd = calendar.addingMinutes(base, minutes);
    if (!newEnd) {
        return;
    }
    task.scheduledEnd = *newEnd;
    task.notifiedOverdueEnd.reset();
    Impl::commitChange(*this);
}

void TodayTaskStore::addSession(const Uuid& taskID, const SessionDraft& draft) {
    const auto index = Impl::indexOf(*this, taskID);
    if (!index || draft.end <= draft.start) {
        return;
    }
    tasks_[*index].sessions.push_back(WorkSession{Uuid::random(), draft.start, draft.end});
    Impl::commitChange(*this);
}

void TodayTaskStore::updateSession(const Uuid& sessionID, const Uuid& taskID,
                                   const SessionDraft& draft) {
    const auto index = Impl::indexOf(*this, taskID);
    if (!index) {
        return;
    }
    for (auto& session : tasks_[*index].sessions) {
        if (session.id == sessionID) {
            session.start = draft.start;
            session.end = draft.end;
            Impl::commitChange(*this);
            return;
        }
    }
}

std::optional<std::string> TodayTaskStore::deleteSession(const Uuid& sessionID,
                                                         const Uuid& taskID) {
    const auto index = Impl::indexOf(*this, taskID);
    if (!index) {
        return std::nullopt;
    }
    auto& sessions = tasks_[*index].sessions;
    const auto found =
        std::find_if(sessions.begin(), sessions.end(),
                     [&sessionID](const WorkSession& s) { return s.id == sessionID; });
    if (found == sessions.end()) {
        return std::nullopt;
    }
    const auto position = static_cast<std::size_t>(found - sessions.begin());
    const WorkSession removed = *found;
    sessions.erase(found);
    return Impl::saveTasks(
        *this,
        [&sessions, position, &removed] {
            sessions.insert(sessions.begin() + static_cast<std::ptrdiff_t>(position), removed);
        },
        [this, &taskID, position, &removed] {
            lastDeletion_ = SessionDeletion{taskID, removed, position};
            undoDescription_ = "Delete work session";
        });
}

// ---- notification bookkeeping ----

void TodayTaskStore::markBudgetAlertScheduled(BudgetAlertKind kind, const Uuid& taskID) {
    if (const auto index = Impl::indexOf(*this, taskID)) {
        tasks_[*index].scheduledBudgetAlerts.insert(kind);
        Impl::commitChange(*this);
    }
}

void TodayTaskStore::markTaskReminderScheduled(const Uuid& taskID, Instant date) {
    if (const auto index = Impl::indexOf(*this, taskID)) {
        tasks_[*index].scheduledReminderDate = date;
        Impl::commitChange(*this);
    }
}

void TodayTaskStore::markOverdueEndScheduled(const Uuid& taskID, Instant date) {
    if (const auto index = Impl::indexOf(*this, taskID)) {
        tasks_[*index].notifiedOverdueEnd = date;
        Impl::commitChange(*this);
    }
}

// ---- sync ----

std::optional<std::string> TodayTaskStore::replaceWithSyncedTasks(std::vector<TaskItem> merged) {
    repairPriorities(merged);
    if (merged == tasks_) {
        return std::nullopt;
    }
    std::vector<TaskItem> previous = std::exchange(tasks_, std::move(merged));
    return Impl::saveTasks(
        *this, [this, &previous] { tasks_ = std::move(previous); },
        [this] {
            if (focusedTaskID_ && !Impl::indexOf(*this, *focusedTaskID_)) {
                focusedTaskID_.reset();
            }
        });
}

// ---- reports ----

std::optional<DailyReport> TodayTaskStore::generateDueReportIfNeeded(Instant at,
                                                                     const Calendar& calendar) {
    auto report = makeDueReport(tasks_, reports_, preferences_, at, calendar);
    if (!report) {
        return std::nullopt;
    }
    reports_.push_back(*report);
    std::stable_sort(reports_.begin(), reports_.end(),
                     [](const DailyReport& a, const DailyReport& b) { return a.day > b.day; });
    Impl::commitChange(*this);
    return report;
}

// ---- reading ----

const TaskItem* TodayTaskStore::task(const Uuid& id) const {
    const auto index = Impl::indexOf(*this, id);
    return index ? &tasks_[*index] : nullptr;
}

const TaskItem* TodayTaskStore::activeTask() const {
    const auto found = std::find_if(tasks_.begin(), tasks_.end(),
                                    [](const TaskItem& task) { return task.isRunning(); });
    return found == tasks_.end() ? nullptr : &*found;
}

std::size_t TodayTaskStore::unfinishedTaskCount() const {
    return static_cast<std::size_t>(std::count_if(
        tasks_.begin(), tasks_.end(), [](const TaskItem& task) { return !task.isComplete; }));
}

std::vector<const TaskItem*> TodayTaskStore::completedTaskHistory() const {
    std::vector<const TaskItem*> history;
    for (const auto& task : tasks_) {
        if (task.isComplete) {
            history.push_back(&task);
        }
    }
    std::stable_sort(history.begin(), history.end(), [](const TaskItem* a, const TaskItem* b) {
        return a->completedAt.value_or(a->createdAt) > b->completedAt.value_or(b->createdAt);
    });
    return history;
}

TaskDaySections TodayTaskStore::taskSections(Instant at, const Calendar& calendar) const {
    return makeTaskSections(tasks_, at, calendar);
}

} // namespace daywyn
