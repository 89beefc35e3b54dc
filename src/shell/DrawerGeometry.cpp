#include "shell/DrawerGeometry.h"

#include <algorithm>

namespace daywyn {
namespace {

// The placement rules are stated with y growing upwards (origin at the bottom-left),
// as a designer measures from the bottom of the screen. They are computed that way and
// turned into the desktop's downward y in exactly one place, flipDown, mirroring
// inside the visible frame so that its own extent stays put.
struct UpRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    double minX() const { return x; }
    double maxX() const { return x + width; }
    double midX() const { return x + width / 2; }
    double minY() const { return y; }
    double maxY() const { return y + height; }
    double midY() const { return y + height / 2; }
};

UpRect upFrame(const ScreenRect& frame) {
    return {frame.x, frame.y, frame.width, frame.height};
}

ScreenRect flipDown(const UpRect& rect, const ScreenRect& frame) {
    const double top = frame.y;
    const double bottom = frame.y + frame.height;
    return {rect.x, top + bottom - (rect.y + rect.height), rect.width, rect.height};
}

bool isLeft(EdgeAnchor a) {
    return a == EdgeAnchor::topLeft || a == EdgeAnchor::bottomLeft || a == EdgeAnchor::leftCenter;
}
bool isRight(EdgeAnchor a) {
    return a == EdgeAnchor::topRight || a == EdgeAnchor::bottomRight ||
           a == EdgeAnchor::rightCenter;
}
bool isTop(EdgeAnchor a) {
    return a == EdgeAnchor::topLeft || a == EdgeAnchor::topCenter || a == EdgeAnchor::topRight;
}
bool isBottom(EdgeAnchor a) {
    return a == EdgeAnchor::bottomLeft || a == EdgeAnchor::bottomCenter ||
           a == EdgeAnchor::bottomRight;
}

// Places a w x h box inside `area` on the anchor's side: corners for corner anchors,
// centred on the edge for the centre ones, `inset` away from the edges it touches.
UpRect placeOnAnchor(const UpRect& area, double w, double h, EdgeAnchor anchor, double inset) {
    UpRect r{0, 0, w, h};
    if (isLeft(anchor)) {
        r.x = area.minX() + inset;
    } else if (isRight(anchor)) {
        r.x = area.maxX() - w - inset;
    } else {
        r.x = area.midX() - w / 2;
    }
    if (isTop(anchor)) {
        r.y = area.maxY() - h - inset;
    } else if (isBottom(anchor)) {
        r.y = area.minY() + inset;
    } else {
        r.y = area.midY() - h / 2;
    }
    return r;
}

} // namespace

DrawerFrames DrawerGeometry::frames(const ScreenRect& visibleFrame, EdgeAnchor anchor) {
    const UpRect v = upFrame(visibleFrame);
    // A screen too small for even the margins gets an empty drawer rather than a
    // negative size, which window systems treat as an error.
    const double w = std::max(0.0, std::min(v.width - 2 * margin, drawerWidth));
    const double h = std::max(0.0, std::min(v.height - 2 * margin, preferredDrawerHeight));

    const UpRect shown = placeOnAnchor(v, w, h, anchor, margin);
    UpRect hidden = shown;
    if (isTop(anchor)) {
        hidden.y = v.maxY() + hiddenOffset;
    } else if (isBottom(anchor)) {
        hidden.y = v.minY() - h - hiddenOffset;
    } else if (anchor == EdgeAnchor::leftCenter) {
        hidden.x = v.minX() - w - hiddenOffset;
    } else {
        hidden.x = v.maxX() + hiddenOffset;
    }

    UpRect handle{0, 0, handleSize, handleSize};
    if (isLeft(anchor)) {
        handle.x = v.minX();
    } else if (isRight(anchor)) {
        handle.x = v.maxX() - handleSize;
    } else {
        handle.x = v.midX() - handleSize / 2;
    }
    const bool corner = anchor == EdgeAnchor::topLeft || anchor == EdgeAnchor::topRight ||
                        anchor == EdgeAnchor::bottomLeft || anchor == EdgeAnchor::bottomRight;
    const double edgeInset = corner ? margin : 0;
    if (isTop(anchor)) {
        handle.y = v.maxY() - handleSize - edgeInset;
    } else if (isBottom(anchor)) {
        handle.y = v.minY() + edgeInset;
    } else {
        handle.y = v.midY() - handleSize / 2;
    }

    return {flipDown(shown, visibleFrame), flipDown(hidden, visibleFrame),
            flipDown(handle, visibleFrame)};
}

ScreenRect DrawerGeometry::reminderFrame(const ScreenRect& visibleFrame, EdgeAnchor anchor) {
    const UpRect v = upFrame(visibleFrame);
    const UpRect inset{v.x + margin, v.y + margin, std::max(0.0, v.width - 2 * margin),
                       std::max(0.0, v.height - 2 * margin)};
    const double w = std::min(inset.width, reminderWidth);
    const double h = std::min(inset.height, reminderHeight);
    return flipDown(placeOnAnchor(inset, w, h, anchor, 0), visibleFrame);
}

ScreenRect DrawerGeometry::reminderFrameBesideDrawer(const ScreenRect& visibleFrame,
                                                     EdgeAnchor anchor, const ScreenRect& drawer) {
    const ScreenRect fallback = reminderFrame(visibleFrame, anchor);
    const double w = fallback.width;
    const double h = fallback.height;
    // Worked out in the desktop's downward coordinates, against the drawer's frame.
    ScreenRect r{0, 0, w, h};
    const bool sideways = isLeft(anchor) || isRight(anchor);
    if (sideways) {
        r.x = isLeft(anchor) ? drawer.x + drawer.width + margin : drawer.x - margin - w;
        if (isTop(anchor)) {
            r.y = drawer.y;
        } else if (isBottom(anchor)) {
            r.y = drawer.y + drawer.height - h;
        } else {
            r.y = drawer.y + (drawer.height - h) / 2;
        }
    } else {
        r.x = drawer.x + (drawer.width - w) / 2;
        r.y = isTop(anchor) ? drawer.y + drawer.height + margin : drawer.y - margin - h;
    }
    const bool fits = r.x >= visibleFrame.x + margin && r.y >= visibleFrame.y + margin &&
                      r.x + w <= visibleFrame.x + visibleFrame.width - margin &&
                      r.y + h <= visibleFrame.y + visibleFrame.height - margin;
    return fits ? r : fallback;
}

} // namespace daywyn
