#pragma once

#include <memory>

#include <QObject>

#include "base/Calendar.h"
#include "calendar/CalendarSource.h"

namespace daywyn {

// The desktop's calendars in Evolution Data Server (GNOME Calendar, Evolution, online
// accounts): the calendar list from its source registry, with each calendar's account
// and colour, and the day's occurrences from each selected calendar, so repeating events,
// their exceptions and zoned times come out as Evolution shows them. The service is
// talked to on a worker thread and results return to the main thread; no service on
// the bus gives the unavailable status. Calendars added, removed or changed and events
// changed in a selected calendar call the change handler.
class EdsCalendarSource : public QObject, public CalendarSource {
    Q_OBJECT

public:
    explicit EdsCalendarSource(Calendar calendar, QObject* parent = nullptr);
    ~EdsCalendarSource() override;

    void read(const CalendarQuery& query, Completion done) override;
    void setChangeHandler(std::function<void()> onChange) override;

    // Reads on the calling thread; for tests and the benchmark.
    CalendarSnapshot readNow(const CalendarQuery& query);

private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace daywyn
