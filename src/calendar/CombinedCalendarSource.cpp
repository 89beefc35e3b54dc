#include "calendar/CombinedCalendarSource.h"

#include <memory>

namespace daywyn {

CombinedCalendarSource::CombinedCalendarSource(std::vector<CalendarSource*> sources)
    : sources_(std::move(sources)) {}

CalendarSnapshot CombinedCalendarSource::combined(std::vector<CalendarSnapshot> snapshots) {
    CalendarSnapshot result;
    result.status = CalendarAccessStatus::unavailable;
    bool anyFull = false;
    bool anyUndetermined = false;
    for (auto& snapshot : snapshots) {
        anyFull = anyFull || snapshot.status == CalendarAccessStatus::fullAccess;
        anyUndetermined = anyUndetermined || snapshot.status == CalendarAccessStatus::notDetermined;
        result.calendars.insert(result.calendars.end(),
                                std::make_move_iterator(snapshot.calendars.begin()),
                                std::make_move_iterator(snapshot.calendars.end()));
        result.events.insert(result.events.end(), std::make_move_iterator(snapshot.events.begin()),
                             std::make_move_iterator(snapshot.events.end()));
        if (snapshot.errorMessage) {
            result.errorMessage = result.errorMessage
                                      ? *result.errorMessage + " " + *snapshot.errorMessage
                                      : *snapshot.errorMessage;
        }
    }
    if (anyFull) {
        result.status = CalendarAccessStatus::fullAccess;
    } else if (anyUndetermined) {
        result.status = CalendarAccessStatus::notDetermined;
    }
    return result;
}

void CombinedCalendarSource::read(const CalendarQuery& query, Completion done) {
    if (sources_.empty()) {
        done(CalendarSnapshot{});
        return;
    }
    struct Gathering {
        std::vector<CalendarSnapshot> snapshots;
        std::size_t pending = 0;
        Completion done;
    };
    auto gathering = std::make_shared<Gathering>();
    gathering->snapshots.resize(sources_.size());
    gathering->pending = sources_.size();
    gathering->done = std::move(done);
    for (std::size_t i = 0; i < sources_.size(); ++i) {
        sources_[i]->read(query, [gathering, i](CalendarSnapshot snapshot) {
            gathering->snapshots[i] = std::move(snapshot);
            if (--gathering->pending == 0) {
                gathering->done(combined(std::move(gathering->snapshots)));
            }
        });
    }
}

void CombinedCalendarSource::setChangeHandler(std::function<void()> onChange) {
    for (auto* source : sources_) {
        source->setChangeHandler(onChange);
    }
}

} // namespace daywyn
