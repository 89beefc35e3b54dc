#pragma once

#include <deque>
#include <functional>
#include <optional>

#include "calendar/CalendarSource.h"

namespace daywyn::test {

// A calendar source the test answers by hand: reads wait until the test completes them
// (a slow calendar service), or are answered at once with `answerAtOnce`.
class FakeCalendarSource : public CalendarSource {
public:
    struct PendingRead {
        CalendarQuery query;
        Completion done;
    };

    void read(const CalendarQuery& query, Completion done) override;
    void setChangeHandler(std::function<void()> onChange) override {
        onChange_ = std::move(onChange);
    }

    // Every later read is answered with this snapshot inside read(); nullopt: they wait.
    void answerAtOnce(std::optional<CalendarSnapshot> snapshot) {
        immediate_ = std::move(snapshot);
    }
    // Completes the oldest waiting read; false when none waits.
    bool completeOldest(CalendarSnapshot snapshot);
    // Completes the newest waiting read and forgets the older ones' order; false when none.
    bool completeNewest(CalendarSnapshot snapshot);
    // Tells the reader that the calendars changed.
    void announceChange() const {
        if (onChange_) {
            onChange_();
        }
    }

    const std::deque<PendingRead>& pending() const { return pending_; }
    const std::vector<CalendarQuery>& queries() const { return queries_; }

private:
    std::deque<PendingRead> pending_;
    std::vector<CalendarQuery> queries_;
    std::optional<CalendarSnapshot> immediate_;
    std::function<void()> onChange_;
};

} // namespace daywyn::test
