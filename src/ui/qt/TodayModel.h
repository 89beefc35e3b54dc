#pragma once

#include <functional>
#include <optional>
#include <vector>

#include <QAbstractListModel>
#include <QString>
#include <QTimer>
#include <QVariantList>

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Instant.h"
#include "store/TaskDaySections.h"
#include "store/TodayTaskStore.h"

namespace daywyn {

// The Today screen's view of the store: one flat list of section headers, task rows
// and Today's empty state, rebuilt whenever the store changes, plus the row actions.
// Every failure the store reports lands in errorMessage for the screen to show.
class TodayModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(QString dayTitle READ dayTitle NOTIFY refreshed)
    Q_PROPERTY(int openCount READ openCount NOTIFY refreshed)
    Q_PROPERTY(QString runningClock READ runningClock NOTIFY tick)
    Q_PROPERTY(QString runningTitle READ runningTitle NOTIFY refreshed)
    Q_PROPERTY(bool hasTasks READ hasTasks NOTIFY refreshed)
    Q_PROPERTY(QString persistenceError READ persistenceError NOTIFY refreshed)
    Q_PROPERTY(QString undoDescription READ undoDescription NOTIFY refreshed)
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(bool live READ isLive WRITE setLive NOTIFY liveChanged)

public:
    enum Role {
        KindRole = Qt::UserRole + 1,
        SectionRole,
        HeaderTitleRole,
        HeaderCountRole,
        TaskIdRole,
        TitleRole,
        DetailRole,
        TimeRole,
        ClockRole,
        IsCompleteRole,
        IsRunningRole,
        IsOverrunRole,
        RankRole,
        CanDoTodayRole,
    };

    TodayModel(TodayTaskStore& store, Calendar calendar, Clock clock, QObject* parent = nullptr);
    ~TodayModel() override;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    QString dayTitle() const { return dayTitle_; }
    int openCount() const { return static_cast<int>(store_.unfinishedTaskCount()); }
    QString runningClock() const;
    QString runningTitle() const;
    bool hasTasks() const { return !store_.tasks().empty(); }
    QString persistenceError() const;
    QString undoDescription() const;
    QString errorMessage() const { return errorMessage_; }
    // While live (the drawer is on screen) a running timer ticks once a second; while
    // hidden nothing ticks and nothing is rebuilt until the drawer shows again.
    bool isLive() const { return live_; }
    void setLive(bool live);

    // Re-reads the store for the current day (the day may have turned while hidden).
    Q_INVOKABLE void refresh();
    // The row of a task, or -1; rows move when the store changes.
    Q_INVOKABLE int rowOfTask(const QString& taskId) const;
    // The task id of a row, empty for headers and the empty state.
    Q_INVOKABLE QString taskIdAt(int row) const;

    // What the add field recognised in the text, for the preview chips: a list of
    // {kind: "day"|"time"|"estimate"|"repeat", text}. Empty for plain titles.
    Q_INVOKABLE QVariantList previewQuickAdd(const QString& text) const;
    // Adds the typed line through the quick parser; true when the task was saved.
    Q_INVOKABLE bool addFromText(const QString& text);

    Q_INVOKABLE void toggleComplete(const QString& taskId);
    Q_INVOKABLE void toggleTimer(const QString& taskId);
    Q_INVOKABLE void togglePin(const QString& taskId);
    Q_INVOKABLE void doToday(const QString& taskId);
    Q_INVOKABLE void moveToTomorrow(const QString& taskId);
    Q_INVOKABLE void deleteTask(const QString& taskId);
    Q_INVOKABLE void undo();
    Q_INVOKABLE void clearError();

Q_SIGNALS:
    void refreshed();
    void tick();
    void errorMessageChanged();
    void liveChanged();

private:
    struct Row {
        enum class Kind { header, task, emptyToday } kind;
        TaskSectionKind section;
        int count = 0;
        TaskItem task; // a copy: the store's own entries move on every change
    };

    void rebuild();
    void updateTicking();
    void onTick();
    void report(const std::optional<std::string>& message);
    QVariant taskData(const TaskItem& task, int role) const;

    TodayTaskStore& store_;
    Calendar calendar_;
    Clock clock_;
    TodayTaskStore::ObserverId observer_ = 0;
    std::vector<Row> rows_;
    QString dayTitle_;
    Instant displayedDay_;
    QString errorMessage_;
    bool live_ = false;
    QTimer ticker_;
};

} // namespace daywyn
