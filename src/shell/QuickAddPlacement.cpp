#include "shell/QuickAddPlacement.h"

#include <algorithm>

namespace daywyn {

ScreenRect QuickAddPlacement::frame(const ScreenRect& visibleFrame) {
    const double width = std::max(0.0, std::min(panelWidth, visibleFrame.width - 2 * margin));
    const double height = std::max(0.0, std::min(panelHeight, visibleFrame.height - 2 * margin));
    const double x = visibleFrame.x + (visibleFrame.width - width) / 2;
    const double freeHeight = visibleFrame.height - height;
    const double y = visibleFrame.y + std::max(std::min(margin, freeHeight / 2), freeHeight / 4);
    return {x, y, width, height};
}

} // namespace daywyn
