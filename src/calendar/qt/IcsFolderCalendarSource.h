#pragma once

#include <memory>

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QTimer>

#include "base/Calendar.h"
#include "calendar/CalendarSource.h"

namespace daywyn {

// The folder of iCalendar files (IcsFolderReader) as a source for the app: reading runs
// off the main thread and completes on it, and the folder is watched, so a changed
// file is noticed without a restart.
class IcsFolderCalendarSource : public QObject, public CalendarSource {
    Q_OBJECT

public:
    IcsFolderCalendarSource(QString folder, Calendar calendar, QObject* parent = nullptr);
    ~IcsFolderCalendarSource() override;

    // $XDG_DATA_HOME/Daywyn/calendars (~/.local/share/Daywyn/calendars by default).
    static QString defaultFolder();
    // The source title the folder's calendars are listed under.
    static QString sourceTitle();

    void read(const CalendarQuery& query, Completion done) override;
    void setChangeHandler(std::function<void()> onChange) override;

    // Reads on the calling thread; for tests and the benchmark.
    CalendarSnapshot readNow(const CalendarQuery& query);

private:
    void watchFolder();

    QString folder_;
    struct State;
    std::shared_ptr<State> state_;
    QFileSystemWatcher watcher_;
    QTimer changeDelay_;
    std::function<void()> onChange_;
};

} // namespace daywyn
