#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "base/Uuid.h"
#include "model/AppPreferences.h"
#include "model/DailyReport.h"
#include "model/TaskDraft.h"
#include "model/TaskItem.h"
#include "model/VoiceTaskCandidate.h"
#include "store/TaskDaySections.h"
#include "store/TaskRepository.h"

namespace daywyn {

// The single owner of the user's data while Daywyn runs: the ordered task list, the
// saved daily reports and the preferences. Every screen, notification action, quick
// add, voice import and the command line change data only through these operations.
// Each change is saved synchronously before the operation returns; operations that
// return a message return the sentence to show, or nothing on success. An unknown
// id makes an operation do nothing. Not thread-safe: one thread (the main thread).
class TodayTaskStore {
public:
    using ChangeListener =
        std::function<void(const std::vector<TaskItem>& tasks, const AppPreferences& preferences)>;
    using Observer = std::function<void()>;
    using ObserverId = std::uint64_t;

    // Loads through the repository (none: an in-memory store that starts empty and
    // never saves).
    // Nothing stored: the first-run sample tasks, saved at once. A stored state: its
    // priorities and timers repaired at `now`, saved at once. A load error: an empty
    // store showing the error in persistenceError, saving nothing until a change.
    TodayTaskStore(std::unique_ptr<TaskRepository> repository, Instant now,
                   const Calendar& calendar);
    ~TodayTaskStore();
    TodayTaskStore(const TodayTaskStore&) = delete;
    TodayTaskStore& operator=(const TodayTaskStore&) = delete;

    // ---- observable state ----
    const std::vector<TaskItem>& tasks() const { return tasks_; }
    const std::vector<DailyReport>& reports() const { return reports_; }
    const AppPreferences& preferences() const { return preferences_; }
    // The last load or save failure; cleared by the next successful save.
    const std::optional<std::string>& persistenceError() const { return persistenceError_; }
    // The task the drawer highlights; cleared when that task is deleted.
    const std::optional<Uuid>& focusedTaskID() const { return focusedTaskID_; }
    void setFocusedTaskID(std::optional<Uuid> id);
    // What "Undo" would restore ("Delete Call Ama"), present exactly while an undo is possible.
    const std::optional<std::string>& undoDescription() const { return undoDescription_; }

    // Called after every saved change of tasks or preferences (the application
    // environment's listener: notifications, calendars, the drawer's anchor).
    void setOnMeaningfulChange(ChangeListener listener);
    // Called after any change of the observable state, including a failed save, an
    // undo becoming available or the focus moving. Screens, the tray and the command
    // line's output observe through these.
    ObserverId addObserver(Observer observer);
    void removeObserver(ObserverId id);

    // While a hold lives, every change is saved as usual, but the change listener and
    // the observers are called only when the last hold ends, once for all the changes
    // made meanwhile. Lets a caller answer first (a verb handed over the bus) and
    // refresh the screens after. A hold must not outlive its store.
    class NotificationHold {
    public:
        NotificationHold(NotificationHold&& other) noexcept;
        NotificationHold& operator=(const NotificationHold&) = delete;
        ~NotificationHold();

    private:
        friend class TodayTaskStore;
        explicit NotificationHold(TodayTaskStore* store);
        TodayTaskStore* store_;
    };
    [[nodiscard]] NotificationHold holdNotifications();

    // ---- tasks ----
    // Adds a task built from the draft at `at`; on success it is the last task.
    std::optional<std::string> addTaskReliably(const TaskDraft& draft, Instant at,
                                               const Calendar& calendar);
    // Adds one task per reviewed candidate with a non-blank title, all or nothing.
    std::optional<std::string> addVoiceTasks(const std::vector<VoiceTaskCandidate>& candidates,
                                             Instant at, const Calendar& calendar);
    // Replaces the task's editable fields from the draft (nothing when it is invalid)
    // and resets the notification bookkeeping of a changed reminder, end or estimate.
    void updateTask(const Uuid& id, const TaskDraft& draft, const Calendar& calendar);
    // Ticks or unticks one checklist item.
    void toggleChecklistItem(const Uuid& taskID, const Uuid& itemID);
    // Completes an open task: stops its timer, unpins it, repeats it if it repeats.
    void completeTask(const Uuid& id, Instant at, const Calendar& calendar);
    // Completes an open task or reopens a completed one.
    void toggleComplete(const Uuid& id, Instant at, const Calendar& calendar);
    // Pins an open task with the lowest free rank of 1-3, or unpins it.
    std::optional<std::string> togglePriority(const Uuid& id);
    // Removes a task (its running span kept as a session) with one level of undo.
    std::optional<std::string> deleteTask(const Uuid& id, Instant at);
    // Restores the last deleted task or session.
    std::optional<std::string> undoLastDeletion();
    // Plans the task for the displayed day, keeping a start's time of day; its end and
    // reminder move with the start. Without a start the task is planned for the whole
    // day and its reminder and end move by the same number of calendar days. Either
    // way the reminder and end bookkeeping is cleared so both are scheduled again.
    void doToday(const Uuid& id, Instant displayedDay, const Calendar& calendar);
    // Moves the task to the day after `now`: a start keeps its hour and minute (seconds
    // 0) and drags its end and reminder by the same difference; otherwise as doToday.
    void carryForward(const Uuid& id, Instant now, const Calendar& calendar);
    // Applies the change to a copy of the preferences, then stores and saves it.
    void updatePreferences(const std::function<void(AppPreferences&)>& change);

    // ---- timer and sessions ----
    // Starts the task's timer (stopping any other) or stops it.
    void toggleTimer(const Uuid& id, Instant at);
    // Pushes the scheduled end later by whole minutes, from now when it has passed.
    void extendScheduledEnd(const Uuid& id, long long minutes, Instant now,
                            const Calendar& calendar);
    // Records a finished span by hand; one that does not end after it starts is refused.
    void addSession(const Uuid& taskID, const SessionDraft& draft);
    // Moves a recorded session to the draft's start and end.
    void updateSession(const Uuid& sessionID, const Uuid& taskID, const SessionDraft& draft);
    // Removes a session with one level of undo.
    std::optional<std::string> deleteSession(const Uuid& sessionID, const Uuid& taskID);

    // ---- notification bookkeeping ----
    // Remember what the notification scheduler has already scheduled, so it is not
    // scheduled twice.
    void markBudgetAlertScheduled(BudgetAlertKind kind, const Uuid& taskID);
    void markTaskReminderScheduled(const Uuid& taskID, Instant date);
    void markOverdueEndScheduled(const Uuid& taskID, Instant date);

    // ---- sync ----
    // Takes in the task list a sync pass led to, already merged with what the user did
    // while it ran. Pinned ranks that now collide (each machine pins with its lowest
    // free rank) are repaired, and a focused task that is gone loses the focus. Returns
    // the sentence of a failed save (the list is then unchanged), or nothing.
    std::optional<std::string> replaceWithSyncedTasks(std::vector<TaskItem> merged);

    // ---- reports ----
    // Generates, stores and returns the daily report that is due at `at`, if any.
    std::optional<DailyReport> generateDueReportIfNeeded(Instant at, const Calendar& calendar);

    // ---- reading ----
    // The task with that id, valid until the next change; null when unknown.
    const TaskItem* task(const Uuid& id) const;
    // The first task in list order whose timer runs.
    const TaskItem* activeTask() const;
    // The number of open tasks.
    std::size_t unfinishedTaskCount() const;
    // Completed tasks, newest first by completion (creation when never completed).
    std::vector<const TaskItem*> completedTaskHistory() const;
    // The drawer's five sections for the day that contains `at`.
    TaskDaySections taskSections(Instant at, const Calendar& calendar) const;

private:
    struct TaskDeletion {
        TaskItem task;
        std::size_t index;
    };
    struct SessionDeletion {
        Uuid taskID;
        WorkSession session;
        std::size_t index;
    };
    using Deletion = std::variant<TaskDeletion, SessionDeletion>;

    // Implementation helpers are declared by the implementation; see TodayTaskStore.cpp.
    struct Impl;
    friend struct Impl;

    std::unique_ptr<TaskRepository> repository_;
    std::vector<TaskItem> tasks_;
    std::vector<DailyReport> reports_;
    AppPreferences preferences_;
    std::optional<std::string> persistenceError_;
    std::optional<Uuid> focusedTaskID_;
    std::optional<std::string> undoDescription_;
    std::optional<Deletion> lastDeletion_;
    ChangeListener onMeaningfulChange_;
    std::vector<std::pair<ObserverId, Observer>> observers_;
    ObserverId nextObserverId_ = 1;
    int notificationHolds_ = 0;
    bool heldMeaningfulChange_ = false;
    bool heldObservation_ = false;
};

} // namespace daywyn
