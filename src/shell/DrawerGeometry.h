#pragma once

#include "model/AppPreferences.h"

namespace daywyn {

// A rectangle in the desktop's coordinates: origin at the top-left corner, y growing
// downwards, in device-independent pixels.
struct ScreenRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    bool operator==(const ScreenRect&) const = default;
};

// Where the drawer sits when shown, where it slides from, and where the handle sits.
struct DrawerFrames {
    ScreenRect drawerVisible;
    ScreenRect drawerHidden;
    ScreenRect handle;
    bool operator==(const DrawerFrames&) const = default;
};

// The edge drawer's placement rules for one screen's visible frame (the part not
// covered by panels and docks). Pure: the same frame and anchor always give the same
// rectangles, so the window code only moves windows to them.
struct DrawerGeometry {
    static constexpr double drawerWidth = 380;
    static constexpr double preferredDrawerHeight = 620;
    static constexpr double handleSize = 58;
    static constexpr double margin = 12;
    static constexpr double hiddenOffset = 8;
    static constexpr double reminderWidth = 340;
    static constexpr double reminderHeight = 180;

    // The drawer (at most 380 x 620, 12 px from the screen edges, smaller on small
    // screens), its hidden place 8 px beyond the anchor's edge, and the 58 x 58 handle
    // flush with the edge (corner handles 12 px in from the top or bottom).
    static DrawerFrames frames(const ScreenRect& visibleFrame, EdgeAnchor anchor);

    // The reminder pop-out (at most 340 x 180) inside the frame inset by 12 px: in the
    // anchor's corner, or centred on the anchor's edge for the centre anchors.
    static ScreenRect reminderFrame(const ScreenRect& visibleFrame, EdgeAnchor anchor);

    // The pop-out while the drawer is out: beside it, 12 px away on the side facing
    // the screen (below or above it for the top and bottom centre anchors), level
    // with its top, bottom or middle as the anchor is. Where that does not fit inside
    // the frame it falls back to reminderFrame.
    static ScreenRect reminderFrameBesideDrawer(const ScreenRect& visibleFrame, EdgeAnchor anchor,
                                                const ScreenRect& drawer);
};

} // namespace daywyn
