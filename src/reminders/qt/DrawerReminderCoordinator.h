#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QObject>
#include <QString>

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Instant.h"
#include "calendar/CalendarEventItem.h"
#include "model/TaskItem.h"
#include "reminders/DrawerReminderCoordinatorState.h"
#include "reminders/DrawerReminderDecision.h"
#include "reminders/DrawerReminderSettings.h"

namespace daywyn {

class ReminderPresenter;
class UserSettings;

// Shows at most one drawer pop-out per maintenance check: due task and event
// reminders, snoozed ones coming back, and the periodic check-in. What was shown and
// snoozed is kept in the settings file, so a restart neither repeats nor forgets a
// reminder. Nothing is shown while the screen is locked or the user paused pop-outs.
class DrawerReminderCoordinator : public QObject {
    Q_OBJECT

public:
    // settings: the machine's settings store, which must outlive the coordinator; the
    // clock dates button presses. A missing last check-in is stored as now, so the first
    // one comes hours after the first launch.
    DrawerReminderCoordinator(UserSettings& settings, Calendar calendar, Clock clock,
                              QObject* parent = nullptr);
    ~DrawerReminderCoordinator() override;

    // Where pop-outs go; not owned, and it must outlive this coordinator or be
    // replaced by null first.
    void setPresenter(ReminderPresenter* presenter) { presenter_ = presenter; }

    // One check at now (from the maintenance pass); returns what it decided.
    DrawerReminderDecision check(const std::vector<TaskItem>& tasks,
                                 const std::vector<CalendarEventItem>& events, Instant now);
    // The settings screen's sample, shown without touching what was seen or snoozed.
    void preview(Instant now);
    Q_INVOKABLE void preview() { preview(clock_()); }

    // Screen lock: closes a visible pop-out and holds back the next until unlocked.
    void setLocked(bool locked);

    // The user's switches as the settings store holds them now.
    DrawerReminderSettings settings() const;
    bool chimeEnabled() const;
    const DrawerReminderCoordinatorState& state() const { return state_; }

Q_SIGNALS:
    // A pop-out button was acted on (after the state was saved).
    void responded(DrawerReminderAction action);

private:
    void persist(Instant now);
    void respond(DrawerReminderAction action, const DrawerReminder& reminder, Instant now);

    UserSettings& settings_;
    Calendar calendar_;
    DrawerReminderCoordinatorState state_;
    Clock clock_;
    ReminderPresenter* presenter_ = nullptr;
};

} // namespace daywyn
