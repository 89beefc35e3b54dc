#pragma once

#include <functional>
#include <optional>
#include <vector>

#include <QAbstractListModel>

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Instant.h"
#include "store/TodayTaskStore.h"

namespace daywyn {

// The session history sheet of one task: its work sessions newest first, with add,
// edit and delete (undoable). The session editor's sentences are shown in
// errorMessage and nothing is saved while one stands.
class SessionHistoryModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(bool isOpen READ isOpen NOTIFY openChanged)
    Q_PROPERTY(QString taskTitle READ taskTitle NOTIFY openChanged)
    Q_PROPERTY(QString totalText READ totalText NOTIFY refreshed)
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(QString undoDescription READ undoDescription NOTIFY refreshed)

public:
    enum Role { SessionIdRole = Qt::UserRole + 1, StartRole, EndRole, SpanRole, DurationRole };

    SessionHistoryModel(TodayTaskStore& store, Calendar calendar, Clock clock,
                        QObject* parent = nullptr);
    ~SessionHistoryModel() override;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    Q_INVOKABLE bool openTask(const QString& taskId);
    Q_INVOKABLE void close();
    // Start and end as "2026-11-21 14:30"; true when saved.
    Q_INVOKABLE bool addSession(const QString& startText, const QString& endText);
    Q_INVOKABLE bool updateSession(const QString& sessionId, const QString& startText,
                                   const QString& endText);
    Q_INVOKABLE void deleteSession(const QString& sessionId);
    Q_INVOKABLE void undo();
    // A new session's suggested times: the last half hour, ending now.
    Q_INVOKABLE QString suggestedStart() const;
    Q_INVOKABLE QString suggestedEnd() const;

    bool isOpen() const { return taskId_.has_value(); }
    QString taskTitle() const;
    QString totalText() const;
    QString errorMessage() const { return errorMessage_; }
    QString undoDescription() const;

Q_SIGNALS:
    void openChanged();
    void errorMessageChanged();
    void refreshed();

private:
    void rebuild();
    void report(std::optional<std::string> message);
    std::optional<SessionDraft> draftFrom(const QString& startText, const QString& endText);

    TodayTaskStore& store_;
    Calendar calendar_;
    Clock clock_;
    TodayTaskStore::ObserverId observer_ = 0;
    std::optional<Uuid> taskId_;
    std::vector<WorkSession> sessions_;
    QString errorMessage_;
};

} // namespace daywyn
