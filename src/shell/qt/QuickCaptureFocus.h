#pragma once

#include <cstdint>
#include <memory>

namespace daywyn {

// The window that was in front before Quick Add opened, so that closing the panel can
// give the keyboard back to it. Window ids are the window system's; 0 means none.
class QuickCaptureFocus {
public:
    virtual ~QuickCaptureFocus() = default;

    // The X11 one when Qt runs on xcb; elsewhere one that knows no window.
    static std::unique_ptr<QuickCaptureFocus> forThisSession();

    // The window in front now, or 0 when the desktop does not say.
    virtual std::uint32_t activeWindow() = 0;
    // True when the window belongs to Daywyn itself.
    virtual bool isOwnWindow(std::uint32_t window) = 0;
    // Asks the window manager to bring the window to the front with the keyboard.
    virtual void activate(std::uint32_t window) = 0;
};

} // namespace daywyn
