#pragma once

namespace daywyn {

// The short sound that comes with a drawer pop-out.
class ReminderChime {
public:
    virtual ~ReminderChime() = default;
    virtual void play() = 0;
    virtual void stop() = 0;
};

} // namespace daywyn
