#pragma once

#include "shell/qt/QuickCaptureFocus.h"

namespace daywyn {

// The EWMH way: the root window's _NET_ACTIVE_WINDOW names the window in front, and a
// _NET_ACTIVE_WINDOW client message to the root asks the window manager to activate one.
// Needs the xcb platform and an EWMH window manager (without one nothing is remembered).
class QuickCaptureFocusX11 final : public QuickCaptureFocus {
public:
    std::uint32_t activeWindow() override;
    bool isOwnWindow(std::uint32_t window) override;
    void activate(std::uint32_t window) override;
};

} // namespace daywyn
