#pragma once

#include <functional>
#include <vector>

#include <QAbstractListModel>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "store/TodayTaskStore.h"

namespace daywyn {

// The completed-task history: every completed task, newest first. Built only while
// the sheet is open, so a long history costs nothing at start-up.
class CompletedHistoryModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(bool isOpen READ isOpen NOTIFY openChanged)

public:
    enum Role { TaskIdRole = Qt::UserRole + 1, TitleRole, CompletedRole, TimeRole };

    CompletedHistoryModel(TodayTaskStore& store, Calendar calendar, std::function<Instant()> clock,
                          QObject* parent = nullptr);
    ~CompletedHistoryModel() override;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    Q_INVOKABLE void open();
    Q_INVOKABLE void close();
    // Reopens a completed task (it returns to the Today screen's sections).
    Q_INVOKABLE void reopen(const QString& taskId);
    bool isOpen() const { return open_; }

Q_SIGNALS:
    void openChanged();

private:
    void rebuild();

    TodayTaskStore& store_;
    Calendar calendar_;
    std::function<Instant()> clock_;
    TodayTaskStore::ObserverId observer_ = 0;
    bool open_ = false;
    std::vector<TaskItem> tasks_;
};

} // namespace daywyn
