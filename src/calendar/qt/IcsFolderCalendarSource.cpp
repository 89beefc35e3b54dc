#include "calendar/qt/IcsFolderCalendarSource.h"

#include <map>
#include <mutex>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QThreadPool>

#include "calendar/qt/IcsCalendarFile.h"
#include "calendar/qt/MainThreadCompletion.h"
#include "persistence/XdgPaths.h"

namespace daywyn {

namespace {

struct FileStamp {
    QString path;
    qint64 size = 0;
    qint64 modified = 0;
    bool operator==(const FileStamp&) const = default;
};

QString readSmallTextFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QString::fromUtf8(file.read(4096)).trimmed();
}

} // namespace

struct IcsFolderCalendarSource::State {
    struct Entry {
        std::vector<FileStamp> stamps;
        std::unique_ptr<IcsCalendarFile> file;
        QStringList unreadable;
    };

    QString folder;
    Calendar calendar;
    std::mutex mutex;
    // By calendar id; kept between reads so unchanged files are not parsed again.
    std::map<QString, Entry> entries;

    CalendarSnapshot read(const CalendarQuery& query);
};

CalendarSnapshot IcsFolderCalendarSource::State::read(const CalendarQuery& query) {
    const std::lock_guard lock(mutex);
    CalendarSnapshot snapshot;
    const QDir dir(folder);
    if (!dir.exists()) {
        entries.clear();
        snapshot.status = CalendarAccessStatus::unavailable;
        return snapshot;
    }
    snapshot.status = CalendarAccessStatus::fullAccess;
    std::map<QString, Entry> kept;
    QStringList unreadable;
    const auto list = dir.entryInfoList(
        QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Readable, QDir::Name);
    for (const QFileInfo& info : list) {
        QString title;
        QString color;
        std::vector<FileStamp> stamps;
        if (info.isDir()) {
            const QDir inner(info.filePath());
            for (const QFileInfo& event :
                 inner.entryInfoList({QStringLiteral("*.ics")}, QDir::Files, QDir::Name)) {
                stamps.push_back(
                    {event.filePath(), event.size(), event.lastModified().toMSecsSinceEpoch()});
            }
            title = readSmallTextFile(inner.filePath(QStringLiteral("displayname")));
            color = readSmallTextFile(inner.filePath(QStringLiteral("color")));
        } else if (info.suffix().compare(QStringLiteral("ics"), Qt::CaseInsensitive) == 0) {
            stamps.push_back(
                {info.filePath(), info.size(), info.lastModified().toMSecsSinceEpoch()});
        } else {
            continue;
        }
        const QString id = QStringLiteral("ics:") + info.fileName();
        auto found = entries.find(id);
        Entry entry;
        if (found != entries.end() && found->second.stamps == stamps) {
            entry = std::move(found->second);
        } else {
            entry.stamps = stamps;
            entry.file = std::make_unique<IcsCalendarFile>();
            for (const auto& stamp : stamps) {
                QFile file(stamp.path);
                if (!file.open(QIODevice::ReadOnly) ||
                    !entry.file->addText(file.readAll().toStdString())) {
                    entry.unreadable << QFileInfo(stamp.path).fileName();
                }
            }
        }
        unreadable << entry.unreadable;
        // A single file that is not a calendar at all is not listed as one.
        if (!info.isDir() && !entry.unreadable.isEmpty()) {
            kept.emplace(id, std::move(entry));
            continue;
        }
        if (title.isEmpty()) {
            title = QString::fromStdString(entry.file->name());
        }
        if (title.isEmpty()) {
            title = info.isDir() ? info.fileName() : info.completeBaseName();
        }
        if (color.isEmpty()) {
            color = QString::fromStdString(entry.file->colorText());
        }
        const std::string calendarId = id.toStdString();
        snapshot.calendars.push_back(SourceCalendar{
            calendarId, title.toStdString(), sourceTitle().toStdString(), color.toStdString()});
        if (std::find(query.calendarIdentifiers.begin(), query.calendarIdentifiers.end(),
                      calendarId) != query.calendarIdentifiers.end()) {
            auto events = entry.file->occurrences(query.day, calendar, calendarId);
            snapshot.events.insert(snapshot.events.end(), std::make_move_iterator(events.begin()),
                                   std::make_move_iterator(events.end()));
        }
        kept.emplace(id, std::move(entry));
    }
    entries = std::move(kept);
    if (!unreadable.isEmpty()) {
        snapshot.errorMessage = "Daywyn could not read these calendar files: " +
                                unreadable.join(QStringLiteral(", ")).toStdString() + ".";
    }
    return snapshot;
}

IcsFolderCalendarSource::IcsFolderCalendarSource(QString folder, Calendar calendar, QObject* parent)
    : QObject(parent)
    , state_(std::make_shared<State>()) {
    state_->folder = std::move(folder);
    state_->calendar = std::move(calendar);
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
    // With no home folder at all, a relative name (and no calendar files in it).
    const auto folder = daywynFolder(XdgBase::data);
    return (folder ? QString::fromStdString(folder.value()) : QStringLiteral("Daywyn")) +
           QStringLiteral("/calendars");
}

QString IcsFolderCalendarSource::sourceTitle() {
    return QStringLiteral("Calendar files");
}

void IcsFolderCalendarSource::watchFolder() {
    QStringList paths;
    const QFileInfo folder(state_->folder);
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
