#pragma once

#include <functional>
#include <optional>

#include <QObject>
#include <QString>
#include <QVariantList>

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Instant.h"
#include "model/TaskDraft.h"
#include "store/TodayTaskStore.h"

namespace daywyn {

// The task editor sheet over a TaskDraft: the screen edits text and switches, the
// editor keeps the draft, says the first problem in validationMessage and refuses to
// save while one stands. Dates are edited as "2026-11-21 14:30" in the user's zone.
class TaskEditor : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isOpen READ isOpen NOTIFY openChanged)
    Q_PROPERTY(bool isNew READ isNew NOTIFY openChanged)
    Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY changed)
    Q_PROPERTY(bool hasEstimate READ hasEstimate WRITE setHasEstimate NOTIFY changed)
    Q_PROPERTY(int estimatedMinutes READ estimatedMinutes WRITE setEstimatedMinutes NOTIFY changed)
    Q_PROPERTY(bool hasReminder READ hasReminder WRITE setHasReminder NOTIFY changed)
    Q_PROPERTY(QString reminderText READ reminderText WRITE setReminderText NOTIFY changed)
    Q_PROPERTY(bool hasStart READ hasStart WRITE setHasStart NOTIFY changed)
    Q_PROPERTY(QString startText READ startText WRITE setStartText NOTIFY changed)
    Q_PROPERTY(bool hasDay READ hasDay WRITE setHasDay NOTIFY changed)
    Q_PROPERTY(QString dayText READ dayText WRITE setDayText NOTIFY changed)
    Q_PROPERTY(bool hasEnd READ hasEnd WRITE setHasEnd NOTIFY changed)
    Q_PROPERTY(QString endText READ endText WRITE setEndText NOTIFY changed)
    Q_PROPERTY(int recurrence READ recurrence WRITE setRecurrence NOTIFY changed)
    Q_PROPERTY(QStringList recurrenceNames READ recurrenceNames CONSTANT)
    Q_PROPERTY(QVariantList checklist READ checklist NOTIFY changed)
    Q_PROPERTY(QString validationMessage READ validationMessage NOTIFY changed)
    Q_PROPERTY(QString saveError READ saveError NOTIFY changed)

public:
    TaskEditor(TodayTaskStore& store, Calendar calendar, Clock clock, QObject* parent = nullptr);

    // Opens the sheet on a copy of the task (false when it no longer exists), or empty.
    Q_INVOKABLE bool openTask(const QString& taskId);
    Q_INVOKABLE void openNew();
    Q_INVOKABLE void close();
    // Saves when the draft is valid and closes; otherwise stays open with the sentence.
    // Only the fields the user changed are written: anything else the task holds now
    // (moved by "Do today" or the command line while the sheet was open) is kept.
    Q_INVOKABLE bool save();

    Q_INVOKABLE void addChecklistItem(const QString& title);
    Q_INVOKABLE void setChecklistTitle(int index, const QString& title);
    Q_INVOKABLE void setChecklistDone(int index, bool done);
    Q_INVOKABLE void removeChecklistItem(int index);

    bool isOpen() const { return open_; }
    bool isNew() const { return !taskId_; }
    QString title() const { return QString::fromStdString(draft_.title); }
    void setTitle(const QString& title);
    bool hasEstimate() const { return draft_.hasEstimate; }
    // Switching the estimate on offers the default task length from the preferences.
    void setHasEstimate(bool on);
    int estimatedMinutes() const { return static_cast<int>(draft_.estimatedMinutes); }
    void setEstimatedMinutes(int minutes);
    bool hasReminder() const { return draft_.hasReminder; }
    void setHasReminder(bool on);
    QString reminderText() const { return reminderText_; }
    void setReminderText(const QString& text);
    bool hasStart() const { return draft_.hasScheduledStart; }
    void setHasStart(bool on);
    QString startText() const { return startText_; }
    void setStartText(const QString& text);
    bool hasDay() const { return draft_.hasScheduledDay; }
    void setHasDay(bool on);
    QString dayText() const { return dayText_; }
    void setDayText(const QString& text);
    bool hasEnd() const { return draft_.hasScheduledEnd; }
    void setHasEnd(bool on);
    QString endText() const { return endText_; }
    void setEndText(const QString& text);
    int recurrence() const { return static_cast<int>(draft_.recurrence); }
    void setRecurrence(int index);
    QStringList recurrenceNames() const;
    QVariantList checklist() const;
    QString validationMessage() const;
    QString saveError() const { return saveError_; }

Q_SIGNALS:
    void openChanged();
    void changed();

private:
    void load(const TaskDraft& draft);
    void edited();
    // The first switched-on date field whose text is not a date, as a sentence.
    std::optional<QString> dateTextProblem() const;

    TodayTaskStore& store_;
    Calendar calendar_;
    Clock clock_;
    bool open_ = false;
    std::optional<Uuid> taskId_;
    TaskDraft draft_;
    // The draft as opened, to tell the user's changes from the task's own values.
    TaskDraft opened_;
    QString reminderText_;
    QString startText_;
    QString dayText_;
    QString endText_;
    QString saveError_;
};

} // namespace daywyn
