#pragma once

#include "shell/DrawerGeometry.h"

namespace daywyn {

// Where the floating Quick Add panel opens on a screen: centred horizontally on the
// visible frame, in its upper part (a quarter of the free height below its top), and
// never wider or taller than the frame less a 12 px margin on each side.
struct QuickAddPlacement {
    static constexpr double panelWidth = 560;
    static constexpr double panelHeight = 176;
    static constexpr double margin = 12;

    static ScreenRect frame(const ScreenRect& visibleFrame);
};

} // namespace daywyn
