#include "ui/qt/TaskEditor.h"

#include <cmath>

#include "base/Text.h"
#include "ui/qt/DisplayFormat.h"

namespace daywyn {
namespace {

// `latest` with every field group the user changed (from `opened` to `edited`) taken
// from `edited`. A switch and its value change together, as the screen shows them.
TaskDraft userChangesOnto(TaskDraft latest, const TaskDraft& opened, const TaskDraft& edited) {
    auto take = [](auto& target, const auto& before, const auto& after) {
        if (!(before == after)) {
            target = after;
        }
    };
    take(latest.title, opened.title, edited.title);
    take(latest.recurrence, opened.recurrence, edited.recurrence);
    take(latest.checklist, opened.checklist, edited.checklist);
    auto takePair = [](bool& has, auto& value, bool hadBefore, const auto& before, bool hasAfter,
                       const auto& after) {
        if (hadBefore != hasAfter || (hasAfter && !(before == after))) {
            has = hasAfter;
            value = after;
        }
    };
    takePair(latest.hasEstimate, latest.estimatedMinutes, opened.hasEstimate,
             opened.estimatedMinutes, edited.hasEstimate, edited.estimatedMinutes);
    takePair(latest.hasReminder, latest.reminderDate, opened.hasReminder, opened.reminderDate,
             edited.hasReminder, edited.reminderDate);
    takePair(latest.hasScheduledStart, latest.scheduledStart, opened.hasScheduledStart,
             opened.scheduledStart, edited.hasScheduledStart, edited.scheduledStart);
    takePair(latest.hasScheduledDay, latest.scheduledDay, opened.hasScheduledDay,
             opened.scheduledDay, edited.hasScheduledDay, edited.scheduledDay);
    takePair(latest.hasScheduledEnd, latest.scheduledEnd, opened.hasScheduledEnd,
             opened.scheduledEnd, edited.hasScheduledEnd, edited.scheduledEnd);
    // A start the user set replaces the day; a day the user set replaces the start.
    if (edited.hasScheduledDay && !opened.hasScheduledDay && !edited.hasScheduledStart) {
        latest.hasScheduledStart = false;
    }
    return latest;
}

} // namespace

TaskEditor::TaskEditor(TodayTaskStore& store, Calendar calendar, Clock clock, QObject* parent)
    : QObject(parent)
    , store_(store)
    , calendar_(std::move(calendar))
    , clock_(std::move(clock)) {}

bool TaskEditor::openTask(const QString& taskId) {
    const auto id = Uuid::parse(taskId.toStdString());
    const TaskItem* task = id ? store_.task(*id) : nullptr;
    if (!task) {
        return false;
    }
    taskId_ = id;
    load(TaskDraft::from(*task));
    return true;
}

void TaskEditor::openNew() {
    taskId_.reset();
    load(TaskDraft{});
}

void TaskEditor::load(const TaskDraft& draft) {
    draft_ = draft;
    // Switched-off dates are offered at the next whole hour, so turning a switch on
    // shows a sensible time rather than 1970.
    const Instant now = clock_();
    const Instant nextHour =
        calendar_.settingTime(now, calendar_.hour(now), 0, 0).value_or(now) + 3600;
    auto offer = [&](bool on, Instant& value, Instant fallback) {
        if (!on) {
            value = fallback;
        }
        return DisplayFormat::editable(value, calendar_);
    };
    startText_ = offer(draft_.hasScheduledStart, draft_.scheduledStart, nextHour);
    endText_ = offer(draft_.hasScheduledEnd, draft_.scheduledEnd, nextHour + 1800);
    reminderText_ = offer(draft_.hasReminder, draft_.reminderDate, nextHour);
    if (!draft_.hasScheduledDay) {
        draft_.scheduledDay = calendar_.startOfDay(now);
    }
    const DateParts day = calendar_.parts(draft_.scheduledDay);
    dayText_ = QStringLiteral("%1-%2-%3")
                   .arg(day.year, 4, 10, QLatin1Char('0'))
                   .arg(day.month, 2, 10, QLatin1Char('0'))
                   .arg(day.day, 2, 10, QLatin1Char('0'));
    opened_ = draft_;
    saveError_.clear();
    open_ = true;
    Q_EMIT openChanged();
    Q_EMIT changed();
}

void TaskEditor::close() {
    if (open_) {
        open_ = false;
        Q_EMIT openChanged();
    }
}

void TaskEditor::edited() {
    saveError_.clear();
    Q_EMIT changed();
}

void TaskEditor::setTitle(const QString& title) {
    draft_.title = title.toStdString();
    edited();
}

void TaskEditor::setHasEstimate(bool on) {
    if (on && !draft_.hasEstimate) {
        draft_.estimatedMinutes = store_.preferences().defaultTaskMinutes;
    }
    draft_.hasEstimate = on;
    edited();
}

void TaskEditor::setEstimatedMinutes(int minutes) {
    draft_.estimatedMinutes = minutes;
    edited();
}

void TaskEditor::setHasReminder(bool on) {
    draft_.hasReminder = on;
    edited();
}

void TaskEditor::setHasStart(bool on) {
    draft_.hasScheduledStart = on;
    edited();
}

void TaskEditor::setHasDay(bool on) {
    draft_.hasScheduledDay = on;
    edited();
}

void TaskEditor::setHasEnd(bool on) {
    draft_.hasScheduledEnd = on;
    edited();
}

void TaskEditor::setReminderText(const QString& text) {
    reminderText_ = text;
    if (const auto at = DisplayFormat::parseEditable(text, calendar_)) {
        draft_.reminderDate = *at;
    }
    edited();
}

void TaskEditor::setStartText(const QString& text) {
    startText_ = text;
    if (const auto at = DisplayFormat::parseEditable(text, calendar_)) {
        draft_.scheduledStart = *at;
    }
    edited();
}

void TaskEditor::setDayText(const QString& text) {
    dayText_ = text;
    if (const auto at = DisplayFormat::parseEditable(text, calendar_)) {
        draft_.scheduledDay = *at;
    }
    edited();
}

void TaskEditor::setEndText(const QString& text) {
    endText_ = text;
    if (const auto at = DisplayFormat::parseEditable(text, calendar_)) {
        draft_.scheduledEnd = *at;
    }
    edited();
}

void TaskEditor::setRecurrence(int index) {
    if (index >= 0 && index < static_cast<int>(std::size(kAllRecurrences))) {
        draft_.recurrence = kAllRecurrences[index];
        edited();
    }
}

QStringList TaskEditor::recurrenceNames() const {
    return {QStringLiteral("Does not repeat"), QStringLiteral("Every day"),
            QStringLiteral("Every weekday"), QStringLiteral("Every week"),
            QStringLiteral("Every month")};
}

QVariantList TaskEditor::checklist() const {
    QVariantList items;
    for (const ChecklistItem& item : draft_.checklist) {
        items.append(QVariantMap{{QStringLiteral("title"), QString::fromStdString(item.title)},
                                 {QStringLiteral("isComplete"), item.isComplete}});
    }
    return items;
}

void TaskEditor::addChecklistItem(const QString& title) {
    draft_.checklist.push_back({Uuid::random(), title.toStdString(), false});
    edited();
}

void TaskEditor::setChecklistTitle(int index, const QString& title) {
    if (index >= 0 && index < static_cast<int>(draft_.checklist.size())) {
        draft_.checklist[static_cast<std::size_t>(index)].title = title.toStdString();
        edited();
    }
}

void TaskEditor::setChecklistDone(int index, bool done) {
    if (index >= 0 && index < static_cast<int>(draft_.checklist.size())) {
        draft_.checklist[static_cast<std::size_t>(index)].isComplete = done;
        edited();
    }
}

void TaskEditor::removeChecklistItem(int index) {
    if (index >= 0 && index < static_cast<int>(draft_.checklist.size())) {
        draft_.checklist.erase(draft_.checklist.begin() + index);
        edited();
    }
}

std::optional<QString> TaskEditor::dateTextProblem() const {
    const std::pair<bool, std::pair<const QString*, const char*>> fields[] = {
        {draft_.hasScheduledStart, {&startText_, "start"}},
        {draft_.hasScheduledDay, {&dayText_, "planned day"}},
        {draft_.hasScheduledEnd, {&endText_, "end"}},
        {draft_.hasReminder, {&reminderText_, "reminder"}},
    };
    for (const auto& [on, field] : fields) {
        if (on && !DisplayFormat::parseEditable(*field.first, calendar_)) {
            return QStringLiteral("Enter the %1 as a date and time like 2026-11-21 14:30.")
                .arg(QLatin1String(field.second));
        }
    }
    return std::nullopt;
}

QString TaskEditor::validationMessage() const {
    // A date that does not read as one would be judged by its last good value; say
    // what is wrong with the text instead (a missing title still comes first).
    const auto message = draft_.validationMessage();
    if (!isBlank(draft_.title)) {
        if (const auto problem = dateTextProblem()) {
            return *problem;
        }
    }
    return message ? QString::fromStdString(*message) : QString();
}

bool TaskEditor::save() {
    if (!open_ || !validationMessage().isEmpty()) {
        return false;
    }
    if (taskId_) {
        const TaskItem* task = store_.task(*taskId_);
        if (!task) {
            saveError_ = QStringLiteral("This task was deleted while you edited it.");
            Q_EMIT changed();
            return false;
        }
        if (draft_ == opened_) {
            close();
            return true;
        }
        const TaskDraft merged = userChangesOnto(TaskDraft::from(*task), opened_, draft_);
        if (const auto message = merged.validationMessage()) {
            // The task changed meanwhile in a way that clashes with the user's edit.
            saveError_ = QString::fromStdString(*message);
            Q_EMIT changed();
            return false;
        }
        store_.updateTask(*taskId_, merged, calendar_);
    } else if (const auto message = store_.addTaskReliably(draft_, clock_(), calendar_)) {
        saveError_ = QString::fromStdString(*message);
        Q_EMIT changed();
        return false;
    }
    close();
    return true;
}

} // namespace daywyn
