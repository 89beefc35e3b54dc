#include "support/FakeCalendarSource.h"

namespace daywyn::test {

void FakeCalendarSource::read(const CalendarQuery& query, Completion done) {
    queries_.push_back(query);
    if (immediate_) {
        done(*immediate_);
        return;
    }
    pending_.push_back({query, std::move(done)});
}

bool FakeCalendarSource::completeOldest(CalendarSnapshot snapshot) {
    if (pending_.empty()) {
        return false;
    }
    auto read = std::move(pending_.front());
    pending_.pop_front();
    read.done(std::move(snapshot));
    return true;
}

bool FakeCalendarSource::completeNewest(CalendarSnapshot snapshot) {
    if (pending_.empty()) {
        return false;
    }
    auto read = std::move(pending_.back());
    pending_.pop_back();
    read.done(std::move(snapshot));
    return true;
}

} // namespace daywyn::test
