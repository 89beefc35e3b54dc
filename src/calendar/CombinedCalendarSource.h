#pragma once

#include <vector>

#include "calendar/CalendarSource.h"

namespace daywyn {

// Several calendar sources read as one: their calendars and events side by side. Access
// is full when any source answered; a source's error sentence is kept.
class CombinedCalendarSource : public CalendarSource {
public:
    // The sources are not owned and must outlive this one.
    explicit CombinedCalendarSource(std::vector<CalendarSource*> sources);

    void read(const CalendarQuery& query, Completion done) override;
    void setChangeHandler(std::function<void()> onChange) override;

    // The snapshots of every source as one.
    static CalendarSnapshot combined(std::vector<CalendarSnapshot> snapshots);

private:
    std::vector<CalendarSource*> sources_;
};

} // namespace daywyn
