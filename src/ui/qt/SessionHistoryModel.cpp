#include "ui/qt/SessionHistoryModel.h"

#include <algorithm>

#include "ui/TaskRowText.h"
#include "ui/qt/DisplayFormat.h"

namespace daywyn {

SessionHistoryModel::SessionHistoryModel(TodayTaskStore& store, Calendar calendar, Clock clock,
                                         QObject* parent)
    : QAbstractListModel(parent)
    , store_(store)
    , calendar_(std::move(calendar))
    , clock_(std::move(clock)) {
    observer_ = store_.addObserver([this] {
        if (taskId_) {
            rebuild();
        }
    });
}

SessionHistoryModel::~SessionHistoryModel() {
    store_.removeObserver(observer_);
}

int SessionHistoryModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(sessions_.size());
}

QHash<int, QByteArray> SessionHistoryModel::roleNames() const {
    return {{SessionIdRole, "sessionId"},
            {StartRole, "startText"},
            {EndRole, "endText"},
            {SpanRole, "span"},
            {DurationRole, "duration"}};
}

QVariant SessionHistoryModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= static_cast<int>(sessions_.size())) {
        return {};
    }
    const WorkSession& s = sessions_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case SessionIdRole:
        return QString::fromStdString(s.id.text());
    case StartRole:
        return DisplayFormat::editable(s.start, calendar_);
    case EndRole:
        return DisplayFormat::editable(s.end, calendar_);
    case SpanRole:
        return DisplayFormat::shortDay(s.start, calendar_) + QLatin1Char(' ') +
               DisplayFormat::time(s.start, calendar_) + QStringLiteral("–") +
               DisplayFormat::dateTime(s.end, s.start, calendar_);
    case DurationRole:
        return QString::fromStdString(TaskRowText::durationText(s.end - s.start));
    default:
        return {};
    }
}

bool SessionHistoryModel::openTask(const QString& taskId) {
    const auto id = Uuid::parse(taskId.toStdString());
    if (!id || !store_.task(*id)) {
        return false;
    }
    taskId_ = id;
    report(std::nullopt);
    rebuild();
    Q_EMIT openChanged();
    return true;
}

void SessionHistoryModel::close() {
    taskId_.reset();
    beginResetModel();
    sessions_.clear();
    endResetModel();
    Q_EMIT openChanged();
}

QString SessionHistoryModel::taskTitle() const {
    const TaskItem* task = taskId_ ? store_.task(*taskId_) : nullptr;
    return task ? QString::fromStdString(task->title) : QString();
}

QString SessionHistoryModel::totalText() const {
    const TaskItem* task = taskId_ ? store_.task(*taskId_) : nullptr;
    return task ? QString::fromStdString(TaskRowText::timeSummary(*task, clock_())) : QString();
}

QString SessionHistoryModel::undoDescription() const {
    return QString::fromStdString(store_.undoDescription().value_or(std::string()));
}

void SessionHistoryModel::rebuild() {
    beginResetModel();
    sessions_.clear();
    if (const TaskItem* task = taskId_ ? store_.task(*taskId_) : nullptr) {
        sessions_ = task->sessions;
        std::stable_sort(
            sessions_.begin(), sessions_.end(),
            [](const WorkSession& a, const WorkSession& b) { return a.start > b.start; });
    }
    endResetModel();
    Q_EMIT refreshed();
}

void SessionHistoryModel::report(std::optional<std::string> message) {
    const QString text = message ? QString::fromStdString(*message) : QString();
    if (text != errorMessage_) {
        errorMessage_ = text;
        Q_EMIT errorMessageChanged();
    }
}

std::optional<SessionDraft> SessionHistoryModel::draftFrom(const QString& startText,
                                                           const QString& endText) {
    const auto start = DisplayFormat::parseEditable(startText, calendar_);
    const auto end = DisplayFormat::parseEditable(endText, calendar_);
    if (!start || !end) {
        report("Enter the start and end as dates and times like 2026-11-21 14:30.");
        return std::nullopt;
    }
    SessionDraft draft{*start, *end};
    if (const auto message = sessionValidationMessage(draft, clock_())) {
        report(message);
        return std::nullopt;
    }
    report(std::nullopt);
    return draft;
}

bool SessionHistoryModel::addSession(const QString& startText, const QString& endText) {
    const auto draft = draftFrom(startText, endText);
    if (!taskId_ || !draft) {
        return false;
    }
    store_.addSession(*taskId_, *draft);
    return true;
}

bool SessionHistoryModel::updateSession(const QString& sessionId, const QString& startText,
                                        const QString& endText) {
    const auto id = Uuid::parse(sessionId.toStdString());
    const auto draft = draftFrom(startText, endText);
    if (!taskId_ || !id || !draft) {
        return false;
    }
    store_.updateSession(*id, *taskId_, *draft);
    return true;
}

void SessionHistoryModel::deleteSession(const QString& sessionId) {
    if (const auto id = Uuid::parse(sessionId.toStdString()); id && taskId_) {
        report(store_.deleteSession(*id, *taskId_));
    }
}

void SessionHistoryModel::undo() {
    report(store_.undoLastDeletion());
}

QString SessionHistoryModel::suggestedStart() const {
    return DisplayFormat::editable(clock_() - 1800, calendar_);
}

QString SessionHistoryModel::suggestedEnd() const {
    return DisplayFormat::editable(clock_(), calendar_);
}

} // namespace daywyn
