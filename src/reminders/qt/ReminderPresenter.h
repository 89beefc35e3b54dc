#pragma once

#include <functional>

#include "reminders/DrawerReminder.h"

namespace daywyn {

// What shows a drawer reminder on screen: the edge drawer's pop-out in the app, a
// recording fake in tests.
class ReminderPresenter {
public:
    // The pop-out's three buttons.
    struct Callbacks {
        std::function<void()> open;
        std::function<void()> snooze;
        std::function<void()> dismiss;
    };

    virtual ~ReminderPresenter() = default;

    // Replaces any visible pop-out with this reminder, without taking the keyboard
    // from the window the user works in; the chime plays when asked. The pop-out
    // closes by itself after a while with none of the callbacks called.
    virtual void presentReminder(const DrawerReminder& reminder, bool playChime,
                                 Callbacks callbacks) = 0;
    // Closes the pop-out, if one is visible, and stops its chime.
    virtual void dismissReminder() = 0;
    // Slides the drawer in (which closes the pop-out).
    virtual void showDrawer() = 0;
};

} // namespace daywyn
