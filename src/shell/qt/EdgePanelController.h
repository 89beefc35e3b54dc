#pragma once

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QVariantAnimation>

#include "model/AppPreferences.h"
#include "shell/DrawerGeometry.h"

class QQmlEngine;
class QQuickView;
class QScreen;

namespace daywyn {

// The app's two windows at a screen edge: the 58 x 58 handle and the drawer that
// slides out of the edge with the Today screen. Both are frameless, always on top and
// kept off the taskbar; the handle never takes keyboard focus.
// The reminder pop-out beside the drawer belongs here too and arrives with the
// drawer reminders (DrawerGeometry::reminderFrame already places it).
class EdgePanelController : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isVisible READ isVisible NOTIFY isVisibleChanged)
    Q_PROPERTY(QString anchor READ anchorName NOTIFY anchorChanged)

public:
    static constexpr int animationMilliseconds = 220;

    explicit EdgePanelController(QObject* parent = nullptr);
    ~EdgePanelController() override;

    // Builds the handle and the drawer from the engine's QML (the engine's root
    // context already holds the screens' models) and places them. Once only.
    void prepare(QQmlEngine& engine);
    bool isPrepared() const { return drawer_ != nullptr; }

    bool isVisible() const { return visible_; }
    EdgeAnchor anchor() const { return anchor_; }
    QString anchorName() const;
    // Moves handle and drawer to the anchor at once.
    void setAnchor(EdgeAnchor anchor);
    // No slide when the desktop asks for reduced motion.
    void setReducedMotion(bool reduced) { reducedMotion_ = reduced; }
    bool reducedMotion() const { return reducedMotion_; }

    // Slides the drawer in on the screen under the pointer and gives it the keyboard.
    Q_INVOKABLE void show();
    Q_INVOKABLE void hide();
    Q_INVOKABLE void toggle();
    // Shows the drawer with its add field focused.
    Q_INVOKABLE void showForQuickAdd();

    // The frames for the current screen and anchor (the drawer's target when shown).
    DrawerFrames frames() const;
    QQuickView* drawerWindow() const { return drawer_; }
    QQuickView* handleWindow() const { return handle_; }

Q_SIGNALS:
    void isVisibleChanged();
    void anchorChanged();
    // The Today screen focuses its add field.
    void addFieldFocusRequested();
    // The drawer finished sliding in (or appeared at once) and drew its frame.
    void drawerShown();

private:
    // The screen under the pointer, else the primary one, else any.
    QScreen* pickScreen();
    void reposition();
    void screensChanged();
    void slide(const QRect& from, const QRect& to, bool hideAtEnd);
    void watchReducedMotionSetting();

    EdgeAnchor anchor_ = EdgeAnchor::topLeft;
    bool visible_ = false;
    bool reducedMotion_ = false;
    QPointer<QScreen> currentScreen_;
    QQuickView* handle_ = nullptr;
    QQuickView* drawer_ = nullptr;
    QVariantAnimation slide_;
    bool hideAtEnd_ = false;
};

} // namespace daywyn
