#include "shell/DrawerGeometry.h"

#include <string>

#include <gtest/gtest.h>

namespace daywyn {
namespace {

// A 1600 x 1000 visible frame that does not start at the origin (a panel above it and
// a screen to its left), so every rule has to use the frame and not the screen.
const ScreenRect kFrame{100, 40, 1600, 1000};

TEST(DrawerGeometry, PlacesDrawerHiddenDrawerAndHandleForEveryAnchor) {
    struct Row {
        EdgeAnchor anchor;
        ScreenRect visible;
        ScreenRect hidden;
        ScreenRect handle;
    };
    const Row rows[] = {
        {EdgeAnchor::topLeft, {112, 52, 380, 620}, {112, -588, 380, 620}, {100, 52, 58, 58}},
        {EdgeAnchor::topCenter, {710, 52, 380, 620}, {710, -588, 380, 620}, {871, 40, 58, 58}},
        {EdgeAnchor::topRight, {1308, 52, 380, 620}, {1308, -588, 380, 620}, {1642, 52, 58, 58}},
        {EdgeAnchor::rightCenter,
         {1308, 230, 380, 620},
         {1708, 230, 380, 620},
         {1642, 511, 58, 58}},
        {EdgeAnchor::bottomRight,
         {1308, 408, 380, 620},
         {1308, 1048, 380, 620},
         {1642, 970, 58, 58}},
        {EdgeAnchor::bottomCenter, {710, 408, 380, 620}, {710, 1048, 380, 620}, {871, 982, 58, 58}},
        {EdgeAnchor::bottomLeft, {112, 408, 380, 620}, {112, 1048, 380, 620}, {100, 970, 58, 58}},
        {EdgeAnchor::leftCenter, {112, 230, 380, 620}, {-288, 230, 380, 620}, {100, 511, 58, 58}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(rawValue(row.anchor)));
        const DrawerFrames frames = DrawerGeometry::frames(kFrame, row.anchor);
        EXPECT_EQ(frames.drawerVisible, row.visible);
        EXPECT_EQ(frames.drawerHidden, row.hidden);
        EXPECT_EQ(frames.handle, row.handle);
    }
}

TEST(DrawerGeometry, SmallScreensShrinkTheDrawerToKeepTheMargins) {
    // Just under 404 x 644: both sides shrink, the 12 px margins stay.
    const DrawerFrames small = DrawerGeometry::frames({0, 0, 400, 600}, EdgeAnchor::bottomRight);
    EXPECT_EQ(small.drawerVisible, (ScreenRect{12, 12, 376, 576}));
    EXPECT_EQ(small.drawerHidden, (ScreenRect{12, 608, 376, 576}));

    // Exactly 404 x 644 still fits the full drawer.
    EXPECT_EQ(DrawerGeometry::frames({0, 0, 404, 644}, EdgeAnchor::topLeft).drawerVisible,
              (ScreenRect{12, 12, 380, 620}));

    // A frame smaller than the margins gives an empty drawer, never a negative one.
    const DrawerFrames tiny = DrawerGeometry::frames({0, 0, 20, 10}, EdgeAnchor::leftCenter);
    EXPECT_EQ(tiny.drawerVisible.width, 0);
    EXPECT_EQ(tiny.drawerVisible.height, 0);
}

TEST(DrawerGeometry, ReminderSitsInsideTheMarginsOnTheAnchorsSide) {
    const ScreenRect frame{0, 0, 1000, 800};
    EXPECT_EQ(DrawerGeometry::reminderFrame(frame, EdgeAnchor::topLeft),
              (ScreenRect{12, 12, 340, 180}));
    EXPECT_EQ(DrawerGeometry::reminderFrame(frame, EdgeAnchor::bottomRight),
              (ScreenRect{648, 608, 340, 180}));
    EXPECT_EQ(DrawerGeometry::reminderFrame(frame, EdgeAnchor::bottomCenter),
              (ScreenRect{330, 608, 340, 180}));
    EXPECT_EQ(DrawerGeometry::reminderFrame(frame, EdgeAnchor::leftCenter),
              (ScreenRect{12, 310, 340, 180}));

    // Smaller than 364 x 204: the pop-out fills the inset frame.
    EXPECT_EQ(DrawerGeometry::reminderFrame({0, 0, 300, 150}, EdgeAnchor::rightCenter),
              (ScreenRect{12, 12, 276, 126}));
}

} // namespace
} // namespace daywyn

namespace daywyn {
namespace {

// Over the open drawer the pop-out would hide its header; it goes beside it instead.
TEST(DrawerGeometry, AReminderBesideTheOpenDrawerNeverCoversIt) {
    const auto overlaps = [](const ScreenRect& a, const ScreenRect& b) {
        return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height &&
               b.y < a.y + a.height;
    };
    const auto inside = [](const ScreenRect& r, const ScreenRect& f) {
        return r.x >= f.x && r.y >= f.y && r.x + r.width <= f.x + f.width &&
               r.y + r.height <= f.y + f.height;
    };
    for (const EdgeAnchor anchor :
         {EdgeAnchor::topLeft, EdgeAnchor::topCenter, EdgeAnchor::topRight, EdgeAnchor::leftCenter,
          EdgeAnchor::rightCenter, EdgeAnchor::bottomLeft, EdgeAnchor::bottomCenter,
          EdgeAnchor::bottomRight}) {
        SCOPED_TRACE(static_cast<int>(anchor));
        const ScreenRect drawer = DrawerGeometry::frames(kFrame, anchor).drawerVisible;
        const ScreenRect popOut = DrawerGeometry::reminderFrameBesideDrawer(kFrame, anchor, drawer);
        EXPECT_FALSE(overlaps(popOut, drawer));
        EXPECT_TRUE(inside(popOut, kFrame));
        EXPECT_EQ(popOut.width, DrawerGeometry::reminderWidth);
    }
    // Top left: to the right of the drawer, level with its top.
    const ScreenRect drawer = DrawerGeometry::frames(kFrame, EdgeAnchor::topLeft).drawerVisible;
    EXPECT_EQ(DrawerGeometry::reminderFrameBesideDrawer(kFrame, EdgeAnchor::topLeft, drawer),
              (ScreenRect{drawer.x + drawer.width + 12, drawer.y, 340, 180}));
    // A screen too narrow for both keeps the usual corner rather than leaving it.
    const ScreenRect narrow{0, 0, 600, 700};
    const ScreenRect small = DrawerGeometry::frames(narrow, EdgeAnchor::topLeft).drawerVisible;
    EXPECT_EQ(DrawerGeometry::reminderFrameBesideDrawer(narrow, EdgeAnchor::topLeft, small),
              DrawerGeometry::reminderFrame(narrow, EdgeAnchor::topLeft));
}

} // namespace
} // namespace daywyn
