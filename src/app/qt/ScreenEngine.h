#pragma once

#include <QQmlEngine>

namespace daywyn {

namespace sync {
class SyncController;
}

class AppEnvironment;
class AppUpdateManager;
class CalendarManager;
class CompletedHistoryModel;
class DrawerReminderCoordinator;
class EdgePanelController;
class GoogleCalendarManager;
class LaunchAtLoginController;
class NotificationManager;
class QuickCaptureController;
class SessionHistoryModel;
class SettingsModel;
class SystemSettingsNavigator;
class TaskEditor;
class Theme;
class TodayModel;
class VoiceCaptureManager;
class VoiceReviewController;

// What the screens see: one pointer per part, each named as the QML names it. A part
// left null is an error only for a screen that uses it.
struct ScreenServices {
    Theme* theme = nullptr;
    TodayModel* today = nullptr;
    TaskEditor* editor = nullptr;
    SessionHistoryModel* sessions = nullptr;
    CompletedHistoryModel* history = nullptr;
    NotificationManager* notifications = nullptr;
    DrawerReminderCoordinator* drawerReminders = nullptr;
    CalendarManager* calendars = nullptr;
    GoogleCalendarManager* googleCalendars = nullptr;
    QuickCaptureController* quickCapture = nullptr;
    LaunchAtLoginController* launchAtLogin = nullptr;
    SystemSettingsNavigator* systemSettings = nullptr;
    SettingsModel* settings = nullptr;
    AppUpdateManager* updates = nullptr;
    VoiceCaptureManager* voice = nullptr;
    VoiceReviewController* voiceReview = nullptr;
    EdgePanelController* drawer = nullptr;
    sync::SyncController* taskSync = nullptr;
    AppEnvironment* app = nullptr;
};

// The engine every screen is built from. It carries the parts the QML module's
// singletons hand out (see ScreenSingletons.h) and finds the compiled module.
class ScreenEngine : public QQmlEngine {
    Q_OBJECT

public:
    explicit ScreenEngine(ScreenServices services, QObject* parent = nullptr);

    const ScreenServices& services() const { return services_; }

    // The part `member` of the ScreenEngine `engine`; null, with a warning, for any other
    // engine or a part not given. The engine never owns it.
    template <typename Part>
    static Part* part(QQmlEngine* engine, Part* ScreenServices::*member) {
        Part* found = nullptr;
        if (auto* screens = qobject_cast<ScreenEngine*>(engine)) {
            found = screens->services_.*member;
        }
        return static_cast<Part*>(handOut(found));
    }

private:
    static QObject* handOut(QObject* part);

    ScreenServices services_;
};

} // namespace daywyn
