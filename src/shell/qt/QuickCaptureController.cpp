#include "shell/qt/QuickCaptureController.h"

#include <cmath>
#include <cstdio>

#include <QCursor>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QScreen>

#include "parsing/QuickTaskParser.h"
#include "persistence/qt/UserSettings.h"
#include "shell/QuickAddPlacement.h"
#include "shell/qt/GlobalShortcut.h"
#include "shell/qt/QuickCaptureFocus.h"
#include "store/AddFromLine.h"
#include "store/TodayTaskStore.h"

namespace daywyn {
namespace {

const QString enabledSetting = QString::fromLatin1(QuickCaptureController::enabledKey);
const QString fieldName = QStringLiteral("quickAddField");

QRect toRect(const ScreenRect& r) {
    return QRect(static_cast<int>(std::lround(r.x)), static_cast<int>(std::lround(r.y)),
                 static_cast<int>(std::lround(r.width)), static_cast<int>(std::lround(r.height)));
}

double milliseconds(const QElapsedTimer& timer) {
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

} // namespace

QuickCaptureController::QuickCaptureController(TodayTaskStore& store, const Calendar& calendar,
                                               Clock clock, UserSettings& settings,
                                               std::unique_ptr<GlobalShortcut> shortcut,
                                               std::unique_ptr<QuickCaptureFocus> focus,
                                               bool registrationAllowed, QObject* parent)
    : QObject(parent)
    , store_(store)
    , calendar_(calendar)
    , clock_(std::move(clock))
    , settings_(settings)
    , shortcut_(std::move(shortcut))
    , focus_(std::move(focus))
    , registrationAllowed_(registrationAllowed)
    , logTiming_(qEnvironmentVariableIntValue("DAYWYN_QUICK_ADD_LOG") == 1) {
    if (!settings_.contains(enabledSetting)) {
        settings_.setValue(enabledSetting, true);
    }
    enabled_ = settings_.boolValue(enabledSetting, true);
    status_ =
        enabled_ ? QuickCaptureShortcutStatus::inactive() : QuickCaptureShortcutStatus::disabled();
    connect(shortcut_.get(), &GlobalShortcut::pressed, this,
            &QuickCaptureController::onShortcutPressed);
}

QuickCaptureController::~QuickCaptureController() {
    shortcut_->release();
    delete panel_.data();
}

void QuickCaptureController::start() {
    if (hasStarted_) {
        return;
    }
    hasStarted_ = true;
    updateRegistration();
}

void QuickCaptureController::stop() {
    shortcut_->release();
    hasStarted_ = false;
    setStatus(enabled_ ? QuickCaptureShortcutStatus::inactive()
                       : QuickCaptureShortcutStatus::disabled());
}

void QuickCaptureController::setEnabled(bool enabled) {
    settings_.setValue(enabledSetting, enabled);
    if (enabled_ != enabled) {
        enabled_ = enabled;
        Q_EMIT isEnabledChanged();
    }
    if (hasStarted_) {
        updateRegistration();
    } else {
        setStatus(enabled_ ? QuickCaptureShortcutStatus::inactive()
                           : QuickCaptureShortcutStatus::disabled());
    }
}

void QuickCaptureController::updateRegistration() {
    shortcut_->release();
    if (!enabled_) {
        setStatus(QuickCaptureShortcutStatus::disabled());
    } else if (!registrationAllowed_) {
        setStatus(QuickCaptureShortcutStatus::inactive());
    } else {
        setStatus(QuickCaptureShortcutStatus::after(shortcut_->grab()));
    }
}

void QuickCaptureController::setStatus(QuickCaptureShortcutStatus status) {
    if (status == status_) {
        return;
    }
    status_ = std::move(status);
    if (logTiming_) {
        std::fprintf(stderr, "Quick capture status: %s\n",
                     status_.kind == QuickCaptureShortcutStatus::Kind::active
                         ? "active"
                         : status_.text().c_str());
    }
    Q_EMIT shortcutStatusChanged();
}

QString QuickCaptureController::statusText() const {
    return QString::fromStdString(status_.text());
}

QString QuickCaptureController::shortcutText() const {
    return QString::fromLatin1(quickCaptureShortcutText);
}

void QuickCaptureController::setDraftText(const QString& text) {
    if (text == draftText_) {
        return;
    }
    draftText_ = text;
    Q_EMIT draftTextChanged();
}

void QuickCaptureController::setCaptureError(const QString& error) {
    if (error == captureError_) {
        return;
    }
    captureError_ = error;
    Q_EMIT captureErrorChanged();
}

void QuickCaptureController::setPanelVisible(bool visible) {
    if (visible == panelVisible_) {
        return;
    }
    panelVisible_ = visible;
    Q_EMIT panelVisibleChanged();
}

QQuickView* QuickCaptureController::panel() const {
    return panel_.data();
}

bool QuickCaptureController::ensurePanel() {
    if (panel_) {
        return true;
    }
    if (!engine_) {
        return false;
    }
    auto* view = new QQuickView(engine_, nullptr);
    view->setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    view->setTitle(QStringLiteral("Quick Add"));
    view->setResizeMode(QQuickView::SizeRootObjectToView);
    view->setInitialProperties({{QStringLiteral("capture"), QVariant::fromValue(this)}});
    view->setSource(QUrl(QStringLiteral("qrc:/qt/qml/Daywyn/QuickAddPanel.qml")));
    if (view->status() != QQuickView::Ready) {
        delete view;
        return false;
    }
    // Closed by the window manager rather than by us: closing without restoring focus,
    // the same as Escape minus the hand-back.
    connect(view, &QWindow::visibleChanged, this, [this](bool visible) {
        if (!visible && panelVisible_) {
            setCaptureError({});
            setPanelVisible(false);
            shouldRestoreFocus_ = false;
            previousWindow_ = 0;
        }
    });
    panel_ = view;
    return true;
}

void QuickCaptureController::onShortcutPressed() {
    if (logTiming_) {
        sincePress_.start();
    }
    show();
}

void QuickCaptureController::show() {
    if (!ensurePanel()) {
        return;
    }
    if (!panel_->isVisible()) {
        const std::uint32_t front = focus_->activeWindow();
        shouldRestoreFocus_ = front != 0 && !focus_->isOwnWindow(front);
        previousWindow_ = shouldRestoreFocus_ ? front : 0;

        QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
        if (!screen) {
            screen = QGuiApplication::primaryScreen();
        }
        const QRect visible = screen ? screen->availableGeometry() : QRect(0, 0, 1280, 800);
        panel_->setScreen(screen);
        panel_->setGeometry(toRect(QuickAddPlacement::frame(
            {static_cast<double>(visible.x()), static_cast<double>(visible.y()),
             static_cast<double>(visible.width()), static_cast<double>(visible.height())})));
        panel_->show();
    }
    setPanelVisible(true);
    watchForReady();
    panel_->raise();
    panel_->requestActivate();
    Q_EMIT focusRequested();
}

void QuickCaptureController::watchForReady() {
    if (awaitingReady_) {
        return;
    }
    awaitingReady_ = true;
    // Ready: the window manager gave us the keyboard, the field holds it, and a frame
    // with the focused field has reached the screen.
    auto check = std::make_shared<std::function<void()>>();
    auto connections = std::make_shared<QList<QMetaObject::Connection>>();
    *check = [this, connections] {
        if (!panel_ || !panel_->isActive() || !panel_->activeFocusItem() ||
            panel_->activeFocusItem()->objectName() != fieldName) {
            return;
        }
        for (const auto& c : *connections) {
            disconnect(c);
        }
        connect(
            panel_, &QQuickWindow::frameSwapped, this,
            [this] {
                awaitingReady_ = false;
                if (logTiming_ && sincePress_.isValid()) {
                    std::fprintf(stderr, "Quick Add ready after %.3f ms.\n",
                                 milliseconds(sincePress_));
                    sincePress_.invalidate();
                }
                Q_EMIT panelReady();
            },
            Qt::SingleShotConnection);
        panel_->update();
    };
    connections->append(connect(panel_, &QWindow::activeChanged, this, [check] { (*check)(); }));
    connections->append(
        connect(panel_, &QQuickWindow::activeFocusItemChanged, this, [check] { (*check)(); }));
    (*check)();
}

bool QuickCaptureController::submit() {
    if (isSubmitting_) {
        return false;
    }
    isSubmitting_ = true;
    QElapsedTimer sinceEnter;
    sinceEnter.start();
    const auto added = addFromLine(store_, draftText_.trimmed().toStdString(), clock_(), calendar_);
    if (!added) {
        setCaptureError(QString::fromStdString(added.error()));
        isSubmitting_ = false;
        return false;
    }
    setDraftText({});
    setCaptureError({});
    dismiss(true);
    if (logTiming_) {
        std::fprintf(stderr, "Quick Add saved and closed after %.3f ms.\n",
                     milliseconds(sinceEnter));
    }
    isSubmitting_ = false;
    return true;
}

void QuickCaptureController::dismiss(bool restoreFocus) {
    const bool handBack = restoreFocus && shouldRestoreFocus_ && previousWindow_ != 0;
    const std::uint32_t previous = previousWindow_;
    shouldRestoreFocus_ = false;
    previousWindow_ = 0;
    setCaptureError({});
    setPanelVisible(false);
    if (panel_ && panel_->isVisible()) {
        panel_->hide();
    }
    if (handBack) {
        focus_->activate(previous);
    }
}

} // namespace daywyn
