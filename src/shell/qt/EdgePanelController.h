#pragma once

#include <memory>

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QTimer>
#include <QVariantAnimation>

#include "model/AppPreferences.h"
#include "reminders/qt/ReminderChime.h"
#include "reminders/qt/ReminderPresenter.h"
#include "shell/DrawerGeometry.h"

class QQmlEngine;
class QQuickView;
class QScreen;

namespace daywyn {

// The app's two windows at a screen edge: the 58 x 58 handle and the drawer that
// slides out of the edge with the Today screen. Both are frameless, always on top and
// kept off the taskbar; the handle never takes keyboard focus. A third, short-lived
// window is the reminder pop-out on the anchor's side, which never takes focus either
// and closes by itself after 20 seconds.
class EdgePanelController : public QObject, public ReminderPresenter {
    Q_OBJECT
    Q_PROPERTY(bool isVisible READ isVisible NOTIFY isVisibleChanged)
    Q_PROPERTY(QString anchor READ anchorName NOTIFY anchorChanged)
    Q_PROPERTY(int reminderAutoCloseMilliseconds READ reminderAutoCloseMilliseconds CONSTANT)

public:
    static constexpr int animationMilliseconds = 220;
    static constexpr int defaultReminderAutoCloseMilliseconds = 20'000;

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

    // The reminder pop-out (ReminderPresenter): closes any previous one, places the
    // new one in the anchor's corner or on the middle of its edge, fades it in
    // without activating it and closes it after the auto-close time. Changing the
    // anchor or showing the drawer closes it. Does nothing before prepare().
    void presentReminder(const DrawerReminder& reminder, bool playChime,
                         Callbacks callbacks) override;
    void dismissReminder() override;
    void showDrawer() override { show(); }
    QQuickView* reminderWindow() const { return reminder_; }
    bool isShowingReminder() const;
    int reminderAutoCloseMilliseconds() const { return reminderAutoClose_.interval(); }
    // Tests shorten the wait; the app keeps the default.
    void setReminderAutoCloseMilliseconds(int milliseconds) {
        reminderAutoClose_.setInterval(milliseconds);
    }
    // The chime's player; none: silent.
    void setReminderChime(std::unique_ptr<ReminderChime> chime) { chime_ = std::move(chime); }

    // The pop-out's buttons, from QML.
    Q_INVOKABLE void openReminder();
    Q_INVOKABLE void snoozeReminder();
    Q_INVOKABLE void closeReminder();

Q_SIGNALS:
    void isVisibleChanged();
    void anchorChanged();
    // The Today screen focuses its add field.
    void addFieldFocusRequested();
    // The drawer finished sliding in (or appeared at once) and drew its frame.
    void drawerShown();
    // A reminder pop-out appeared or went away.
    void reminderShown();
    void reminderClosed();

private Q_SLOTS:
    // Cuts the handle's window to what the handle draws.
    void updateHandleShape();

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
    QQmlEngine* engine_ = nullptr;
    QQuickView* reminder_ = nullptr;
    Callbacks reminderCallbacks_;
    QTimer reminderAutoClose_;
    std::unique_ptr<ReminderChime> chime_;
};

} // namespace daywyn
