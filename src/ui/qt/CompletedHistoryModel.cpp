#include "ui/qt/CompletedHistoryModel.h"

#include "ui/TaskRowText.h"
#include "ui/qt/DisplayFormat.h"

namespace daywyn {

CompletedHistoryModel::CompletedHistoryModel(TodayTaskStore& store, Calendar calendar,
                                             std::function<Instant()> clock, QObject* parent)
    : QAbstractListModel(parent)
    , store_(store)
    , calendar_(std::move(calendar))
    , clock_(std::move(clock)) {
    observer_ = store_.addObserver([this] {
        if (open_) {
            rebuild();
        }
    });
}

CompletedHistoryModel::~CompletedHistoryModel() {
    store_.removeObserver(observer_);
}

int CompletedHistoryModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(tasks_.size());
}

QHash<int, QByteArray> CompletedHistoryModel::roleNames() const {
    return {{TaskIdRole, "taskId"},
            {TitleRole, "title"},
            {CompletedRole, "completedText"},
            {TimeRole, "timeText"}};
}

QVariant CompletedHistoryModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= static_cast<int>(tasks_.size())) {
        return {};
    }
    const TaskItem& task = tasks_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case TaskIdRole:
        return QString::fromStdString(task.id.text());
    case TitleRole:
        return QString::fromStdString(task.title);
    case CompletedRole:
        return task.completedAt
                   ? DisplayFormat::shortDay(*task.completedAt, calendar_) + QLatin1Char(' ') +
                         DisplayFormat::time(*task.completedAt, calendar_)
                   : QString();
    case TimeRole:
        return QString::fromStdString(TaskRowText::timeSummary(task, clock_()));
    default:
        return {};
    }
}

void CompletedHistoryModel::open() {
    open_ = true;
    rebuild();
    Q_EMIT openChanged();
}

void CompletedHistoryModel::close() {
    open_ = false;
    beginResetModel();
    tasks_.clear();
    endResetModel();
    Q_EMIT openChanged();
}

void CompletedHistoryModel::reopen(const QString& taskId) {
    if (const auto id = Uuid::parse(taskId.toStdString())) {
        const TaskItem* task = store_.task(*id);
        if (task && task->isComplete) {
            store_.toggleComplete(*id, clock_(), calendar_);
        }
    }
}

void CompletedHistoryModel::rebuild() {
    beginResetModel();
    tasks_.clear();
    for (const TaskItem* task : store_.completedTaskHistory()) {
        tasks_.push_back(*task);
    }
    endResetModel();
}

} // namespace daywyn
