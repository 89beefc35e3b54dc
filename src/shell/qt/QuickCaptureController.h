#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Instant.h"
#include "shell/QuickCaptureShortcutStatus.h"

class QQmlEngine;
class QQuickView;

namespace daywyn {

class GlobalShortcut;
class QuickCaptureFocus;
class TodayTaskStore;
class UserSettings;

// Global quick capture: Ctrl+Alt+Space anywhere opens the small floating "Quick Add"
// panel; Enter parses the line with the quick parser and adds the task through the
// store, Escape closes, and either way the keyboard goes back to the window that was in
// front (unless that was Daywyn). Owns the global shortcut, the panel, and the state the
// settings page shows. Main thread only.
class QuickCaptureController : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isEnabled READ isEnabled WRITE setEnabled NOTIFY isEnabledChanged)
    Q_PROPERTY(bool isShortcutActive READ isShortcutActive NOTIFY shortcutStatusChanged)
    Q_PROPERTY(QString statusText READ statusText NOTIFY shortcutStatusChanged)
    Q_PROPERTY(QString shortcutText READ shortcutText CONSTANT)
    Q_PROPERTY(QString captureError READ captureError NOTIFY captureErrorChanged)
    Q_PROPERTY(QString draftText READ draftText WRITE setDraftText NOTIFY draftTextChanged)
    Q_PROPERTY(bool isPanelVisible READ isPanelVisible NOTIFY panelVisibleChanged)

public:
    // The user setting; absent means on (and is then written as true).
    static constexpr const char* enabledKey = "quickCaptureEnabled";

    // `registrationAllowed` false keeps the shortcut from ever being grabbed (status
    // inactive), for processes that must not take system-wide keys.
    QuickCaptureController(TodayTaskStore& store, const Calendar& calendar, Clock clock,
                           UserSettings& settings, std::unique_ptr<GlobalShortcut> shortcut,
                           std::unique_ptr<QuickCaptureFocus> focus, bool registrationAllowed,
                           QObject* parent = nullptr);
    ~QuickCaptureController() override;

    // The engine the panel's QML is built with on first show (its root context holds
    // the theme and the Today model, whose preview the panel shows).
    void setPanelEngine(QQmlEngine& engine) { engine_ = &engine; }

    // Registers the shortcut when enabled; only the first call does anything.
    void start();
    // Gives the shortcut back; the panel can still be opened from the settings.
    void stop();

    bool isEnabled() const { return enabled_; }
    // Stores the choice and registers or unregisters the shortcut at once.
    void setEnabled(bool enabled);
    const QuickCaptureShortcutStatus& shortcutStatus() const { return status_; }
    bool isShortcutActive() const {
        return status_.kind == QuickCaptureShortcutStatus::Kind::active;
    }
    QString statusText() const;
    QString shortcutText() const;

    QString captureError() const { return captureError_; }
    QString draftText() const { return draftText_; }
    void setDraftText(const QString& text);
    bool isPanelVisible() const { return panelVisible_; }

    // Opens the panel on the screen under the pointer and focuses its field, remembering
    // the window in front. Open already: focuses the field again where it is.
    Q_INVOKABLE void show();
    // Adds the typed task. An invalid line or a failed save shows the sentence and keeps
    // the panel and its text; success clears the text and closes the panel. True when added.
    Q_INVOKABLE bool submit();
    // Closes the panel; with `restoreFocus` the remembered window gets the keyboard back.
    Q_INVOKABLE void dismiss(bool restoreFocus);

    QQuickView* panel() const;

Q_SIGNALS:
    void isEnabledChanged();
    void shortcutStatusChanged();
    void captureErrorChanged();
    void draftTextChanged();
    void panelVisibleChanged();
    // The panel asks its field to take the keyboard.
    void focusRequested();
    // The panel is in front with its field focused and the frame drawn.
    void panelReady();

private:
    void updateRegistration();
    void setStatus(QuickCaptureShortcutStatus status);
    void setCaptureError(const QString& error);
    void setPanelVisible(bool visible);
    bool ensurePanel();
    void watchForReady();
    void onShortcutPressed();

    TodayTaskStore& store_;
    const Calendar& calendar_;
    Clock clock_;
    UserSettings& settings_;
    std::unique_ptr<GlobalShortcut> shortcut_;
    std::unique_ptr<QuickCaptureFocus> focus_;
    bool registrationAllowed_;
    QQmlEngine* engine_ = nullptr;
    QPointer<QQuickView> panel_;

    bool enabled_ = true;
    QuickCaptureShortcutStatus status_;
    QString captureError_;
    QString draftText_;
    bool panelVisible_ = false;
    std::uint32_t previousWindow_ = 0;
    bool shouldRestoreFocus_ = false;
    bool hasStarted_ = false;
    bool isSubmitting_ = false;
    bool awaitingReady_ = false;

    // DAYWYN_QUICK_ADD_LOG=1: every status change, the time from a press to the panel
    // ready, and from Enter to the task saved and the panel closed, on standard error.
    bool logTiming_ = false;
    QElapsedTimer sincePress_;
};

} // namespace daywyn
