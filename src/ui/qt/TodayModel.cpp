#include "ui/qt/TodayModel.h"

#include "parsing/QuickTaskParser.h"
#include "store/AddFromLine.h"
#include "ui/TaskRowText.h"
#include "ui/qt/DisplayFormat.h"

namespace daywyn {
namespace {

QString sectionTitle(TaskSectionKind kind) {
    switch (kind) {
    case TaskSectionKind::priority:
        return QStringLiteral("Priorities");
    case TaskSectionKind::today:
        return QStringLiteral("Today");
    case TaskSectionKind::carryOver:
        return QStringLiteral("Carried over");
    case TaskSectionKind::upcoming:
        return QStringLiteral("Upcoming");
    case TaskSectionKind::completed:
        return QStringLiteral("Completed today");
    }
    return {};
}

QString sectionKey(TaskSectionKind kind) {
    switch (kind) {
    case TaskSectionKind::priority:
        return QStringLiteral("priority");
    case TaskSectionKind::today:
        return QStringLiteral("today");
    case TaskSectionKind::carryOver:
        return QStringLiteral("carryOver");
    case TaskSectionKind::upcoming:
        return QStringLiteral("upcoming");
    case TaskSectionKind::completed:
        return QStringLiteral("completed");
    }
    return {};
}

std::optional<Uuid> idFrom(const QString& text) {
    return Uuid::parse(text.toStdString());
}

} // namespace

TodayModel::TodayModel(TodayTaskStore& store, Calendar calendar, Clock clock, QObject* parent)
    : QAbstractListModel(parent)
    , store_(store)
    , calendar_(std::move(calendar))
    , clock_(std::move(clock)) {
    ticker_.setInterval(1000);
    connect(&ticker_, &QTimer::timeout, this, &TodayModel::onTick);
    observer_ = store_.addObserver([this] { rebuild(); });
    rebuild();
}

TodayModel::~TodayModel() {
    store_.removeObserver(observer_);
}

int TodayModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QHash<int, QByteArray> TodayModel::roleNames() const {
    return {
        {KindRole, "kind"},
        {SectionRole, "section"},
        {HeaderTitleRole, "headerTitle"},
        {HeaderCountRole, "headerCount"},
        {TaskIdRole, "taskId"},
        {TitleRole, "title"},
        {DetailRole, "detail"},
        {TimeRole, "timeText"},
        {ClockRole, "clock"},
        {IsCompleteRole, "isComplete"},
        {IsRunningRole, "isRunning"},
        {IsOverrunRole, "isOverrun"},
        {RankRole, "rank"},
        {CanDoTodayRole, "canDoToday"},
    };
}

QVariant TodayModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= static_cast<int>(rows_.size())) {
        return {};
    }
    const Row& row = rows_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case KindRole:
        return row.kind == Row::Kind::header ? QStringLiteral("header")
               : row.kind == Row::Kind::task ? QStringLiteral("task")
                                             : QStringLiteral("empty");
    case SectionRole:
        return sectionKey(row.section);
    case HeaderTitleRole:
        return sectionTitle(row.section);
    case HeaderCountRole:
        return row.count;
    default:
        break;
    }
    if (row.kind != Row::Kind::task) {
        return {};
    }
    if (role == CanDoTodayRole) {
        return row.section == TaskSectionKind::carryOver ||
               row.section == TaskSectionKind::upcoming;
    }
    return taskData(row.task, role);
}

QVariant TodayModel::taskData(const TaskItem& task, int role) const {
    const Instant now = clock_();
    switch (role) {
    case TaskIdRole:
        return QString::fromStdString(task.id.text());
    case TitleRole:
        return QString::fromStdString(task.title);
    case DetailRole: {
        QStringList parts;
        if (task.scheduledStart) {
            QString when = DisplayFormat::dateTime(*task.scheduledStart, now, calendar_);
            if (task.scheduledEnd) {
                when +=
                    QStringLiteral("–") +
                    DisplayFormat::dateTime(*task.scheduledEnd, *task.scheduledStart, calendar_);
            }
            parts << when;
        } else if (task.scheduledDay && !calendar_.isSameDay(*task.scheduledDay, now)) {
            parts << DisplayFormat::shortDay(*task.scheduledDay, calendar_);
        }
        const std::string progress = TaskRowText::checklistProgress(task);
        if (!progress.empty()) {
            parts << QString::fromStdString(progress);
        }
        if (task.recurrence && *task.recurrence != TaskRecurrence::none) {
            parts << QStringLiteral("repeats %1")
                         .arg(QString::fromUtf8(
                             rawValue(*task.recurrence).data(),
                             static_cast<int>(rawValue(*task.recurrence).size())));
        }
        return parts.join(QStringLiteral(" · "));
    }
    case TimeRole:
        return QString::fromStdString(TaskRowText::timeSummary(task, now));
    case ClockRole:
        return task.isRunning() ? QString::fromStdString(TaskRowText::clockText(
                                      TaskRowText::recordedSeconds(task, now)))
                                : QString();
    case IsCompleteRole:
        return task.isComplete;
    case IsRunningRole:
        return task.isRunning();
    case IsOverrunRole:
        return TaskRowText::isOverEstimate(task, now);
    case RankRole:
        return task.priorityRank ? static_cast<int>(*task.priorityRank) : 0;
    default:
        return {};
    }
}

QString TodayModel::runningClock() const {
    const TaskItem* running = store_.activeTask();
    return running ? QString::fromStdString(
                         TaskRowText::clockText(TaskRowText::recordedSeconds(*running, clock_())))
                   : QString();
}

QString TodayModel::runningTitle() const {
    const TaskItem* running = store_.activeTask();
    return running ? QString::fromStdString(running->title) : QString();
}

QString TodayModel::persistenceError() const {
    return QString::fromStdString(store_.persistenceError().value_or(std::string()));
}

QString TodayModel::undoDescription() const {
    return QString::fromStdString(store_.undoDescription().value_or(std::string()));
}

void TodayModel::setLive(bool live) {
    if (live_ == live) {
        return;
    }
    live_ = live;
    if (live_) {
        refresh();
    }
    updateTicking();
    Q_EMIT liveChanged();
}

void TodayModel::refresh() {
    rebuild();
}

int TodayModel::rowOfTask(const QString& taskId) const {
    const auto id = idFrom(taskId);
    for (std::size_t i = 0; id && i < rows_.size(); ++i) {
        if (rows_[i].kind == Row::Kind::task && rows_[i].task.id == *id) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

QString TodayModel::taskIdAt(int row) const {
    if (row < 0 || row >= static_cast<int>(rows_.size()) ||
        rows_[static_cast<std::size_t>(row)].kind != Row::Kind::task) {
        return {};
    }
    return QString::fromStdString(rows_[static_cast<std::size_t>(row)].task.id.text());
}

void TodayModel::rebuild() {
    const Instant now = clock_();
    displayedDay_ = now;
    const TaskDaySections sections = store_.taskSections(now, calendar_);
    const std::pair<TaskSectionKind, const std::vector<const TaskItem*>*> ordered[] = {
        {TaskSectionKind::priority, &sections.priorities},
        {TaskSectionKind::today, &sections.today},
        {TaskSectionKind::carryOver, &sections.carryOver},
        {TaskSectionKind::upcoming, &sections.upcoming},
        {TaskSectionKind::completed, &sections.completedToday},
    };
    beginResetModel();
    rows_.clear();
    for (const auto& [kind, tasks] : ordered) {
        // Empty sections are hidden; Today stays, with its empty state, so the add
        // field always has a place to land.
        if (tasks->empty() && kind != TaskSectionKind::today) {
            continue;
        }
        rows_.push_back({Row::Kind::header, kind, static_cast<int>(tasks->size()), {}});
        for (const TaskItem* task : *tasks) {
            rows_.push_back({Row::Kind::task, kind, 0, *task});
        }
        if (tasks->empty()) {
            rows_.push_back({Row::Kind::emptyToday, kind, 0, {}});
        }
    }
    endResetModel();
    dayTitle_ = DisplayFormat::dayTitle(now, calendar_);
    updateTicking();
    Q_EMIT refreshed();
    Q_EMIT tick();
}

void TodayModel::updateTicking() {
    const bool wanted = live_ && store_.activeTask() != nullptr;
    if (wanted && !ticker_.isActive()) {
        ticker_.start();
    } else if (!wanted) {
        ticker_.stop();
    }
}

void TodayModel::onTick() {
    // The day may turn while the drawer stays open; then the sections change too.
    if (!calendar_.isSameDay(displayedDay_, clock_())) {
        rebuild();
        return;
    }
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        if (rows_[i].kind == Row::Kind::task && rows_[i].task.isRunning()) {
            const QModelIndex at = index(static_cast<int>(i));
            Q_EMIT dataChanged(at, at, {TimeRole, ClockRole, IsOverrunRole});
        }
    }
    Q_EMIT tick();
}

void TodayModel::report(const std::optional<std::string>& message) {
    const QString text = message ? QString::fromStdString(*message) : QString();
    if (text != errorMessage_) {
        errorMessage_ = text;
        Q_EMIT errorMessageChanged();
    }
}

void TodayModel::clearError() {
    report(std::nullopt);
}

QVariantList TodayModel::previewQuickAdd(const QString& text) const {
    QVariantList chips;
    if (text.trimmed().isEmpty()) {
        return chips;
    }
    const Instant now = clock_();
    const TaskDraft draft = QuickTaskParser::draft(text.toStdString(), now, calendar_);
    auto chip = [&chips](const char* kind, const QString& label) {
        chips.append(QVariantMap{{QStringLiteral("kind"), QString::fromLatin1(kind)},
                                 {QStringLiteral("text"), label}});
    };
    auto dayWord = [&](Instant day) {
        if (calendar_.isSameDay(day, now)) {
            return QStringLiteral("Today");
        }
        const auto tomorrow = calendar_.addingDays(now, 1);
        if (tomorrow && calendar_.isSameDay(day, *tomorrow)) {
            return QStringLiteral("Tomorrow");
        }
        return DisplayFormat::shortDay(day, calendar_);
    };
    if (draft.hasScheduledStart) {
        chip("day", dayWord(draft.scheduledStart));
        chip("time", DisplayFormat::time(draft.scheduledStart, calendar_));
    } else if (draft.hasScheduledDay) {
        chip("day", dayWord(draft.scheduledDay));
    }
    if (draft.hasEstimate) {
        chip("estimate", QStringLiteral("%1 min").arg(draft.estimatedMinutes));
    }
    return chips;
}

bool TodayModel::addFromText(const QString& text) {
    const auto added = addFromLine(store_, text.toStdString(), clock_(), calendar_);
    report(added ? std::nullopt : std::optional<std::string>(added.error()));
    return added.ok();
}

void TodayModel::toggleComplete(const QString& taskId) {
    if (const auto id = idFrom(taskId)) {
        report(std::nullopt);
        store_.toggleComplete(*id, clock_(), calendar_);
    }
}

void TodayModel::toggleTimer(const QString& taskId) {
    if (const auto id = idFrom(taskId)) {
        report(std::nullopt);
        store_.toggleTimer(*id, clock_());
    }
}

void TodayModel::togglePin(const QString& taskId) {
    if (const auto id = idFrom(taskId)) {
        report(store_.togglePriority(*id));
    }
}

void TodayModel::doToday(const QString& taskId) {
    if (const auto id = idFrom(taskId)) {
        report(std::nullopt);
        store_.doToday(*id, clock_(), calendar_);
    }
}

void TodayModel::moveToTomorrow(const QString& taskId) {
    if (const auto id = idFrom(taskId)) {
        report(std::nullopt);
        store_.carryForward(*id, clock_(), calendar_);
    }
}

void TodayModel::deleteTask(const QString& taskId) {
    if (const auto id = idFrom(taskId)) {
        report(store_.deleteTask(*id, clock_()));
    }
}

void TodayModel::undo() {
    report(store_.undoLastDeletion());
}

} // namespace daywyn
