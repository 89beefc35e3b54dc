#include "shell/qt/EdgePanelController.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

#include <QCursor>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QScreen>
#include <QtGui/qguiapplication_platform.h>
#include <xcb/xcb.h>

#include "shell/qt/XcbAtom.h"

namespace daywyn {
namespace {

QRect toRect(const ScreenRect& r) {
    return QRect(static_cast<int>(std::lround(r.x)), static_cast<int>(std::lround(r.y)),
                 static_cast<int>(std::lround(r.width)), static_cast<int>(std::lround(r.height)));
}

// The part of a screen windows may use: its available area, trimmed to the screen
// itself in case the desktop's work area is stale after a resolution change.
QRect visibleFrame(const QScreen* screen) {
    if (!screen) {
        return QRect(0, 0, 1280, 800);
    }
    const QRect usable = screen->availableGeometry().intersected(screen->geometry());
    return usable.isEmpty() ? screen->geometry() : usable;
}

// Asks the window manager to leave a mapped panel out of the taskbar, the pager and
// Alt+Tab (_NET_WM_STATE_SKIP_TASKBAR and _SKIP_PAGER), which Qt has no flag for on
// X11. Elsewhere (Wayland, offscreen) it does nothing.
void keepOffTaskLists(QWindow& window) {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* connection = x11 ? x11->connection() : nullptr;
    if (!connection || xcb_connection_has_error(connection)) {
        return;
    }
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const xcb_atom_t skip[] = {internAtom(connection, "_NET_WM_STATE_SKIP_TASKBAR"),
                               internAtom(connection, "_NET_WM_STATE_SKIP_PAGER")};
    // Before mapping the window manager reads the property; once mapped it listens
    // for the request. Both are sent, since Qt maps the window on its own schedule.
    xcb_change_property(connection, XCB_PROP_MODE_APPEND, static_cast<xcb_window_t>(window.winId()),
                        internAtom(connection, "_NET_WM_STATE"), XCB_ATOM_ATOM, 32, 2, skip);
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = static_cast<xcb_window_t>(window.winId());
    event.type = internAtom(connection, "_NET_WM_STATE");
    event.data.data32[0] = 1; // add
    event.data.data32[1] = skip[0];
    event.data.data32[2] = skip[1];
    event.data.data32[3] = 1; // from a normal application
    xcb_send_event(connection, 0, root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(connection);
}

QQuickView* makePanel(QQmlEngine& engine, const QString& source, Qt::WindowFlags extra,
                      const QString& title) {
    auto* view = new QQuickView(&engine, nullptr);
    view->setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | extra);
    view->setResizeMode(QQuickView::SizeRootObjectToView);
    view->setTitle(title);
    view->setSource(QUrl(source));
    keepOffTaskLists(*view);
    // Each time the window is mapped, since the window manager forgets on unmap.
    QObject::connect(view, &QWindow::visibleChanged, view, [view](bool visible) {
        if (visible) {
            keepOffTaskLists(*view);
        }
    });
    return view;
}

} // namespace

EdgePanelController::EdgePanelController(QObject* parent)
    : QObject(parent) {
    reminderAutoClose_.setSingleShot(true);
    reminderAutoClose_.setInterval(defaultReminderAutoCloseMilliseconds);
    connect(&reminderAutoClose_, &QTimer::timeout, this, &EdgePanelController::dismissReminder);
    slide_.setDuration(animationMilliseconds);
    slide_.setEasingCurve(QEasingCurve::InOutCubic);
    connect(&slide_, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        if (drawer_) {
            drawer_->setGeometry(value.toRect());
        }
    });
    connect(&slide_, &QVariantAnimation::finished, this, [this] {
        if (!drawer_) {
            return;
        }
        if (hideAtEnd_) {
            drawer_->hide();
        } else {
            // The last step lands exactly on the frame worked out now, in case the
            // screen changed while the drawer moved.
            drawer_->setGeometry(toRect(frames().drawerVisible));
            // Ready means the final frame is on screen, not merely scheduled.
            connect(drawer_, &QQuickWindow::frameSwapped, this, &EdgePanelController::drawerShown,
                    Qt::SingleShotConnection);
            drawer_->update();
        }
    });
    if (qEnvironmentVariableIntValue("DAYWYN_REDUCE_MOTION") == 1) {
        reducedMotion_ = true;
    } else {
        watchReducedMotionSetting();
    }
}

EdgePanelController::~EdgePanelController() {
    delete reminder_;
    delete drawer_;
    delete handle_;
}

void EdgePanelController::watchReducedMotionSetting() {
    // GNOME's switch, through the desktop portal so it also works in sandboxes and on
    // other desktops that implement the key. Asked asynchronously: start-up never waits.
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return;
    }
    QDBusMessage read = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Desktop"),
        QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("Read"));
    read << QStringLiteral("org.gnome.desktop.interface") << QStringLiteral("enable-animations");
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(read), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* call) {
                QDBusPendingReply<QDBusVariant> reply = *call;
                if (reply.isValid()) {
                    QVariant value = reply.value().variant();
                    // The portal wraps the value in one more variant.
                    if (value.canConvert<QDBusVariant>()) {
                        value = value.value<QDBusVariant>().variant();
                    }
                    if (value.typeId() == QMetaType::Bool) {
                        reducedMotion_ = !value.toBool();
                    }
                }
                call->deleteLater();
            });
}

QString EdgePanelController::anchorName() const {
    const auto raw = rawValue(anchor_);
    return QString::fromLatin1(raw.data(), static_cast<qsizetype>(raw.size()));
}

void EdgePanelController::prepare(QQmlEngine& engine) {
    if (drawer_) {
        return;
    }
    engine_ = &engine;
    handle_ = makePanel(engine, QStringLiteral("qrc:/qt/qml/Daywyn/Handle.qml"),
                        Qt::WindowDoesNotAcceptFocus, QStringLiteral("Daywyn handle"));
    drawer_ = makePanel(engine, QStringLiteral("qrc:/qt/qml/Daywyn/Drawer.qml"), {},
                        QStringLiteral("Daywyn"));
    // Without a compositor a window cannot be see-through, so the handle's window is
    // cut to the shape the handle draws (the thin bar, or the logo tile when near).
    handle_->setColor(Qt::transparent);
    if (QQuickItem* root = handle_->rootObject()) {
        connect(root, SIGNAL(visibleShapeChanged()), this, SLOT(updateHandleShape()));
        updateHandleShape();
    }
    connect(qApp, &QGuiApplication::screenAdded, this, &EdgePanelController::screensChanged);
    connect(qApp, &QGuiApplication::screenRemoved, this, &EdgePanelController::screensChanged);
    connect(qApp, &QGuiApplication::primaryScreenChanged, this,
            &EdgePanelController::screensChanged);
    screensChanged();
    handle_->show();
}

void EdgePanelController::updateHandleShape() {
    if (QQuickItem* root = handle_ ? handle_->rootObject() : nullptr) {
        handle_->setMask(QRegion(root->property("visibleShape").toRectF().toAlignedRect()));
    }
}

QScreen* EdgePanelController::pickScreen() {
    const auto screens = QGuiApplication::screens();
    if (QScreen* pointer = QGuiApplication::screenAt(QCursor::pos())) {
        return pointer;
    }
    if (QScreen* primary = QGuiApplication::primaryScreen()) {
        return primary;
    }
    return screens.isEmpty() ? nullptr : screens.first();
}

void EdgePanelController::screensChanged() {
    // Every screen's usable area can change (a panel appears, a resolution changes);
    // watch them all, once each.
    for (QScreen* screen : QGuiApplication::screens()) {
        connect(screen, &QScreen::availableGeometryChanged, this, &EdgePanelController::reposition,
                Qt::UniqueConnection);
        connect(screen, &QScreen::geometryChanged, this, &EdgePanelController::reposition,
                Qt::UniqueConnection);
    }
    if (!currentScreen_ || !QGuiApplication::screens().contains(currentScreen_.data())) {
        currentScreen_ = pickScreen();
    }
    reposition();
}

DrawerFrames EdgePanelController::frames() const {
    const QRect v = visibleFrame(currentScreen_);
    return DrawerGeometry::frames({static_cast<double>(v.x()), static_cast<double>(v.y()),
                                   static_cast<double>(v.width()), static_cast<double>(v.height())},
                                  anchor_);
}

void EdgePanelController::reposition() {
    if (!drawer_) {
        return;
    }
    // The screen may have gone with the change; the drawer follows to one still there.
    if (!currentScreen_ || !QGuiApplication::screens().contains(currentScreen_.data())) {
        currentScreen_ = pickScreen();
    }
    const DrawerFrames f = frames();
    handle_->setScreen(currentScreen_);
    handle_->setGeometry(toRect(f.handle));
    drawer_->setScreen(currentScreen_);
    // Stopping a slide skips its end: a drawer that was sliding away must still go,
    // or it would stay mapped beyond the edge, over the handle.
    slide_.stop();
    if (!visible_ && drawer_->isVisible()) {
        drawer_->hide();
    }
    drawer_->setGeometry(toRect(visible_ ? f.drawerVisible : f.drawerHidden));
}

void EdgePanelController::setAnchor(EdgeAnchor anchor) {
    if (anchor == anchor_) {
        return;
    }
    dismissReminder();
    anchor_ = anchor;
    reposition();
    Q_EMIT anchorChanged();
}

void EdgePanelController::slide(const QRect& from, const QRect& to, bool hideAtEnd) {
    slide_.stop();
    hideAtEnd_ = hideAtEnd;
    slide_.setStartValue(from);
    slide_.setEndValue(to);
    slide_.start();
}

void EdgePanelController::show() {
    if (!drawer_) {
        return;
    }
    dismissReminder();
    const bool wasVisible = visible_ && slide_.state() != QAbstractAnimation::Running;
    currentScreen_ = pickScreen();
    const DrawerFrames f = frames();
    handle_->setScreen(currentScreen_);
    handle_->setGeometry(toRect(f.handle));
    drawer_->setScreen(currentScreen_);
    if (!visible_) {
        visible_ = true;
        Q_EMIT isVisibleChanged();
    }
    if (wasVisible && drawer_->isVisible()) {
        // Already out: put it back where it belongs should anything have moved it.
        drawer_->setGeometry(toRect(f.drawerVisible));
        drawer_->raise();
        drawer_->requestActivate();
        return;
    }
    if (reducedMotion_) {
        slide_.stop();
        drawer_->setGeometry(toRect(f.drawerVisible));
        connect(drawer_, &QQuickWindow::frameSwapped, this, &EdgePanelController::drawerShown,
                Qt::SingleShotConnection);
        drawer_->show();
    } else {
        // Reversing a hide in progress starts from where the drawer is now.
        const QRect from = slide_.state() == QAbstractAnimation::Running ? drawer_->geometry()
                                                                         : toRect(f.drawerHidden);
        drawer_->setGeometry(from);
        drawer_->show();
        slide(from, toRect(f.drawerVisible), false);
    }
    drawer_->raise();
    drawer_->requestActivate();
}

void EdgePanelController::hide() {
    if (!drawer_ || !visible_) {
        return;
    }
    visible_ = false;
    Q_EMIT isVisibleChanged();
    if (reducedMotion_) {
        slide_.stop();
        drawer_->hide();
        return;
    }
    slide(drawer_->geometry(), toRect(frames().drawerHidden), true);
}

void EdgePanelController::toggle() {
    if (visible_) {
        hide();
    } else {
        show();
    }
}

void EdgePanelController::showForQuickAdd() {
    show();
    Q_EMIT addFieldFocusRequested();
}

void EdgePanelController::presentReminder(const DrawerReminder& reminder, bool playChime,
                                          Callbacks callbacks) {
    if (!engine_) {
        return;
    }
    dismissReminder();
    if (!reminder_) {
        // Never focusable: a pop-out must not take the keyboard from the user's work.
        reminder_ = makePanel(*engine_, QStringLiteral("qrc:/qt/qml/Daywyn/ReminderPopout.qml"),
                              Qt::WindowDoesNotAcceptFocus, QStringLiteral("Daywyn reminder"));
        reminder_->setColor(Qt::transparent);
    }
    // The pop-out joins the drawer's screen while that screen is still attached.
    if (!currentScreen_ || !QGuiApplication::screens().contains(currentScreen_.data())) {
        currentScreen_ = pickScreen();
    }
    const QRect v = visibleFrame(currentScreen_);
    reminder_->setScreen(currentScreen_);
    const ScreenRect frame{static_cast<double>(v.x()), static_cast<double>(v.y()),
                           static_cast<double>(v.width()), static_cast<double>(v.height())};
    // Beside an open drawer rather than over its header.
    reminder_->setGeometry(toRect(
        visible_ ? DrawerGeometry::reminderFrameBesideDrawer(frame, anchor_, frames().drawerVisible)
                 : DrawerGeometry::reminderFrame(frame, anchor_)));
    reminderCallbacks_ = std::move(callbacks);
    if (QQuickItem* root = reminder_->rootObject()) {
        root->setProperty("title", QString::fromStdString(reminder.title));
        root->setProperty("detail", QString::fromStdString(reminder.detail));
        QMetaObject::invokeMethod(root, "fadeIn", Q_ARG(QVariant, QVariant(!reducedMotion_)));
    }
    // show() maps the window; with WindowDoesNotAcceptFocus the window manager is
    // told not to give it input, and nothing here asks for activation.
    reminder_->show();
    reminder_->raise();
    reminderAutoClose_.start();
    if (playChime && chime_) {
        chime_->play();
    }
    Q_EMIT reminderShown();
}

bool EdgePanelController::isShowingReminder() const {
    return reminder_ && reminder_->isVisible();
}

void EdgePanelController::dismissReminder() {
    reminderAutoClose_.stop();
    if (chime_) {
        chime_->stop();
    }
    if (!isShowingReminder()) {
        return;
    }
    reminder_->hide();
    Q_EMIT reminderClosed();
}

void EdgePanelController::openReminder() {
    // Copied first: the callback closes the pop-out, which may replace the callbacks.
    const auto callback = reminderCallbacks_.open;
    if (callback) {
        callback();
    } else {
        show();
    }
}

void EdgePanelController::snoozeReminder() {
    const auto callback = reminderCallbacks_.snooze;
    if (callback) {
        callback();
    } else {
        dismissReminder();
    }
}

void EdgePanelController::closeReminder() {
    const auto callback = reminderCallbacks_.dismiss;
    if (callback) {
        callback();
    } else {
        dismissReminder();
    }
}

} // namespace daywyn
