#include "calendar/qt/IcsFolderCalendarSource.h"

#include <mutex>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QThreadPool>

#include "calendar/qt/MainThreadCompletion.h"
#include "calendar/system/IcsFolderReader.h"

namespace daywyn {

struct IcsFolderCalendarSource::State {
    State(const QString& folder, Calendar calendar)
        : reader(folder.toStdString(), std::move(calendar)) {}

    std::mutex mutex;
    IcsFolderReader reader;

    CalendarSnapshot read(const CalendarQuery& query) {
        const std::lock_guard lock(mutex);
        return reader.read(query);
    }
};

IcsFolderCalendarSource::IcsFolderCalendarSource(QString folder, Calendar calendar, QObject* parent)
    : QObject(parent)
    , folder_(std::move(folder))
    , state_(std::make_shared<State>(folder_, std::move(calendar))) {
    // Editors and sync tools write a file in several steps: wait until they are done.
    changeDelay_.setSingleShot(true);
    changeDelay_.setInterval(300);
    connect(&changeDelay_, &QTimer::timeout, this, [this] {
        watchFolder();
        if (onChange_) {
            onChange_();
        }
    });
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this,
            [this] { changeDelay_.start(); });
    connect(&watcher_, &QFileSystemWatcher::fileChanged, this, [this] { changeDelay_.start(); });
    watchFolder();
}

IcsFolderCalendarSource::~IcsFolderCalendarSource() = default;

QString IcsFolderCalendarSource::defaultFolder() {
    return QString::fromStdString(IcsFolderReader::defaultFolder().string());
}

QString IcsFolderCalendarSource::sourceTitle() {
    return QString::fromUtf8(IcsFolderReader::kSourceTitle);
}

void IcsFolderCalendarSource::watchFolder() {
    QStringList paths;
    const QFileInfo folder(folder_);
    // The parent tells when the folder itself appears; once it exists the parent is let
    // go, since the state file beside it is rewritten on every change.
    if (!folder.isDir() && folder.dir().exists()) {
        paths << folder.dir().path();
    } else if (folder.isDir() && watcher_.directories().contains(folder.dir().path())) {
        watcher_.removePath(folder.dir().path());
    }
    if (folder.isDir()) {
        paths << folder.filePath();
        const QDir dir(folder.filePath());
        for (const QFileInfo& info :
             dir.entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot)) {
            paths << info.filePath();
        }
    }
    const QStringList watched = watcher_.files() + watcher_.directories();
    QStringList added;
    for (const QString& path : paths) {
        if (!watched.contains(path)) {
            added << path;
        }
    }
    if (!added.isEmpty()) {
        watcher_.addPaths(added);
    }
}

void IcsFolderCalendarSource::read(const CalendarQuery& query, Completion done) {
    auto state = state_;
    // Only ever dereferenced on the main thread, in the posted completion.
    QPointer<IcsFolderCalendarSource> self = this;
    QThreadPool::globalInstance()->start(
        [state, query, self = std::move(self), done = std::move(done)]() mutable {
            completeOnMainThread(std::move(self), std::move(done), state->read(query));
        });
}

CalendarSnapshot IcsFolderCalendarSource::readNow(const CalendarQuery& query) {
    return state_->read(query);
}

void IcsFolderCalendarSource::setChangeHandler(std::function<void()> onChange) {
    onChange_ = std::move(onChange);
}

} // namespace daywyn
